// A whole session: the first byte chooses console or protocol, and more, the rest is what comes in on standard input.
// Left out is "perft", which counts for half a minute whatever happens.
//
// Nothing here waits: files lie in memory and are written once, hash tables are small, no folder is searched for
// endgame tables, and before each line the time for a move is taken away, so that a search ends at its first look at
// the clock, after a thousand nodes. Most are held to two plies as well.
#include "board/board.h"
#include "frontend/config.h"
#include "frontend/frontend.h"
#include "frontend/internal.h"
#include "frontend/session.h"
#include "fuzz_support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

constexpr u64 hashRecords = 4096;
constexpr u64 pawnHashRecords = 1024;
constexpr i32 noTime = -1;  // centiseconds
constexpr i32 shallow = 2;  // plies; what the INI file has as safePly
constexpr i32 deep = 4;
constexpr i32 deepChoice = 15;
constexpr std::size_t textMax = 512;

// What comes in, a line at a time.
struct Lines {
    std::string_view rest;
    u8 choice;
    std::thread::id commandLoop;  // while a search runs, another thread reads
};

// The working directory of all sessions, with the files of the table test, without which that test ends the process.
// What that test writes, it writes to nowhere.
struct SessionFolder {
    ScratchFolder folder;

    SessionFolder() {
        std::filesystem::current_path(folder.path);
        std::filesystem::create_directory("TestSyzygy");
        folder.write("TestSyzygy/TestCase_09.txt", "8/8/8/8/8/8/8/K1k5 w - - 0 1,0,0\n,,\nx\n");
        std::filesystem::create_symlink("/dev/null", "TestSyzygy/Error.txt");
        std::filesystem::create_symlink("/dev/null", "TestSyzygy/BadFEN.txt");
        // One record: e2e4 in the start position.
        folder.write("book.bin", {"\x46\x3B\x96\x18\x16\x91\xFC\x9C\x03\x1C\0\1\0\0\0\0", 16});
        folder.write("tarvelmon.ini",
                     "[ENGINE]\nHashSize=1\nPawnHashSize=1\nsafePly=2\n[TABLEBASE]\nSyzygy=0\n");
    }
};

// Called by the thread that reads the input, for each line.
static ssize_t readLineOf(void* cookie, char* buffer, std::size_t size) {
    Lines& lines = *static_cast<Lines*>(cookie);
    TimeControl.moveTime = noTime;
    if (std::this_thread::get_id() == lines.commandLoop) {
        EngineOptions.syzygy = lines.choice >> 1 & 1;
        EngineOptions.maxDepth =
            std::min(EngineOptions.maxDepth, lines.choice >> 4 == deepChoice ? deep : shallow);
    }
    const std::size_t length = std::min({lines.rest.find('\n') + 1, lines.rest.size(), size});
    std::memcpy(buffer, lines.rest.data(), length);
    lines.rest.remove_prefix(length);
    return static_cast<ssize_t>(length);
}

static void runSession(bool protocol) {
    EngineOptions = EngineOptionsRecord{};
    TimeControl = TimeControlRecord{};
    EngineOptions.engineSide = noEngineSide;
    loadConfig(configFileName);
    EngineOptions.hashEntries = hashRecords;
    EngineOptions.pawnHashEntries = pawnHashRecords;
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
    const u8 choice = takeByte(input);
    if (input.find("perft") != std::string_view::npos) {
        return 0;
    }
    std::string text(input.substr(0, textMax));
    text += '\n';
    Lines lines{text, choice, std::this_thread::get_id()};
    std::FILE* former = stdin;
    stdin = fopencookie(&lines, "rb", {readLineOf, nullptr, nullptr, nullptr});
    if (stdin == nullptr) {
        std::abort();
    }
    runSession((choice & 1) != 0);
    std::fclose(stdin);
    stdin = former;
    return EngineOptions.quitRequest == 1 ? 0 : (std::abort(), 0);
}
