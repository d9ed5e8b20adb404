// Static exchange evaluation: what a capture is worth once all exchanges on its square have been played. No record is
// written; the side in turn is swapped in local words, in the frame of the first mover.
#include "board/board.h"

#include "board/generation.h"
#include "board/make_move.h"
#include "platform/print.h"

// Values of recapturing men. Deliberate: the king's differs from pieceValue's 10000.
static constexpr i32 pawnInExchange = 100;
static constexpr i32 minorInExchange = 325;
static constexpr i32 rookInExchange = 500;
static constexpr i32 queenInExchange = 950;
static constexpr i32 kingInExchange = 99999;

// With up to 64 men on the board.
static constexpr i32 longestExchange = 66;

// The cheapest attackers of the target: all of one kind, not only one of them.
struct Attackers {
    TBB men;
    i32 value;
};

// The men that recapture, by kind, and where pawns recapture from.
struct ExchangeSets {
    TBB pawnMen;
    TBB knightMen;
    TBB bishopMen;
    TBB rookMen;
    TBB queenMen;
    TBB kingMen;
};

[[nodiscard]] static Attackers cheapestAttackers(const ExchangeSets& sets, i32 target, TBB occ, TBB men,
                                                 TBB pawnSquares) {
    const TBB byPawn = sets.pawnMen & men & pawnSquares;
    if (byPawn != 0) {
        return {byPawn, pawnInExchange};
    }
    const TBB byKnight = sets.knightMen & men & KnightAttacks[target];
    if (byKnight != 0) {
        return {byKnight, minorInExchange};
    }
    const TBB diagonals = ((sets.bishopMen | sets.queenMen) & men) != 0 ? bishopAttacks(target, occ) : 0;
    const TBB byBishop = sets.bishopMen & men & diagonals;
    if (byBishop != 0) {
        return {byBishop, minorInExchange};
    }
    const TBB lines = ((sets.rookMen | sets.queenMen) & men) != 0 ? rookAttacks(target, occ) : 0;
    const TBB byRook = sets.rookMen & men & lines;
    if (byRook != 0) {
        return {byRook, rookInExchange};
    }
    const TBB byQueen = sets.queenMen & men & (diagonals | lines);
    if (byQueen != 0) {
        return {byQueen, queenInExchange};
    }
    return {sets.kingMen & men & KingAttacks[target], kingInExchange};
}

// The value of what the move takes at first. Deliberate: without an en passant file the formula names a7, so any
// move to a7 counts 100.
[[nodiscard]] static i32 firstGain(const Scacchiera& b, Mossa move) {
    const bool toEpSquare = moveTo(move) == 40 + b.epFile;
    return toEpSquare || moveKind(move) == PROMO ? 100 : pieceValue[pieceCode(b, moveTo(move))];
}

i32 see(Mossa move) {
    const Scacchiera& b = *board;
    std::array<i32, longestExchange> gain;
    gain[0] = firstGain(b, move);
    if (gain[0] == pieceValue[KING]) {
        return gain[0];
    }
    ++SearchInfo.nodes;  // the trial of the move counts
    const i32 target = moveTo(move);
    const Placement p = node::placementAfter(b, partsOf(move));
    const Scacchiera after{p.side, p.pbq, p.nbk, p.rqk, 0, 0, 0, 0, 0, 0, 0};
    const ExchangeSets sets{pawns(after), knights(after), bishops(after),
                            rooks(after), queens(after),  kings(after)};
    TBB occ = occupied(after);
    i32 next = pieceValue[pieceCode(after, target)];
    i32 count = 1;
    for (bool opponentsTurn = true;; opponentsTurn = !opponentsTurn) {
        const TBB men = occ & (opponentsTurn ? ~p.side : p.side);
        const TBB pawnSquares = opponentsTurn ? byteSwap(PawnChecks[target ^ 56]) : PawnChecks[target];
        const Attackers attackers = cheapestAttackers(sets, target, occ, men, pawnSquares);
        if (attackers.men == 0) {
            break;
        }
        gain[count++] = next;
        if (next == pieceValue[KING]) {
            break;
        }
        occ ^= attackers.men;  // deliberate: all of the set leave together
        next = attackers.value;
    }
    i32 reply = 0;
    for (i32 i = count - 1; i >= 1; --i) {
        reply = std::max(gain[i] - reply, 0);
    }
    return gain[0] - reply;
}

i32 seeIsLosing(Mossa move) {
    const Scacchiera& b = *board;
    if (pieceValue[pieceCode(b, moveTo(move))] >= pieceValue[pieceCode(b, moveFrom(move))]) {
        return 0;
    }
    return see(move) >> 31;
}

void legalCaptures(MoveList& captures) {
    MoveList all;
    genCaptures(all);
    i32 kept = 0;
    for (i32 i = all.count - 1; i >= 0; --i) {
        const ScoredMove& entry = all.entries[i];
        if ((kings(*board) >> moveTo(entry.move) & 1) != 0) {
            continue;
        }
        makeMoveLight(entry.move);
        if (leftInCheck() == 0) {
            captures.entries[kept++] = entry;
        }
        --board;
    }
    if (kept > 0) {
        captures.count = kept;
    }
}

void seeTest() {
    MoveList captures;
    captures.count = 0;
    legalCaptures(captures);
    if (captures.count == 0) {
        print("Nessuna cattura legale!\n");
        return;
    }
    const auto first = captures.entries.begin();
    const ScoredMove best =
        *std::max_element(first, first + captures.count,
                          [](const ScoredMove& a, const ScoredMove& c) { return a.score < c.score; });
    char text[6];
    moveToText(text, best.move, *board);
    print("Tratto:         %i\n", blackToMove(*board) ? 1 : 0);
    print("Mossa valutata: %s\n", text);
    print("- SEE Value:    %i\n", see(best.move));
}
