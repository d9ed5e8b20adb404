// From a position to a move: the root list, the tables cleared, and the search at growing depth with a narrow window
// around the last score, until the clock or the depth limit ends it.
#include "search/search.h"

#include "board/board.h"
#include "frontend/frontend.h"
#include "frontend/thinking_output.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "search/internal.h"
#include "search/search_watch.h"
#include "tablebase/tablebase.h"

constexpr i32 halfWindow = 50;           // centipawns on each side of the last score
constexpr i32 shownMateScore = 18999;    // scores beyond it are announced as mates
constexpr i32 firstSecond = 100;         // centiseconds in which every iteration may begin
constexpr i32 deepestIteration = 32767;  // a depth has 16 bits

namespace {

// What lives through the iterations of one think.
struct Deepening {
    Mossa bestMove = 0;
    i32 tbMen = 0;
    bool tbRootOk = false;
    i32 tbScore = 0;
    u64 nodes = 0;  // of all attempts
    i16 alpha = -INFINITE;
    i16 beta = INFINITE;
};

}  // namespace

static void clearTables() {
    historyTable = {};
    hashClear(EngineOptions.hashEntries);
    gs_lineH = {};  // so that a think without a completed iteration shows no move of an earlier one
    searchCeiling = board + searchRecordsMax;
}

static Mossa onlyMove(Mossa move) {
    gs_lineH.argmove[0] = move;
    gs_lineH.count = 1;
    thinkingSink.onlyMove(gs_lineH);
    return move;
}

// After a successful probe the list holds the moves that keep the result, and nothing probes or sorts any more.
static void probeRoot(Deepening& state, RootList& rootList, i32& rootCount) {
    state.tbMen = EngineOptions.syzygyMen;
    if (EngineOptions.syzygy == 0 || EngineOptions.syzygyMen < popCount(occupied(*board))) {
        return;
    }
    i32 dtz = 0;
    if (rootProbe(rootList, rootCount, state.tbScore, dtz) == 0) {
        return;
    }
    state.tbRootOk = true;
    state.tbMen = 0;
    if (rootCount > 1) {
        sortByTbRank(rootList, 0, rootCount - 1);
    }
}

static bool windowIsOpen(const Deepening& state) {
    return state.alpha == -INFINITE || state.beta == INFINITE;
}

// More than half of the budget is spent, so the next depth would hardly end in time. Deliberate: not while the window
// is open, as after a failed iteration, nor when the budget has been passed.
static bool nextDepthIsTooLong(const Deepening& state) {
    const i32 budget = TimeControl.allocatedTime;  // read first, then its start: see setBudget
    const i32 elapsed = elapsedMs(EngineOptions.searchStartMs) / 10;
    return elapsed > firstSecond && budget / elapsed == 1 && !windowIsOpen(state);
}

static void rememberReply(i32 ponderSearch) {
    if (ponderSearch == 0) {
        EngineOptions.ponderMove = gs_lineH.argmove[1];
    } else {
        EngineOptions.ponderBest = gs_lineH.argmove[0];
    }
}

static AttemptEnd endOf(const Deepening& state, i32 score) {
    if (score <= state.alpha) {
        return AttemptEnd::failedLow;
    }
    return score >= state.beta ? AttemptEnd::failedHigh : AttemptEnd::exact;
}

static void tellAttempt(const Deepening& state, i32 depth, i32 score) {
    thinkingSink.attempt({
        .depth = depth,
        .score = state.tbRootOk && state.tbScore > score ? state.tbScore : score,
        .end = endOf(state, score),
        .milliseconds = elapsedMs(EngineOptions.searchStartMs),
        .nodes = SearchInfo.nodes,
        .nodesOfThink = state.nodes,
        .tableHits = tableHits,
        .line = gs_lineH,
    });
}

static void announceMate(i32 score) {
    if (score > shownMateScore) {
        thinkingSink.mateIn((MATE + 1 - score) / 2);
        EngineOptions.ponder = 0;
    }
    if (score < -shownMateScore) {
        thinkingSink.matedIn((score + MATE) / 2);
        EngineOptions.ponder = 0;
    }
}

// Sets the window of the next attempt. True if the depth is done; else it is to be searched again with an open window.
static bool iterationHolds(Deepening& state, i32 score) {
    const bool failed = endOf(state, score) != AttemptEnd::exact;
    // Scores beyond the open window come only from boards with dozens of queens; nothing can be gained by repeating.
    const bool isLastWord = state.alpha == -INFINITE && state.beta == INFINITE;
    if (failed) {
        state.alpha = -INFINITE;
        state.beta = INFINITE;
        return isLastWord;
    }
    state.alpha = wrap16(score - halfWindow);
    state.beta = wrap16(score + halfWindow);
    return true;
}

static Mossa deepen(Deepening& state, RootList& rootList, i32 rootCount, i32 ponderSearch) {
    i32 depth = wrap16(EngineOptions.minDepth);
    while (depth <= EngineOptions.maxDepth && depth <= deepestIteration) {
        if (nextDepthIsTooLong(state)) {
            EngineOptions.stopSearch = 1;
            break;
        }
        SearchInfo.nodes = 0;
        SearchInfo.iterationDepth = depth;
        killers = {};
        // The first two depths keep the order of the list.
        if (depth > 2 && state.tbMen != 0 && rootCount > 1) {
            sortByScore(rootList, 0, rootCount - 1);
        }
        const i32 score = rootSearch(rootList, rootCount, depth, state.alpha, state.beta, gs_lineH, MATE,
                                     wrap16(state.tbMen));
        state.nodes += SearchInfo.nodes;
        if (EngineOptions.stopSearch == 1) {
            break;
        }
        // Deliberate: after a failed iteration too.
        state.bestMove = gs_lineH.argmove[0];
        rememberReply(ponderSearch);
        tellAttempt(state, depth, score);
        announceMate(score);
        if (iterationHolds(state, score)) {
            ++depth;
        }
    }
    return state.bestMove;
}

Mossa think(i32 ponderSearch) {
    SearchInfo.iterationDepth = 0;
    tableHits = 0;
    clearTables();
    RootList rootList{};
    i32 rootCount = 0;
    rootMoves(rootList, rootCount);
    if (rootCount == 1) {
        return onlyMove(rootList[0].move);
    }
    if (SearchWatch.rootListMade != nullptr) {
        SearchWatch.rootListMade(rootList, rootCount);
    }
    Deepening state;
    probeRoot(state, rootList, rootCount);
    return deepen(state, rootList, rootCount, ponderSearch);
}
