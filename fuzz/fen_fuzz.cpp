// A position from text, and everything that looks at a position: generators, tests, exchange, evaluation, count,
// search. The first byte chooses the depth; a rejected text leaves a half-written record, which is searched as well.
#include "board/board.h"
#include "book/book.h"
#include "eval/eval.h"
#include "frontend/frontend.h"
#include "frontend/game_end.h"
#include "frontend/session.h"
#include "fuzz_support.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "search/search.h"
#include "tablebase/tablebase.h"

#include <cstdlib>

static void setUpEngine() {
    static bool done = false;
    if (done) {
        return;
    }
    done = true;
    EngineOptions.hashEntries = 65536;
    EngineOptions.pawnHashEntries = 4096;
    EngineOptions.syzygy = 1;
    EngineOptions.syzygyMen = 5;
    hashAlloc(EngineOptions.hashEntries, 1);
    pawnHashAlloc();
}

// Without time each depth ends at its first look at the clock, after a thousand nodes: no input can think for hours, and
// an input does the same every time.
static void searchTo(i32 depth) {
    constexpr i32 noTime = -1;
    EngineOptions.minDepth = 1;
    EngineOptions.maxDepth = depth;
    EngineOptions.stopSearch = 0;
    EngineOptions.searchStartMs = nowMs();
    TimeControl.moveTime = noTime;
    static_cast<void>(think(0));
}

static void lookAtPosition() {
    static_cast<void>(evaluate());
    static_cast<void>(easyVal());
    static_cast<void>(sufficientMaterial());
    static_cast<void>(polyglotKey());
    buildAttackMaps();
    i32 success = 0;
    static_cast<void>(probeWdl(success));
    static_cast<void>(probeDtz(success));
    seeTest();
    printBoard();
    static_cast<void>(checkGameEnd());
    static_cast<void>(perft(1));
    QuietList quiets;
    genChecks(quiets);
    for (i32 i = 0; i < quiets.count; ++i) {
        static_cast<void>(see(quiets.entries[i]));
    }
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    setUpEngine();
    std::string_view input = textOf(data, size);
    const i32 depth = takeByte(input) % 4 + 1;
    newGame();
    const std::string fen(input);
    static_cast<void>(fenToBoard(fen.c_str()));
    const Scacchiera* before = board;
    lookAtPosition();
    searchTo(depth);
    if (board != before) {
        std::abort();
    }
    return 0;
}
