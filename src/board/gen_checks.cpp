// Quiet moves that may give check, for the first plies of the quiescence search: candidates, not proven checks.
#include "board/board.h"

#include "board/castling.h"
#include "board/generation.h"

using namespace generation;

// How the enemy king's lines run through the position.
struct KingLines {
    TBB rookLines;    // a man landing here attacks the king along a rank or file
    TBB bishopLines;  // or along a diagonal
    TBB rookXray;     // behind the first own man of each rank or file, up to the second
    TBB bishopXray;
};

[[nodiscard]] static KingLines linesOfKing(const Scacchiera& b, i32 king) {
    if (((bishops(b) | rooks(b) | queens(b)) & b.side) == 0) {
        return {};
    }
    const TBB occ = occupied(b);
    const TBB own = b.side;
    const TBB rookFirst = rookAttacks(king, own);
    const TBB bishopFirst = bishopAttacks(king, own);
    return {rookAttacks(king, occ), bishopAttacks(king, occ), rookFirst ^ rookAttacks(king, own & ~rookFirst),
            bishopFirst ^ bishopAttacks(king, own & ~bishopFirst)};
}

// Own men that stand between a slider and the king, by the kind of line.
struct Discoverers {
    TBB diagonal;
    TBB line;
};

static Discoverers appendSliderChecks(const Scacchiera& b, i32 king, QuietList& checks) {
    const TBB occ = occupied(b);
    const TBB empty = ~occ;
    const TBB own = b.side;
    const KingLines lines = linesOfKing(b, king);
    Discoverers found{0, 0};
    for (TBB from = queens(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(checks, MOVE_QUEEN, square,
                     queenAttacks(square, occ) & empty & (lines.rookLines | lines.bishopLines));
        const TBB screen = Between[king][square] & own;
        found.diagonal |= screen & ~lines.bishopXray;
        found.line |= screen & ~lines.rookXray;
    }
    for (TBB from = rooks(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(checks, MOVE_ROOK, square, rookAttacks(square, occ) & empty & lines.rookLines);
        found.line |= Between[king][square] & own & ~lines.rookXray;
    }
    for (TBB from = bishops(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(checks, MOVE_BISHOP, square, bishopAttacks(square, occ) & empty & lines.bishopLines);
        found.diagonal |= Between[king][square] & own & ~lines.bishopXray;
    }
    return found;
}

static void appendStepChecks(const Scacchiera& b, i32 king, QuietList& checks) {
    const TBB empty = ~occupied(b);
    for (TBB from = knights(b) & b.side; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(checks, MOVE_KNIGHT, square, KnightAttacks[square] & KnightAttacks[king] & empty);
    }
    for (TBB from = pawns(b) & b.side; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(checks, MOVE_PAWN, square, pawnSteps(square, empty) & PawnChecks[king]);
    }
}

// The rook's line is looked along over the occupancy before castling: deliberate.
static void appendCastlingChecks(const Scacchiera& b, i32 king, QuietList& checks) {
    const CastlingTests castling = castlingTests(b);
    const TBB occ = occupied(b);
    if (castling.longPasses && (rookAttacks(longCastling.rookTo, occ) & squareBit(king)) != 0) {
        checks.entries[checks.count++] = castleLong;
    }
    if (castling.shortPasses && (rookAttacks(shortCastling.rookTo, occ) & squareBit(king)) != 0) {
        checks.entries[checks.count++] = castleShort;
    }
}

static void appendDiscoveredChecks(const Scacchiera& b, const Discoverers& found, QuietList& checks) {
    const TBB occ = occupied(b);
    const TBB empty = ~occ;
    const TBB either = found.diagonal | found.line;
    const i32 ownKing = kingSquare(kings(b) & b.side);
    if (ownKing != noSquare && (either & squareBit(ownKing)) != 0) {
        appendQuiets(checks, MOVE_KING, ownKing, KingAttacks[ownKing] & empty);
    }
    for (TBB from = rooks(b) & b.side & found.diagonal; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(checks, MOVE_ROOK, square, rookAttacks(square, occ) & empty);
    }
    for (TBB from = bishops(b) & b.side & found.line; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(checks, MOVE_BISHOP, square, bishopAttacks(square, occ) & empty);
    }
    for (TBB from = knights(b) & b.side & either; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(checks, MOVE_KNIGHT, square, KnightAttacks[square] & empty);
    }
    for (TBB from = pawns(b) & b.side & either; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(checks, MOVE_PAWN, square, pawnSteps(square, empty));
    }
}

void genChecks(QuietList& checks) {
    const Scacchiera& b = *board;
    checks.count = 0;
    const i32 king = kingSquare(kings(b) & ~b.side);
    if (king == noSquare) {
        return;
    }
    const Discoverers found = appendSliderChecks(b, king, checks);
    appendStepChecks(b, king, checks);
    appendCastlingChecks(b, king, checks);
    appendDiscoveredChecks(b, found, checks);
}
