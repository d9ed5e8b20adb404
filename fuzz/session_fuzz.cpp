// A whole session: the first byte chooses console or protocol, the rest is what comes in on standard input. Searches
// are cut short by a watchdog. Left out is "perft", which counts for half a minute whatever happens.
#include "board/board.h"
#include "frontend/config.h"
#include "frontend/frontend.h"
#include "frontend/internal.h"
#include "fuzz_support.h"
#include "hash/hash.h"
#include "search_watchdog.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

// A working directory with small tables, and the files of the table test, without which that test ends the process.
struct SessionFolder {
    std::filesystem::path path = std::filesystem::temp_directory_path() /
                                 ("tarvelmon-session-" + std::to_string(std::random_device{}()));

    SessionFolder() {
        std::filesystem::create_directories(path / "TestSyzygy");
        std::filesystem::current_path(path);
        std::ofstream(path / "TestSyzygy" / "TestCase_09.txt") << "8/8/8/8/8/8/8/K1k5 w - - 0 1,0,0\n,,\nx\n";
        // One record: e2e4 in the start position.
        std::ofstream(path / "book.bin", std::ios::binary)
            << std::string_view("\x46\x3B\x96\x18\x16\x91\xFC\x9C\x03\x1C\0\1\0\0\0\0", 16);
        std::ofstream(path / "tarvelmon.ini")
            << "[ENGINE]\nHashSize=1\nPawnHashSize=1\nMaxTime=20\n[TABLEBASE]\nSyzygyPath=none\n";
        startSearchWatchdog();
    }
    SessionFolder(const SessionFolder&) = delete;
    SessionFolder& operator=(const SessionFolder&) = delete;
    ~SessionFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

static void runSession(bool protocol) {
    EngineOptions = EngineOptionsRecord{};
    TimeControl = TimeControlRecord{};
    EngineOptions.engineSide = noEngineSide;
    loadConfig(configFileName);
    newGame();
    EngineOptions.xboardMode = protocol ? 1 : 0;
    if (protocol) {
        xboardLoop();
    } else {
        setUpTables();
        consoleLoop();
    }
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    static const SessionFolder folder;
    std::string_view input = textOf(data, size);
    const bool protocol = (takeByte(input) & 1) != 0;
    if (input.find("perft") != std::string_view::npos) {
        return 0;
    }
    std::string text(input);
    text += '\n';
    std::FILE* former = stdin;
    stdin = fmemopen(text.data(), text.size(), "rb");
    if (stdin == nullptr) {
        std::abort();
    }
    runSession(protocol);
    std::fclose(stdin);
    stdin = former;
    return EngineOptions.quitRequest == 1 ? 0 : (std::abort(), 0);
}
