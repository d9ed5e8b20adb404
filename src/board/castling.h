// Where king and rook stand and go in castling, in the frame of the side to move.
#pragma once

#include "board/board.h"
#include "board/tables.h"

struct CastlingSquares {
    i32 kingFrom;
    i32 kingTo;
    i32 rookFrom;
    i32 rookTo;
};
constexpr CastlingSquares longCastling = {4, 2, 0, 3};   // e1 c1, a1 d1
constexpr CastlingSquares shortCastling = {4, 6, 7, 5};  // e1 g1, h1 f1

constexpr Mossa castleLong = makeMossa(CASTLE_LONG, longCastling.kingFrom, longCastling.kingTo);
constexpr Mossa castleShort = makeMossa(CASTLE_SHORT, shortCastling.kingFrom, shortCastling.kingTo);
static_assert(castleLong == 132134 && castleShort == 394262);

/// The two squares that the rook's move changes.
[[nodiscard]] constexpr TBB rookSquares(const CastlingSquares& castling) {
    return squareBit(castling.rookFrom) | squareBit(castling.rookTo);
}

/// What one castling asks of the board: empty squares, squares no slider may attack, and the squares from which a
/// knight, pawn or king would attack those.
struct CastlingMasks {
    u8 right;
    TBB empty;
    TBB safe;
    TBB knights;
    TBB pawns;
    TBB kings;
};

[[nodiscard]] consteval CastlingMasks castlingMasks(u8 right, const CastlingSquares& castling, TBB kings) {
    const TBB firstRank = 0xFF;
    const auto span = [](i32 a, i32 b) {
        TBB set = 0;
        for (i32 square = a < b ? a : b; square <= (a < b ? b : a); ++square) {
            set |= squareBit(square);
        }
        return set;
    };
    CastlingMasks masks{};
    masks.right = right;
    masks.kings = kings;
    masks.safe = span(castling.kingFrom, castling.kingTo);
    masks.empty = span(castling.kingFrom, castling.rookFrom) & ~squareBit(castling.kingFrom) &
                  ~squareBit(castling.rookFrom);
    for (TBB rest = masks.safe; rest != 0;) {
        const i32 square = popLowest(rest);
        masks.knights |= KnightAttacks[square] & ~firstRank;
        masks.pawns |= geometry::step(square, -1, 1) | geometry::step(square, 1, 1);
    }
    return masks;
}
// Kings on b2 and c2, and on g2: squares next to the own king need no mention. Deliberate: h2 has none either.
constexpr CastlingMasks longCastlingMasks = castlingMasks(OWN_LONG, longCastling, 0x600);
constexpr CastlingMasks shortCastlingMasks = castlingMasks(OWN_SHORT, shortCastling, 0x4000);
static_assert(longCastlingMasks.empty == 14 && longCastlingMasks.safe == 28 &&
              longCastlingMasks.knights == 0x3E7700 && longCastlingMasks.pawns == 0x3E00);
static_assert(shortCastlingMasks.empty == 96 && shortCastlingMasks.safe == 112 &&
              shortCastlingMasks.knights == 0xF8DC00 && shortCastlingMasks.pawns == 0xF800);
