// Which moves of a node may give check. The squares are worked out once, so that most moves need no test of their own.
#pragma once

#include "board/attacks.h"
#include "board/board.h"
#include "board/make_move.h"

#include <array>

/// Squares and men of the position at `board`, in the mover's frame.
struct CheckSets {
    std::array<TBB, 8> squares;  // by piece code: where such a man attacks the enemy's king
    TBB openers;                 // own men whose move may open a line to it
};

/// Works out the sets of the position of `n` at `board`.
[[nodiscard]] inline CheckSets checkSets(const NodeMoves& n) {
    const Scacchiera& b = *board;
    const TBB enemyKings = kings(b) & ~b.side;
    CheckSets sets{};
    if (enemyKings == 0) {
        return sets;
    }
    const i32 king = lowestBit(enemyKings);
    const TBB rookLines = rookAttacks(king, n.occ);
    const TBB bishopLines = bishopAttacks(king, n.occ);
    sets.squares = {0,         diagonalsBelow(squareBit(king)), KnightAttacks[king], bishopLines,
                    rookLines, rookLines | bishopLines,         KingAttacks[king],   0};
    // A king that could be taken, or one of several, comes only from a typed position: there every move is tested.
    const TBB attackers = (rookLines & rooksAndQueens(b)) | (bishopLines & bishopsAndQueens(b)) |
                          (sets.squares[PAWN] & pawns(b)) | (sets.squares[KNIGHT] & knights(b)) |
                          (sets.squares[KING] & kings(b));
    const bool isOrdinary = (enemyKings & (enemyKings - 1)) == 0 && (attackers & b.side) == 0;
    sets.openers = isOrdinary ? node::loneMenBefore(b, n.occ, king, b.side) & b.side : ~TBB{0};
    return sets;
}

/// False only if `move`, pseudo-legal in the position of `sets`, gives no check for certain.
[[nodiscard]] inline bool mayGiveCheck(const CheckSets& sets, Mossa move) {
    const i32 kind = moveKind(move);
    return kind >= PROMO ||
           ((sets.squares[kind & 7] >> moveTo(move) | sets.openers >> moveFrom(move)) & 1) != 0;
}
