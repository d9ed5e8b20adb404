// From a position to a move.
#pragma once

#include "board/board.h"
#include "search/search_info.h"

/// Searches the position at `board` at growing depth until the clock, stopSearch or maxDepth ends it, telling
/// thinkingSink of each attempt. Returns the move to play, 0 if no iteration was completed.
/// ponderSearch  0: an ordinary search, sets EngineOptions.ponderMove. 1: on the thread that ponders or analyses,
///               sets ponderBest.
/// Before: stopSearch 0, searchStartMs, moveTime and allocatedTime set. Clears the transposition table, history and
/// killers. `board` is as before afterwards.
Mossa think(i32 ponderSearch);
