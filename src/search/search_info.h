// The records of the search that others read or fill. No include but platform types.
#pragma once

#include "platform/bits.h"
#include "platform/relaxed.h"

#include <array>

/// Written by the search thread. `iterationDepth` alone is read by other threads while a search runs.
struct SearchInfoRecord {
    i32 elapsedCs;                // centiseconds since searchStartMs, written with each thinking line
    u32 nodes;                    // counted nodes of the present iteration
    Relaxed<i32> iterationDepth;  // depth of the running iteration, 0 before the first
};
extern SearchInfoRecord SearchInfo;

/// Words of a line: as many as a search has depths.
constexpr i32 lineMax = 64;

/// A line of moves under a node; words beyond `count` are stale.
struct PvLine {
    i32 count;
    std::array<u32, lineMax> argmove;
};

/// The line of the root: argmove[0] is the best move, argmove[1] the expected reply. think empties it, or writes an only
/// move into it; rootSearch writes it when a move raises alpha, in an attempt that is stopped later too.
extern PvLine gs_lineH;
