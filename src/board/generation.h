// What the generators share: appending moves, castling, pawn steps. Lists have room for the worst placement, so
// nothing here tests a capacity.
#pragma once

#include "board/attacks.h"
#include "board/board.h"
#include "board/tables.h"

namespace generation {

constexpr TBB ranks1To6 = 0x0000FFFFFFFFFFFFULL;
constexpr TBB rank4 = 0x00000000FF000000ULL;
constexpr TBB rank5 = 0x000000FF00000000ULL;
constexpr TBB rank7 = 0x00FF000000000000ULL;
constexpr TBB noPromotion = 0x00FFFFFFFFFFFF00ULL;

// Scores of promotions, with or without capture; the victim does not count: deliberate.
constexpr i32 queenPromotionScore = 85;
constexpr i32 rookPromotionScore = -1;
constexpr i32 bishopPromotionScore = -2;
constexpr i32 knightPromotionScore = -3;

/// The part of a capture's score that the attacker gives, by its piece code: the cheapest first.
constexpr i32 attackerScore(i32 kind) {
    return 6 - (kind & 7);
}
constexpr i32 victimScore(i32 victim) {
    return victim * 16;
}

inline void append(QuietList& list, i32 kind, i32 from, i32 to) {
    list.entries[list.count++] = makeMossa(kind, from, to);
}

inline void append(MoveList& list, Mossa move, i32 score) {
    list.entries[list.count++] = ScoredMove{move, score};
}

inline void appendQuiets(QuietList& list, i32 kind, i32 from, TBB targets) {
    while (targets != 0) {
        append(list, kind, from, popLowest(targets));
    }
}

inline void appendCaptures(const Scacchiera& b, MoveList& list, i32 kind, i32 from, TBB targets) {
    while (targets != 0) {
        const i32 to = popLowest(targets);
        append(list, makeMossa(kind, from, to), victimScore(pieceCode(b, to)) + attackerScore(kind));
    }
}

inline void appendPromotions(MoveList& list, i32 kind, i32 from, TBB targets) {
    while (targets != 0) {
        const i32 to = popLowest(targets);
        append(list, makeMossa(kind, from, to, QUEEN), queenPromotionScore);
        append(list, makeMossa(kind, from, to, ROOK), rookPromotionScore);
        append(list, makeMossa(kind, from, to, BISHOP), bishopPromotionScore);
        append(list, makeMossa(kind, from, to, KNIGHT), knightPromotionScore);
    }
}

/// The steps of a pawn that are no promotions: one square, and two from rank 2 over an empty first.
[[nodiscard]] inline TBB pawnSteps(i32 from, TBB empty) {
    const TBB single = PawnPushes[from] & empty & noPromotion;
    return single == 0 ? 0 : single | (PawnDoublePushes[from] & empty & rank4);
}

/// The target square of an en passant capture, empty if there is none.
[[nodiscard]] inline TBB epTarget(const Scacchiera& b) {
    return b.epFile == noEpFile ? 0 : squareBit(40 + b.epFile);
}

inline void appendEnPassant(const Scacchiera& b, MoveList& list) {
    const TBB target = epTarget(b);
    if (target == 0) {
        return;
    }
    TBB from = pawns(b) & b.side & rank5;
    while (from != 0) {
        const i32 square = popLowest(from);
        if ((PawnAttacks[square] & target) != 0) {
            append(list, makeMossa(EN_PASSANT, square, lowestBit(target)),
                   victimScore(PAWN) + attackerScore(PAWN));
        }
    }
}

/// Which castling passes every test but the check it may give. The right is the only evidence that king and rook
/// stand on their squares.
struct CastlingTests {
    bool longPasses;
    bool shortPasses;
};
[[nodiscard]] CastlingTests castlingTests(const Scacchiera& b);

}  // namespace generation
