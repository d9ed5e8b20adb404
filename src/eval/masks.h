// Sets of squares by rule, in the frame of the own side, and the fills. Own pawns move up.
#pragma once

#include "board/tables.h"
#include "platform/bits.h"

#include <array>

constexpr TBB rank1 = 0xFF;
constexpr TBB rank8 = rank1 << 56;
constexpr TBB fileA = 0x0101010101010101;
constexpr TBB fileH = fileA << 7;

/// A set of one or more squares by name: squares("a6", "b7").
template <typename... Names>
consteval TBB squares(const Names&... names) {
    return ((TBB{1} << ((names[1] - '1') * 8 + (names[0] - 'a'))) | ...);
}
static_assert(squares("a1", "h8") == 0x8000000000000001);

[[nodiscard]] constexpr i32 fileOf(i32 square) {
    return square & 7;
}
[[nodiscard]] constexpr i32 rankOf(i32 square) {
    return square >> 3;
}

// ---- fills ----------------------------------------------------------------------------------------------------

/// The set and every square below a member on its file.
[[nodiscard]] constexpr TBB southFill(TBB set) {
    set |= set >> 8;
    set |= set >> 16;
    return set | set >> 32;
}

/// The set and every square above a member on its file.
[[nodiscard]] constexpr TBB northFill(TBB set) {
    set |= set << 8;
    set |= set << 16;
    return set | set << 32;
}

/// The squares to the left and to the right of the members, within the board.
[[nodiscard]] constexpr TBB sideways(TBB set) {
    return (set & ~fileA) >> 1 | (set & ~fileH) << 1;
}

/// The files on which the set has a member, bit 0 for file a.
[[nodiscard]] constexpr u32 filesOf(TBB set) {
    return static_cast<u32>(southFill(set) & rank1);
}

// ---- tables ---------------------------------------------------------------------------------------------------

/// All squares of a file.
inline constexpr std::array<TBB, 8> fileMask = [] {
    std::array<TBB, 8> table{};
    for (u32 file = 0; file < 8; ++file) {
        table[file] = fileA << file;
    }
    return table;
}();

/// All squares of the one or two files next to a file.
inline constexpr std::array<TBB, 8> adjacentFiles = [] {
    std::array<TBB, 8> table{};
    for (u32 file = 0; file < 8; ++file) {
        table[file] = sideways(fileMask[file]);
    }
    return table;
}();

/// Where an enemy pawn keeps a pawn on the square from being passed: its file and the files next to it, on the ranks
/// above it up to rank 7. Empty on ranks 1, 7 and 8.
inline constexpr SquareTable passedMask = geometry::bySquare([](i32 s) {
    const u32 file = static_cast<u32>(fileOf(s));
    const TBB ranksAbove = rankOf(s) < 6 ? ~TBB{0} << ((rankOf(s) + 1) * 8) : 0;
    return s < 8 ? 0 : (fileMask[file] | adjacentFiles[file]) & ranksAbove & ~rank8;
});

/// King's distance between two squares: the larger of the file and the rank difference. Each source that looks at it has
/// a copy of its own; there is one.
constexpr std::array<std::array<u8, 64>, 64> squareDistance = [] {
    const auto difference = [](i32 a, i32 b) { return a > b ? a - b : b - a; };
    std::array<std::array<u8, 64>, 64> table{};
    for (i32 a = 0; a < 64; ++a) {
        for (i32 b = 0; b < 64; ++b) {
            const i32 files = difference(fileOf(a), fileOf(b));
            const i32 ranks = difference(rankOf(a), rankOf(b));
            table[static_cast<u32>(a)][static_cast<u32>(b)] = static_cast<u8>(files > ranks ? files : ranks);
        }
    }
    return table;
}();

/// The rising diagonal (a1 to h8 direction) through a square, without the square.
inline constexpr SquareTable diagonalThrough = geometry::bySquare([](i32 s) {
    TBB set = 0;
    for (i32 n = 1; n < 8; ++n) {
        set |= geometry::step(s, n, n) | geometry::step(s, -n, -n);
    }
    return set;
});

/// The falling diagonal (h1 to a8 direction) through a square, without the square.
inline constexpr SquareTable antiDiagonalThrough = geometry::bySquare([](i32 s) {
    TBB set = 0;
    for (i32 n = 1; n < 8; ++n) {
        set |= geometry::step(s, -n, n) | geometry::step(s, n, -n);
    }
    return set;
});

/// The up to three squares in front of a king: straight ahead and the two beside that.
inline constexpr SquareTable kingZoneFront1 = geometry::bySquare(
    [](i32 s) { return geometry::step(s, -1, 1) | geometry::step(s, 0, 1) | geometry::step(s, 1, 1); });

/// The same squares one rank further up.
inline constexpr SquareTable kingZoneFront2 = geometry::bySquare(
    [](i32 s) { return geometry::step(s, -1, 2) | geometry::step(s, 0, 2) | geometry::step(s, 1, 2); });

/// The squares beside a king and the up to three on the rank below.
inline constexpr SquareTable kingZoneSides = geometry::bySquare([](i32 s) {
    using geometry::step;
    return step(s, -1, 0) | step(s, 1, 0) | step(s, -1, -1) | step(s, 0, -1) | step(s, 1, -1);
});

/// All of these: where the kinds of attacker count for a king's safety.
inline constexpr SquareTable kingZone = geometry::bySquare([](i32 s) {
    const auto square = static_cast<u32>(s);
    return kingZoneFront1[square] | kingZoneFront2[square] | kingZoneSides[square];
});
