// Lookup tables of the board: steps, lines, sliding attacks, keys. All in the frame of the side to move.
#pragma once

#include "platform/bits.h"

#include <array>

using SquareTable = std::array<TBB, 64>;

namespace geometry {

/// The set of squares at (file + df, rank + dr) from `square`, empty if that is off the board.
constexpr TBB step(i32 square, i32 df, i32 dr) {
    const i32 file = (square & 7) + df;
    const i32 rank = (square >> 3) + dr;
    return file < 0 || file > 7 || rank < 0 || rank > 7 ? 0 : TBB{1} << (rank * 8 + file);
}

template <typename Rule>
consteval SquareTable bySquare(Rule rule) {
    SquareTable table{};
    for (i32 s = 0; s < 64; ++s) {
        table[static_cast<std::size_t>(s)] = rule(s);
    }
    return table;
}

}  // namespace geometry

/// The up to eight squares next to a square.
inline constexpr SquareTable KingAttacks = geometry::bySquare([](i32 s) {
    TBB set = 0;
    for (i32 df = -1; df <= 1; ++df) {
        for (i32 dr = -1; dr <= 1; ++dr) {
            set |= df != 0 || dr != 0 ? geometry::step(s, df, dr) : 0;
        }
    }
    return set;
});

/// The up to eight knight jumps.
inline constexpr SquareTable KnightAttacks = geometry::bySquare([](i32 s) {
    using geometry::step;
    return step(s, 1, 2) | step(s, 2, 1) | step(s, 2, -1) | step(s, 1, -2) | step(s, -1, -2) |
           step(s, -2, -1) | step(s, -2, 1) | step(s, -1, 2);
});

/// One step of an own pawn, from ranks 2 to 7.
inline constexpr SquareTable PawnPushes =
    geometry::bySquare([](i32 s) { return s >= 8 && s < 56 ? geometry::step(s, 0, 1) : 0; });

/// Two steps of an own pawn, from rank 2.
inline constexpr SquareTable PawnDoublePushes =
    geometry::bySquare([](i32 s) { return s >= 8 && s < 16 ? geometry::step(s, 0, 2) : 0; });

/// What an own pawn attacks, from ranks 2 to 7.
inline constexpr SquareTable PawnAttacks = geometry::bySquare(
    [](i32 s) { return s >= 8 && s < 56 ? geometry::step(s, -1, 1) | geometry::step(s, 1, 1) : 0; });

/// By target, on ranks 3 to 8: the squares from which an own pawn attacks it.
inline constexpr SquareTable PawnChecks = geometry::bySquare(
    [](i32 s) { return s >= 16 ? geometry::step(s, -1, -1) | geometry::step(s, 1, -1) : 0; });

/// [a][b]: the squares strictly between two squares of one rank, file or diagonal; else empty.
extern const std::array<SquareTable, 64> Between;

// ---- sliding attacks ------------------------------------------------------------------------------------------

struct MagicEntry {
    TBB mask;            // the squares of the rays that can block, rim left out
    u64 magic;           // the multiplier
    u32 shift;           // 64 minus the number of bits in `mask`
    const TBB* attacks;  // first entry of the square's stretch
};

extern const std::array<MagicEntry, 64> bishopMagic;
extern const std::array<MagicEntry, 64> rookMagic;

[[nodiscard]] inline TBB slidingAttacks(const MagicEntry& entry, TBB occ) {
    return entry.attacks[(occ & entry.mask) * entry.magic >> entry.shift];
}

/// All squares a bishop on `square` reaches, the first blocker on each ray included whatever its colour.
[[nodiscard]] inline TBB bishopAttacks(i32 square, TBB occ) {
    return slidingAttacks(bishopMagic[static_cast<std::size_t>(square)], occ);
}
[[nodiscard]] inline TBB rookAttacks(i32 square, TBB occ) {
    return slidingAttacks(rookMagic[static_cast<std::size_t>(square)], occ);
}
[[nodiscard]] inline TBB queenAttacks(i32 square, TBB occ) {
    return bishopAttacks(square, occ) | rookAttacks(square, occ);
}

// ---- keys -----------------------------------------------------------------------------------------------------

/// Zobrist keys. Rows of `piece`: colour * 8 + piece code, colour 0 Black, 1 White; squares in the owner's frame.
struct ZobristKeys {
    std::array<std::array<u64, 64>, 16> piece;
    std::array<u64, 52> castle;  // by the `castleRights` byte in the current frame
    std::array<u64, 9> ep;       // by `epFile`; entry 8 is 0
    u64 side;                    // when White is to move
};
extern const ZobristKeys zobrist;
