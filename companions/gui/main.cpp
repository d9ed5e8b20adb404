// Entry point: the first line decides which protocol is spoken. This thread reads input to the end.
#include "bench.h"
#include "input.h"
#include "platform/platform.h"
#include "platform/print.h"
#include "platform/thread.h"
#include "searcher.h"
#include "settings.h"
#include "uci.h"
#include "words.h"
#include "xboard_side.h"

#include <string_view>

static bool takeUciFirstLine(SessionLock& lock) {
    beginUci();
    return takeUciLine("uci", lock);
}

static bool takeXboardFirstLine(const std::string& line, SessionLock& lock) {
    beginXboard();
    return takeXboardLine(line, lock);
}

// Lines until "quit" or the end of input. The mutex is held while a line is dealt with, and free while one is awaited.
static void converse(bool uci, const std::string& firstLine) {
    SessionLock lock(sessionMutex);
    bool goesOn = uci ? takeUciFirstLine(lock) : takeXboardFirstLine(firstLine, lock);
    std::string line;
    while (goesOn) {
        lock.unlock();
        goesOn = readInputLine(line);
        lock.lock();
        if (goesOn) {
            goesOn = uci ? takeUciLine(line, lock) : takeXboardLine(line, lock);
        }
    }
    if (uci) {
        endUci(lock);
    } else {
        endXboard(lock);
    }
}

// The first line that is neither empty nor the wish for a benchmark, which is granted on the way.
static bool readFirstLine(std::string& line) {
    while (readInputLine(line)) {
        const std::string_view word = Words{line}.next();
        if (word == "bench") {
            runBench();
        } else if (!word.empty()) {
            return true;
        }
    }
    return false;
}

int main(int argc, char** argv) {
    raiseMainStackLimit();
    makeStreamsBinary();
    ignoreInterrupts();
    if (argc == 2 && std::string_view(argv[1]) == "bench") {
        return runBench() ? 0 : 1;
    }
    loadSettings();
    std::string line;
    if (!readFirstLine(line)) {
        return 0;
    }
    if (!startSearchThread()) {
        print("# no thread for the search\n");
        return 1;
    }
    converse(Words{line}.next() == "uci", line);
    endSearchThread();
    return 0;
}
