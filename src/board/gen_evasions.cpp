// Moves that may answer a check. King moves and en passant are not tested for safety here: leftInCheck does that.
#include "board/board.h"

#include "board/generation.h"

using namespace generation;

// Captures of `victims`, then quiet moves to `block`.
static void appendAnswers(const Scacchiera& b, i32 quietKind, i32 from, TBB reach, TBB victims, TBB block,
                          MoveList& captures, QuietList& quiets) {
    appendCaptures(b, captures, quietKind | 8, from, reach & victims);
    appendQuiets(quiets, quietKind, from, reach & block);
}

static void appendPieceAnswers(const Scacchiera& b, TBB checker, TBB block, MoveList& captures,
                               QuietList& quiets) {
    const TBB occ = occupied(b);
    for (TBB from = queens(b) & b.side; from != 0;) {
        const i32 square = popLowest(from);
        appendAnswers(b, MOVE_QUEEN, square, queenAttacks(square, occ), checker, block, captures, quiets);
    }
    for (TBB from = rooks(b) & b.side; from != 0;) {
        const i32 square = popLowest(from);
        appendAnswers(b, MOVE_ROOK, square, rookAttacks(square, occ), checker, block, captures, quiets);
    }
    for (TBB from = bishops(b) & b.side; from != 0;) {
        const i32 square = popLowest(from);
        appendAnswers(b, MOVE_BISHOP, square, bishopAttacks(square, occ), checker, block, captures, quiets);
    }
    for (TBB from = knights(b) & b.side; from != 0;) {
        const i32 square = popLowest(from);
        appendAnswers(b, MOVE_KNIGHT, square, KnightAttacks[square], checker, block, captures, quiets);
    }
}

static void appendPawnAnswers(const Scacchiera& b, TBB checker, TBB block, MoveList& captures,
                              QuietList& quiets) {
    const TBB ownPawns = pawns(b) & b.side;
    const TBB empty = ~occupied(b);
    for (TBB from = ownPawns; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(quiets, MOVE_PAWN, square, pawnSteps(square, empty) & block);
    }
    appendEnPassant(b, captures);
    for (TBB from = ownPawns & rank7; from != 0;) {
        const i32 square = popLowest(from);
        appendPromotions(captures, PROMO_CAPT, square, PawnAttacks[square] & checker);
    }
    for (TBB from = ownPawns & rank7; from != 0;) {
        const i32 square = popLowest(from);
        appendPromotions(captures, PROMO, square, PawnPushes[square] & block & empty);
    }
    for (TBB from = ownPawns & ranks1To6; from != 0;) {
        const i32 square = popLowest(from);
        appendCaptures(b, captures, CAPT_PAWN, square, PawnAttacks[square] & checker);
    }
}

void genEvasions(TBB checkers, MoveList& captures, QuietList& quiets) {
    const Scacchiera& b = *board;
    captures.count = 0;
    quiets.count = 0;
    const i32 king = kingSquare(kings(b) & b.side);
    if (king == noSquare || checkers == 0) {
        return;
    }
    // With two checkers the line to the lower one alone is closed to the king: deliberate.
    const TBB block = Between[king][lowestBit(checkers)];
    if ((checkers & (checkers - 1)) == 0) {
        appendPieceAnswers(b, checkers, block, captures, quiets);
        appendPawnAnswers(b, checkers, block, captures, quiets);
    }
    appendAnswers(b, MOVE_KING, king, KingAttacks[king], opponent(b), ~occupied(b) & ~block, captures,
                  quiets);
}
