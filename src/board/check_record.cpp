// What the incremental key and score must equal. Compiled into every build, called where TARVELMON_CHECK_RECORDS asks.
#include "board/board.h"
#include "board/make_move.h"

static bool hasTrueKeyAndScore() {
    return board->hashKey == computeKey() && board->psqScore == easyVal();
}

// One king a side, no square with a code that is no piece's or with an owner and no man: text from outside can set up
// all of these.
static bool isOrdinary(const Scacchiera& b) {
    return popCount(kings(b) & b.side) == 1 && popCount(kings(b) & ~b.side) == 1 &&
           (b.pbq & b.nbk & b.rqk) == 0 && (b.side & ~occupied(b)) == 0;
}

static bool castlingFits(const Scacchiera& b, const MoveParts& move, const CastlingSquares& castling) {
    return move.from == castling.kingFrom && move.to == castling.kingTo &&
           (rooks(b) & b.side & squareBit(castling.rookFrom)) != 0 &&
           (occupied(b) & squareBit(castling.rookTo)) == 0;
}

// The men on the squares are those that the kind speaks of.
static bool moveFits(const Scacchiera& b, const MoveParts& move) {
    const TBB from = squareBit(move.from);
    const TBB to = squareBit(move.to);
    const bool promotes = (move.kind & ~8) == PROMO;
    if ((b.side & from) == 0 || pieceCode(b, move.from) != (move.kind & 7) ||
        promotes != (move.promo >= KNIGHT && move.promo <= QUEEN) || (!promotes && move.promo != 0)) {
        return false;
    }
    switch (move.kind) {
        case CASTLE_SHORT:
            return (occupied(b) & to) == 0 && castlingFits(b, move, shortCastling);
        case CASTLE_LONG:
            return (occupied(b) & to) == 0 && castlingFits(b, move, longCastling);
        case EN_PASSANT:
            return (occupied(b) & to) == 0 && (pawns(b) & ~b.side & to >> 8) != 0;
        default:
            return (move.kind & 8) != 0 ? (opponent(b) & ~kings(b) & to) != 0 : (occupied(b) & to) == 0;
    }
}

bool madeRecordIsTrue(const MoveParts& move) {
    if (hasTrueKeyAndScore()) {
        return true;
    }
    --board;
    const bool mayDiffer = !hasTrueKeyAndScore() || !isOrdinary(*board) || !moveFits(*board, move);
    ++board;
    return mayDiffer;
}
