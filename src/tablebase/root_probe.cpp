// The tables at the root: ranks the moves by distance, with the fifty-move rule and repetitions in view, and cuts the
// list down to those that keep the result.
#include "tablebase/tablebase.h"

#include "tablebase/internal.h"

#include <algorithm>

constexpr i32 tbSpoiledWinScore = 2;  // centipawns; deliberate: no grading by how close the limit is
constexpr i32 rule50Plies = 100;
constexpr i32 noRank = 65535;
constexpr i32 fourthOccurrence = 3;  // repetition count, from 0

static bool isMate() {
    if (inCheck() == 0) {
        return false;
    }
    MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    return count == 0;
}

// A distance as seen from before the move that led to it.
static i32 rankOfDtz(i32 dtz) {
    const i32 own = -dtz;
    if (own == 0) {
        return 0;
    }
    return own > 0 ? own + 1 : own - 1;
}

// The rank of the move that has just been made, at a root of distance `rootDtz`.
static i32 rankOfPosition(i32 rootDtz, i32& success) {
    if (rootDtz > 0 && isMate()) {
        return 1;
    }
    if (board->rule50 != 0) {
        return rankOfDtz(probeDtz(success));
    }
    return wdlToDtz[2 - probeWdl(success)];
}

static i32 scoreOfRoot(i32 dtz, i32 rootRule50) {
    if (dtz > 0) {
        return dtz + rootRule50 <= rule50Plies ? TB_WIN : tbSpoiledWinScore;
    }
    if (dtz < 0) {
        return rootRule50 - dtz <= rule50Plies ? -TB_WIN : -tbSpoiledWinScore;
    }
    return 0;
}

// Whether the root, or a position of the same side within the count of its fifty-move rule, stood for the fourth time.
static bool hasRepeated() {
    const i64 reach = std::min<i64>(board->rule50, board - boardStack.data());
    for (i64 back = 0; back <= reach; back += 2) {
        if (repetitionCount(*(board - back)) == fourthOccurrence) {
            return true;
        }
    }
    return false;
}

// Keeps the entries that pass, in their order; all of them if none does.
template <typename Passes>
static void filter(RootList& rootList, i32& rootCount, Passes passes) {
    const auto first = rootList.begin();
    const auto last = first + rootCount;
    if (std::none_of(first, last, passes)) {
        return;
    }
    const auto end = std::copy_if(first, last, first, passes);
    rootCount = static_cast<i32>(end - first);
}

// Without repetitions every move inside the budget of the fifty-move rule may be searched, afterwards the fastest only.
static void filterWon(RootList& rootList, i32& rootCount, i32 rootRule50) {
    i32 best = noRank;
    for (i32 i = 0; i < rootCount; ++i) {
        if (rootList[i].tbRank > 0) {
            best = std::min(best, rootList[i].tbRank);
        }
    }
    i32 limit = best;
    if (!hasRepeated() && rootRule50 + best <= 99) {
        limit = 99 - rootRule50;
    }
    filter(rootList, rootCount,
           [limit](const RootMove& entry) { return entry.tbRank > 0 && entry.tbRank <= limit; });
}

// While the fifty-move rule is far off any move may be tried, afterwards only the longest resistance.
static void filterLost(RootList& rootList, i32& rootCount, i32 rootRule50) {
    i32 best = 0;
    for (i32 i = 0; i < rootCount; ++i) {
        best = std::min(best, rootList[i].tbRank);
    }
    if (rootRule50 + 2 * -best <= 99) {
        return;
    }
    filter(rootList, rootCount, [best](const RootMove& entry) { return entry.tbRank == best; });
}

static void filterDrawn(RootList& rootList, i32& rootCount) {
    filter(rootList, rootCount, [](const RootMove& entry) { return entry.tbRank == 0; });
}

i32 rootProbe(RootList& rootList, i32& rootCount, i32& tbScore, i32& dtz) {
    assert(boardIsRecord() && rootCount >= 0 && rootCount <= moveCapacity);
    i32 success = 0;
    dtz = probeDtz(success);
    if (success == 0) {
        return 0;
    }
    for (i32 i = 0; i < rootCount; ++i) {
        makeMoveLight(rootList[i].move);
        const i32 rank = rankOfPosition(dtz, success);
        --board;
        if (success == 0) {
            return 0;
        }
        rootList[i].tbRank = rank;
    }
    const i32 rootRule50 = board->rule50;
    tbScore = scoreOfRoot(dtz, rootRule50);
    if (dtz > 0) {
        filterWon(rootList, rootCount, rootRule50);
    } else if (dtz < 0) {
        filterLost(rootList, rootCount, rootRule50);
    } else {
        filterDrawn(rootList, rootCount);
    }
    return 1;
}
