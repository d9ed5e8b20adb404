// Piece values and piece-square tables: what make-move needs of the evaluation. No include but platform types.
#pragma once

#include "platform/bits.h"

#include <array>

/// Centipawns by piece code. The king's 10000 is for captures only: psqScore gives the king no material. The entry
/// for code 7, which no move produces, is 0.
inline constexpr std::array<i32, 8> pieceValue = {0, 100, 325, 325, 500, 950, 10000, 0};

/// [piece code][square in the owner's frame], centipawns. Row 0 is zero, row 6 the king in the opening, row 7 the
/// king in the ending.
extern const std::array<std::array<i32, 64>, 8> psqTable;

/// Placement value of a king on `square` of its own frame with `men` men of both colours on the board (0 to 64),
/// centipawns: the opening table fades into the ending table.
[[nodiscard]] constexpr i32 kingTerm(i32 men, i32 opening, i32 ending) {
    return (opening * men + ending * (32 - men)) >> 5;
}
[[nodiscard]] inline i32 kingTerm(i32 men, i32 square) {
    return kingTerm(men, psqTable[6][static_cast<u32>(square)], psqTable[7][static_cast<u32>(square)]);
}

/// The same by [men on the board][square].
extern const std::array<std::array<i16, 64>, 65> kingTerms;

/// Own minus opponent's material and placement of the position at `board` from scratch, centipawns, 16 bits: what
/// psqScore must equal. A side without king has no king term.
[[nodiscard]] i16 easyVal();
