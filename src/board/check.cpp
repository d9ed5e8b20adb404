// The two attack tests behind legality.
#include "board/board.h"

#include "board/attacks.h"

TBB inCheck() {
    const Scacchiera& b = *board;
    const i32 king = kingSquare(kings(b) & b.side);
    return king == noSquare ? 0 : attackersOfKing(Placement{b.side, b.pbq, b.nbk, b.rqk}, occupied(b), king);
}

TBB leftInCheck() {
    const Scacchiera& b = *board;
    const i32 king = kingSquare(kings(b) & ~b.side);
    if (king == noSquare) {
        return 0;
    }
    const TBB attackers = (rookAttacks(king, occupied(b)) & rooksAndQueens(b)) |
                          (bishopAttacks(king, occupied(b)) & bishopsAndQueens(b)) |
                          (diagonalsBelow(squareBit(king)) & pawns(b)) | (KnightAttacks[king] & knights(b)) |
                          (KingAttacks[king] & kings(b));
    return attackers & b.side;
}
