// The moves of a search's root with what is known of each. No include but board types.
#pragma once

#include "board/board.h"

#include <array>

/// An entry of the root list.
struct RootMove {
    Mossa move;
    i32 tbRank;  // filled by the root probe: positive wins, smaller faster; negative loses; 0 draws
    i32 score;   // centipawns, written by rootSearch
};

using RootList = std::array<RootMove, moveCapacity>;
