// What the fuzz targets of the companion share: input is taken a line at a time, without a thread; a search runs where it
// is started and ends after a few hundred nodes.
#pragma once

#include "board/board.h"
#include "fuzz_support.h"
#include "searcher.h"
#include "settings.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>

constexpr u64 nodesOfASearch = 300;
constexpr std::size_t linesMax = 60;

/// A working directory in memory with a book of one record: e2e4 in the start position.
struct GuiFolder {
    ScratchFolder folder;

    GuiFolder() {
        std::filesystem::current_path(folder.path);
        folder.write("book.bin", {"\x46\x3B\x96\x18\x16\x91\xFC\x9C\x03\x1C\0\1\0\0\0\0", 16});
        folder.write("tarvelmon.ini", "[ENGINE]\nHashSize=1\nPawnHashSize=1\n[TABLEBASE]\nSyzygy=0\n");
        searchInPlace(nodesOfASearch);
    }
};

/// One side of the companion. Lines with one of the words `leftOut` are about the sizes of tables, which only take memory.
struct GuiSide {
    void (*begin)();
    bool (*takeLine)(const std::string& line, SessionLock& lock);
    void (*end)(SessionLock& lock);
    std::initializer_list<std::string_view> leftOut;
};

/// Gives `input` to the side. Ends the process by a signal if something of a search stays on the board.
inline void takeSession(const GuiSide& side, std::string_view input) {
    static const GuiFolder folder;
    loadSettings();
    SessionLock lock(sessionMutex);
    side.begin();
    for (std::size_t count = 0; !input.empty() && count < linesMax; ++count) {
        const std::string line(input.substr(0, input.find('\n')));
        input.remove_prefix(std::min(input.size(), line.size() + 1));
        const bool known = std::none_of(side.leftOut.begin(), side.leftOut.end(), [&](std::string_view word) {
            return line.find(word) != std::string::npos;
        });
        if (known && !side.takeLine(line, lock)) {
            break;
        }
    }
    side.end(lock);
    if (board < boardStack.data() || board >= boardStack.data() + gameRecordsMax) {
        std::abort();
    }
}
