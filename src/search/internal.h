// What the files of the search share: the recursive functions and their scale of scores, of which the tablebases own
// TB_WIN.
#pragma once

#include "board/board.h"
#include "frontend/frontend.h"
#include "search/ordering.h"
#include "search/search_info.h"

constexpr i32 INFINITE = 32000;  // the widest bound
constexpr i32 MATE = 20000;      // mateScore at the root, one less at each ply

/// Plies of one line before quiescence takes over; killers have no more.
constexpr i32 plyLimit = killerPlies;

/// What a stopped node returns. Nobody may trust it: think throws the iteration away.
constexpr i16 stoppedScore = 1;

/// The record from which on a search does not deepen any more. Set by think to searchRecordsMax above the root.
extern const Scacchiera* searchCeiling;

/// Positions that the search found in the tablebases since think began. Told with each attempt.
extern u64 tableHits;

/// Searches the root list once. Writes each move's `score`, and `line` when a move raises alpha; stores in the hash.
/// depth      plies, at least 1
/// mateScore  MATE
/// tbMen      most men for which the search probes the tablebases
/// Returns the score, alpha when no move is above it, beta when a move is not below it.
i16 rootSearch(RootList& rootList, i32 rootCount, i32 depth, i16 alpha, i16 beta, PvLine& line, i32 mateScore,
               i16 tbMen);

/// Score of the position at `board` for the side to move, within the window but for static values.
/// depth         plies before quiescence, not negative
/// ply           distance from the root, the index of `killers`; restarted by internal deepening
/// pv            gets the line of this node when a move raises alpha, else stays as it was
/// mateScore     of mating here: the mated side gets -mateScore
/// allowNull     1: a pass may be tried; 0: internal deepening may run instead
/// extendedLine  1 when the line above has been extended: no futility pruning
/// tbMen         most men for which the tablebases are probed
i16 search(i16 depth, i16 ply, i16 alpha, i16 beta, PvLine& pv, i16 mateScore, i32 allowNull,
           i32 extendedLine, i16 tbMen);

/// The same with `checkers`, what inCheck tells of the position, known to the caller.
i16 searchNode(i16 depth, i16 ply, i16 alpha, i16 beta, PvLine& pv, i16 mateScore, i32 allowNull,
               i32 extendedLine, i16 tbMen, TBB checkers);

/// Settles the position at `board` by captures, promotions, some checks and all evasions. May return values outside
/// the window, which itself may be inverted below a node in check.
/// qDepth  0 from search, one less at each level
/// The search itself goes in by quiescenceGuard; this is the way in where neither draw nor stop is to be looked at.
i16 quiescence(i16 qDepth, i16 alpha, i16 beta, i16 mateScore, i16 tbMen);

/// The way into quiescence: draws by rule and stops first.
i16 quiescenceGuard(i16 qDepth, i16 alpha, i16 beta, i16 mateScore, i16 tbMen);
/// The same with `checkers`, what inCheck tells of the position, known to the caller.
i16 quiescenceGuard(i16 qDepth, i16 alpha, i16 beta, i16 mateScore, i16 tbMen, TBB checkers);

/// Whether the budget is used up by the clock; sets stopSearch when true.
[[nodiscard]] bool clockHasRunOut();

/// The same, but the clock is read only when `nodes` is a multiple of 1024.
[[nodiscard]] inline bool timeIsUp() {
    constexpr u32 clockPollMask = 1023;
    return (SearchInfo.nodes & clockPollMask) == 0 && clockHasRunOut();
}

/// Whether this search has been told to end, or ends itself by the clock.
[[nodiscard]] inline bool mustStop() {
    return EngineOptions.stopSearch == 1 || timeIsUp();
}

/// Third occurrence, or the fifty-move rule passed. A mate by the hundredth ply still counts.
[[nodiscard]] bool drawnByRule(TBB checkers);

/// Puts `move` and the line under it into `pv`, stale words too.
inline void copyLine(PvLine& pv, Mossa move, const PvLine& childLine) {
    pv.argmove[0] = move;
    for (i32 i = 1; i < lineMax; ++i) {
        pv.argmove[i] = childLine.argmove[i - 1];
    }
    // Extensions and restarted plies make lines longer than the words that hold them.
    pv.count = childLine.count < lineMax ? childLine.count + 1 : lineMax;
}
