// Wins and distances of three men, worked out backwards from the mates by the rules alone.
#pragma once

#include "plain_rules.h"

#include <vector>

namespace plain {

/// Values from the side to move, as a perfect table has them.
struct Value {
    i32 wdl;  // -2 loss, 0 draw, 2 win
    i32 dtz;  // plies to the next capture, pawn's move or mate, negative for the loser; 0 draw
};

constexpr i32 threeMenPositions = 64 * 64 * 64 * 2;

/// Values of all positions of a king and a man against a king, the man White's.
struct ThreeMen {
    char man;  // 'Q', 'R', 'B', 'N' or 'P'
    std::vector<bool> legal;
    std::vector<Value> values;
};

/// Solved when first asked for.
[[nodiscard]] const ThreeMen& solvedThreeMen(char man);
[[nodiscard]] Position positionOf(const ThreeMen& table, i32 index);

}  // namespace plain
