// Operations on lists of moves: killers, history, the test of a hash move, the root list and its sorts.
#pragma once

#include "board/board.h"
#include "search/root_list.h"

#include <array>

constexpr i32 killerPlies = 64;

/// [c][from][to], c 1 when Black is to move, squares in the mover's frame: depth squared for each cut-off by a quiet
/// move. Cleared by think only.
extern std::array<std::array<std::array<i32, 64>, 64>, 2> historyTable;
/// [ply][0] the newer, [ply][1] the older quiet move that cut off at this ply. Cleared before each iteration.
extern std::array<std::array<Mossa, 2>, killerPlies> killers;

/// Takes `move` out of the list. Returns 1 if it was there, else 0. Deliberate: only the moves are exchanged, so the
/// last move takes over the score of the dropped one.
i32 dropFromCaptures(Mossa move, MoveList& list);
/// Takes `move` out of the list. Returns 1 if it was there, else 0.
i32 dropFromQuiets(Mossa move, QuietList& list);
/// Brings the first killer of `ply` (0 to 63) in the list to its end. Returns 1 if one was found, else 0.
i32 killerToEnd(i32 ply, QuietList& list);
/// One pass that brings a move of high history to the end of the list.
void historyToEnd(QuietList& list);
/// `move` becomes the newer killer of `ply` (0 to 63) unless it is so already.
void saveKiller(i32 ply, Mossa move);
/// Whether the men on from and to suit a hash move's kind; looks at no path and no check.
[[nodiscard]] bool isPseudoLegal(Mossa move);

/// legalMoves into the `move` words of a root list; the other words are left alone.
void rootMoves(RootList& list, i32& count);

/// Quicksort of entries first to last (inclusive), ascending by tbRank; not stable.
void sortByTbRank(RootList& list, i32 first, i32 last);
/// The same, descending by score.
void sortByScore(RootList& list, i32 first, i32 last);
