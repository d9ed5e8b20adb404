// The fixed searches that measure speed and guard behaviour: positions of the opening, middle game and ending, each
// searched to a fixed depth from empty tables.
#pragma once

#include "board/board.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "frontend/thinking_output.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "search/search.h"

struct FixedSearch {
    const char* name;
    const char* fen;
    i32 depth;
    u64 nodes;  // of all attempts together: changes only when the behaviour of search or evaluation changes
};

constexpr FixedSearch fixedSearches[] = {
    {"start", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 11, 1321797},
    {"open centre", "r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq - 4 4", 10, 1398914},
    {"both castled", "r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2QK2R w KQ - 2 8", 10, 2833818},
    {"opposite wings", "r1b1k2r/1pq1bppp/p1nppn2/8/3NP3/1BN1B3/PPPQ1PPP/2KR3R w kq - 0 10", 9, 1480513},
    {"pins and forks", "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 9, 794743},
    {"closed", "r1bq1rk1/ppp1npbp/3p1np1/3Pp3/2P1P3/2N2N2/PP2BPPP/R1BQ1RK1 b - - 0 9", 9, 1251744},
    {"queens and rooks", "2rr2k1/pp3ppp/1qn1p3/8/3P4/P3PN2/1Q3PPP/2R2RK1 b - - 0 20", 12, 567265},
    {"rook ending", "8/5pk1/R5p1/7p/1p5P/r5P1/5PK1/8 w - - 0 40", 14, 1954290},
    {"pawn ending", "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 13, 1249762},
    {"minor pieces", "4k3/1p3pp1/p1n1b2p/8/3P4/P3BN1P/1P3PP1/4K3 w - - 0 30", 13, 2202217},
};

constexpr u64 searchSignature = 15055063;  // the sum of the nodes

// Instructions a node, as "tools/measure.sh" counts them, and the compiler whose code that was. Lower it with each gain.
constexpr i32 recordedInstructions = 1373;
constexpr const char* recordedCompiler = "12.2.0";

constexpr i32 fixedHashMegabytes = 64;
constexpr i32 fixedPawnHashMegabytes = 16;

/// Nodes of all attempts of the running think.
inline u64 countedNodes = 0;

/// Allocates both tables in the sizes that the node counts hold for.
inline void setUpFixedSearches() {
    EngineOptions.hashSize = fixedHashMegabytes;
    EngineOptions.hashEntries = (u64{fixedHashMegabytes} << 20) / sizeof(ys_hash);
    EngineOptions.pawnHashSize = fixedPawnHashMegabytes;
    EngineOptions.pawnHashEntries = (u64{fixedPawnHashMegabytes} << 20) / sizeof(hashPawn);
    hashAlloc(EngineOptions.hashEntries, EngineOptions.hashSize);
    pawnHashAlloc();
    EngineOptions.minDepth = 1;
    EngineOptions.postThinking = 0;
    EngineOptions.syzygy = 0;
    EngineOptions.syzygyMen = 5;
    TimeControl.moveTime = 720000;
    TimeControl.allocatedTime = 720000;
    thinkingSink.attempt = [](const ThinkingAttempt& attempt) { countedNodes = attempt.nodesOfThink; };
}

/// Runs one of the searches. Returns the nodes of all its attempts.
inline u64 runFixedSearch(const FixedSearch& fixed) {
    newGame();
    if (fenToBoard(fixed.fen) == 0) {
        return 0;
    }
    pawnHashClear();
    SearchInfo.nodes = 0;
    EngineOptions.maxDepth = fixed.depth;
    EngineOptions.stopSearch = 0;
    EngineOptions.searchStartMs = nowMs();
    think(0);
    return countedNodes;
}
