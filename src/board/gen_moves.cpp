// Generators of captures and quiet moves, and the castling tests that all generators share. Inside a stage pieces and
// targets go from the lowest square upward; the order of stages and entries is part of the engine's play.
#include "board/board.h"

#include "board/castling.h"
#include "board/generation.h"

using namespace generation;

// ---- castling -------------------------------------------------------------------------------------------------

[[nodiscard]] static bool mayStillPass(const Scacchiera& b, const CastlingMasks& m) {
    return (b.castleRights & m.right) != 0 && (occupied(b) & m.empty) == 0;
}

[[nodiscard]] static bool isUnattacked(const Scacchiera& b, const CastlingMasks& m, TBB rays) {
    return (rays & m.safe) == 0 &&
           (((knights(b) & m.knights) | (pawns(b) & m.pawns) | (kings(b) & m.kings)) & ~b.side) == 0;
}

// Everything the enemy's bishops, rooks and queens reach.
[[nodiscard]] static TBB enemyRays(const Scacchiera& b) {
    const TBB occ = occupied(b);
    TBB rays = 0;
    TBB bishopLike = bishopsAndQueens(b) & ~b.side;
    while (bishopLike != 0) {
        rays |= bishopAttacks(popLowest(bishopLike), occ);
    }
    TBB rookLike = rooksAndQueens(b) & ~b.side;
    while (rookLike != 0) {
        rays |= rookAttacks(popLowest(rookLike), occ);
    }
    return rays;
}

CastlingTests generation::castlingTests(const Scacchiera& b) {
    const bool longMay = mayStillPass(b, longCastlingMasks);
    const bool shortMay = mayStillPass(b, shortCastlingMasks);
    if (!longMay && !shortMay) {
        return {false, false};
    }
    const TBB rays = enemyRays(b);
    return {longMay && isUnattacked(b, longCastlingMasks, rays),
            shortMay && isUnattacked(b, shortCastlingMasks, rays)};
}

// ---- captures -------------------------------------------------------------------------------------------------

static void appendPlainPromotions(const Scacchiera& b, MoveList& list) {
    TBB from = pawns(b) & b.side & rank7;
    while (from != 0) {
        const i32 square = popLowest(from);
        appendPromotions(list, PROMO, square, PawnPushes[square] & ~occupied(b));
    }
}

template <bool WithEnPassant>
static void appendAllCaptures(MoveList& captures) {
    const Scacchiera& b = *board;
    const TBB occ = occupied(b);
    const TBB own = b.side;
    const TBB enemy = occ ^ own;
    captures.count = 0;

    if constexpr (WithEnPassant) {
        appendEnPassant(b, captures);
    }
    const TBB ownPawns = pawns(b) & own;
    for (TBB from = ownPawns & rank7; from != 0;) {
        const i32 square = popLowest(from);
        appendPromotions(captures, PROMO_CAPT, square, PawnAttacks[square] & enemy);
    }
    appendPlainPromotions(b, captures);
    for (TBB from = ownPawns & ranks1To6; from != 0;) {
        const i32 square = popLowest(from);
        appendCaptures(b, captures, CAPT_PAWN, square, PawnAttacks[square] & enemy);
    }
    for (TBB from = knights(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendCaptures(b, captures, CAPT_KNIGHT, square, KnightAttacks[square] & enemy);
    }
    for (TBB from = bishops(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendCaptures(b, captures, CAPT_BISHOP, square, bishopAttacks(square, occ) & enemy);
    }
    for (TBB from = rooks(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendCaptures(b, captures, CAPT_ROOK, square, rookAttacks(square, occ) & enemy);
    }
    for (TBB from = queens(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendCaptures(b, captures, CAPT_QUEEN, square, queenAttacks(square, occ) & enemy);
    }
    for (TBB from = kings(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendCaptures(b, captures, CAPT_KING, square, KingAttacks[square] & enemy);
    }
}

void genCaptures(MoveList& captures) {
    appendAllCaptures<true>(captures);
}

void genCapturesNoEp(MoveList& captures) {
    appendAllCaptures<false>(captures);
}

// ---- quiet moves ----------------------------------------------------------------------------------------------

static void appendPieceQuiets(const Scacchiera& b, QuietList& quiets) {
    const TBB occ = occupied(b);
    const TBB own = b.side;
    const TBB empty = ~occ;

    const CastlingTests castling = castlingTests(b);
    if (castling.longPasses) {
        quiets.entries[quiets.count++] = castleLong;
    }
    if (castling.shortPasses) {
        quiets.entries[quiets.count++] = castleShort;
    }
    for (TBB from = kings(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(quiets, MOVE_KING, square, KingAttacks[square] & empty);
    }
    for (TBB from = queens(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(quiets, MOVE_QUEEN, square, queenAttacks(square, occ) & empty);
    }
    for (TBB from = rooks(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(quiets, MOVE_ROOK, square, rookAttacks(square, occ) & empty);
    }
    for (TBB from = bishops(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(quiets, MOVE_BISHOP, square, bishopAttacks(square, occ) & empty);
    }
    for (TBB from = knights(b) & own; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(quiets, MOVE_KNIGHT, square, KnightAttacks[square] & empty);
    }
}

void genQuiets(QuietList& quiets) {
    const Scacchiera& b = *board;
    quiets.count = 0;
    appendPieceQuiets(b, quiets);
    for (TBB from = pawns(b) & b.side; from != 0;) {
        const i32 square = popLowest(from);
        appendQuiets(quiets, MOVE_PAWN, square, pawnSteps(square, ~occupied(b)));
    }
}

void genPieceQuiets(QuietList& quiets) {
    quiets.count = 0;
    appendPieceQuiets(*board, quiets);
}

void genPawnQuiets(MoveList& pushes) {
    const Scacchiera& b = *board;
    pushes.count = 0;
    appendPlainPromotions(b, pushes);
    for (TBB from = pawns(b) & b.side; from != 0;) {
        const i32 square = popLowest(from);
        for (TBB targets = pawnSteps(square, ~occupied(b)); targets != 0;) {
            // deliberate: the promo byte of these pushes is 2
            append(pushes, makeMossa(MOVE_PAWN, square, popLowest(targets), KNIGHT), 0);
        }
    }
}
