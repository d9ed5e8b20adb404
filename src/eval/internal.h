// What the files of this folder share: table building and the evaluation's own hooks.
#pragma once

#include "platform/bits.h"

#include <array>

/// Brings a table printed as a player sees the board (rank 8 on top, files a to h) into square order (a1 = 0).
template <typename T>
consteval std::array<T, 64> rank8OnTop(const std::array<T, 64>& printed) {
    std::array<T, 64> table{};
    for (u32 square = 0; square < 64; ++square) {
        table[square] = printed[square ^ 56];
    }
    return table;
}

/// For tests alone: true makes evaluate leave out both passes, so that its value is psqScore and the dead-draw test.
extern bool evalMaterialOnly;
