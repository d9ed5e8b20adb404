// The UCI side of the companion: the input is what comes in, a line at a time. No thread: a search runs where it is
// started and ends after a few hundred nodes. Left out are lines about the sizes of tables, which only take memory.
#include "board/board.h"
#include "fuzz_support.h"
#include "searcher.h"
#include "settings.h"
#include "uci.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

constexpr u64 nodesOfASearch = 300;
constexpr std::size_t linesMax = 60;

// A working directory in memory with a book of one record: e2e4 in the start position.
struct GuiFolder {
    ScratchFolder folder;

    GuiFolder() {
        std::filesystem::current_path(folder.path);
        folder.write("book.bin", {"\x46\x3B\x96\x18\x16\x91\xFC\x9C\x03\x1C\0\1\0\0\0\0", 16});
        folder.write("tarvelmon.ini", "[ENGINE]\nHashSize=1\nPawnHashSize=1\n[TABLEBASE]\nSyzygy=0\n");
        searchInPlace(nodesOfASearch);
    }
};

static bool isLeftOut(std::string_view line) {
    for (const char* word : {"ash", "ASH", "yzygy", "YZYGY"}) {
        if (line.find(word) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

static void takeLines(std::string_view input, SessionLock& lock) {
    for (std::size_t count = 0; !input.empty() && count < linesMax; ++count) {
        const std::string line(input.substr(0, input.find('\n')));
        input.remove_prefix(std::min(input.size(), line.size() + 1));
        if (!isLeftOut(line) && !takeUciLine(line, lock)) {
            return;
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    static const GuiFolder folder;
    loadSettings();
    SessionLock lock(sessionMutex);
    beginUci();
    takeLines(textOf(data, size), lock);
    endUci(lock);
    // Nothing of a search stays on the board.
    return board >= boardStack.data() && board < boardStack.data() + gameRecordsMax ? 0 : (std::abort(), 0);
}
