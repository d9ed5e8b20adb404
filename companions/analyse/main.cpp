// tarvelmon-analyse: searches collections of positions with many processes. Exit status 0 for success, 1 where nothing
// could be used or written, 2 for a wrong command line, 128 and the signal's number where one has ended it.
#include "games.h"
#include "options.h"
#include "positions.h"
#include "worker_pool.h"

#include <fcntl.h>
#include <cstdio>
#include <exception>
#include <new>

// Where a standard stream is closed, a pipe of ours would get its number. What stands there instead refuses its direction.
static void fillStandardDescriptors() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            static_cast<void>(open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY));
        }
    }
}

int main(int argc, char** argv) {
    fillStandardDescriptors();
    try {
        Options options;
        i32 status = 0;
        if (!readOptions(argc, argv, options, status)) {
            return status;
        }
        catchSignals();
        return options.pgn ? analyseGames(options) : analysePositions(options);
    } catch (const std::bad_alloc&) {
        std::fputs("tarvelmon-analyse: there is not enough memory\n", stderr);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "tarvelmon-analyse: %s\n", fault.what());
    }
    return 1;
}
