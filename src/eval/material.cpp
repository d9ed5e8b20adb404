// Whether anybody can still win by the material on the board.
#include "eval/eval.h"

#include "board/board.h"

// The 28 squares of the rim, as a set.
constexpr TBB edgeSquare = 0xFF818181818181FF;

// Pawnless material above this wins by itself: more than one minor piece.
constexpr i32 loneMinorPieceAtMost = 399;  // centipawns

static i32 pieceMaterial(const Scacchiera& b, TBB men) {
    return pieceValue[KNIGHT] * popCount((knights(b) | bishops(b)) & men) +
           pieceValue[ROOK] * popCount(rooks(b) & men) + pieceValue[QUEEN] * popCount(queens(b) & men);
}

static bool kingOnEdge(const Scacchiera& b, TBB men) {
    const TBB king = kings(b) & men;
    return (king & (0 - king) & edgeSquare) != 0;  // of several kings the lowest
}

i32 sufficientMaterial() {
    const Scacchiera& b = *board;
    if (pawns(b) != 0) {
        return 1;
    }
    const TBB enemies = opponent(b);
    const i32 own = pieceMaterial(b, b.side);
    const i32 enemy = pieceMaterial(b, enemies);
    if (own > loneMinorPieceAtMost || enemy > loneMinorPieceAtMost) {
        return 1;
    }
    return (kingOnEdge(b, b.side) && enemy != 0) || (kingOnEdge(b, enemies) && own != 0) ? 1 : 0;
}
