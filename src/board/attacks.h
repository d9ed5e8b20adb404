// Who attacks a king: the tests behind inCheck, leftInCheck and the node's shared sets.
#pragma once

#include "board/board.h"
#include "board/tables.h"

/// Stands for the square of a king that is not on the board.
constexpr i32 noSquare = 64;

/// Lowest member, or noSquare: a position from outside may lack a king.
[[nodiscard]] constexpr i32 kingSquare(TBB kingsOfOneSide) {
    return kingsOfOneSide == 0 ? noSquare : lowestBit(kingsOfOneSide);
}

constexpr TBB notFileA = 0xFEFEFEFEFEFEFEFEULL;
constexpr TBB notFileH = 0x7F7F7F7F7F7F7F7FULL;

/// The squares diagonally above the members of `set`: where enemy pawns attack them from.
[[nodiscard]] constexpr TBB diagonalsAbove(TBB set) {
    return (set << 9 & notFileA) | (set << 7 & notFileH);
}
/// The squares diagonally below: where own pawns attack them from.
[[nodiscard]] constexpr TBB diagonalsBelow(TBB set) {
    return (set >> 9 & notFileH) | (set >> 7 & notFileA);
}

/// The four words of a placement in the frame of `side`.
struct Placement {
    TBB side;
    TBB pbq;
    TBB nbk;
    TBB rqk;
};

/// Enemy men of `p` that attack the own king on `king`.
[[nodiscard]] inline TBB attackersOfKing(const Placement& p, TBB occ, i32 king) {
    const TBB rookLike = p.rqk & (p.pbq | ~p.nbk);
    const TBB bishopLike = p.pbq & (p.nbk | p.rqk);
    const TBB attackers = (rookAttacks(king, occ) & rookLike) | (bishopAttacks(king, occ) & bishopLike) |
                          (diagonalsAbove(TBB{1} << king) & p.pbq & ~p.nbk & ~p.rqk) |
                          (KnightAttacks[king] & p.nbk & ~p.pbq & ~p.rqk) |
                          (KingAttacks[king] & p.nbk & p.rqk);
    return attackers & (occ ^ p.side);
}
