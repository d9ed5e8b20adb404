// The driver of the static evaluation: the terms are added up for one side and, by the same code, for the other.
#include "eval/eval.h"

#include "board/board.h"
#include "eval/internal.h"
#include "eval/masks.h"
#include "hash/hash.h"

constinit std::array<i32, std::size_t{2} * evalTermCount> evalTerms{};

// In the own frame; the enemy's king safety sees the same squares in his.
static TBB kingZoneOf(TBB enemyKings) {
    const TBB inItsFrame = byteSwap(enemyKings);
    return inItsFrame == 0 ? 0 : byteSwap(kingZone[static_cast<u32>(lowestBit(inItsFrame))]);
}

// Not cleared first: that would cost as much as several terms.
static Pass gatherSets(const Scacchiera& view, const PawnSets& sets) {
    const TBB own = view.side;
    const TBB occ = occupied(view);
    const TBB allPawns = pawns(view);
    Pass pass;
    pass.own = own;
    pass.enemyPawns = allPawns & ~own;
    pass.allPawns = allPawns;
    pass.occ = occ;
    pass.ownPawns = allPawns & own;
    pass.ownKnights = knights(view) & own;
    pass.ownBishops = bishops(view) & own;
    pass.ownRooks = rooks(view) & own;
    pass.ownQueens = queens(view) & own;
    pass.pawnSets = sets;
    pass.ownKing = kingSquare(kings(view) & own);
    pass.enemyKing = kingSquare(kings(view) & ~own);
    pass.enemyKingZone = kingZoneOf(kings(view) & ~own);
    pass.men = popCount(occ);
    pass.anyQueen = queens(view) != 0;
    pass.onlyKingsAndPawns = occ == (allPawns | kings(view));
    pass.black = blackToMove(view);
    pass.passedPawns = 0;
    pass.healthyPawns = 0;
    pass.attacks = {sets.attacks, 0, 0, 0,
                    pass.ownKing == noSquare ? 0 : KingAttacks[static_cast<u32>(pass.ownKing)]};
    pass.zoneAttackers = 0;
    return pass;
}

static const PawnSetsOfBoth& pawnSetsOf(const Scacchiera& b) {
    const TBB allPawns = pawns(b);
    return pawnSets(allPawns & b.side, allPawns & ~b.side, blackToMove(b));
}

Pass gatherSets(const Scacchiera& view) {
    return gatherSets(view, pawnSetsOf(view).own);
}

// The terms that need nothing of the other side's pass. Those that wait for the pawn hash come last.
static i32 ownTerms(Pass& pass, const PawnPlace& place) {
    i32 score = knightTerms(pass);
    score += bishopTerms(pass);
    score += queenTerms(pass);
    score += pawnTerms(pass, place);
    score += pawnEndingTerm(pass);
    score += passedPawnKingTerms(pass);
    score += rookTerms(pass);
    return score;
}

// The terms that weigh the attacks of both sides against each other.
static i32 attackTerms(const Pass& pass, const Pass& enemy) {
    return hangingTerms(pass, enemy) + (enemy.ownQueens != 0 ? kingSafetyTerm(pass, enemy) : 0);
}

// Deliberate: attacks count only with a queen and another piece on the board, whoever has them.
static bool attacksCount(const Scacchiera& b) {
    return queens(b) != 0 && (rooks(b) | bishops(b) | knights(b)) != 0;
}

// Also fetches the slot, which is far away in memory and needed late.
static PawnPlace pawnPlace(const PawnSets& sets) {
    const PawnPlace place = {sets.key, &pawnHashSlot(sets.key)};
    __builtin_prefetch(place.slot);
    return place;
}

i16 evaluate() {
    assert(boardIsRecord());
    if (sufficientMaterial() == 0) {
        return 0;
    }
    const PawnSetsOfBoth& sets = pawnSetsOf(*board);
    const PawnPlace ownPlace = pawnPlace(sets.own);
    const PawnPlace otherPlace = pawnPlace(sets.other);
    Scacchiera otherView = *board;
    flipBoard(otherView);
    Pass own = gatherSets(*board, sets.own);
    Pass other = gatherSets(otherView, sets.other);
    i32 score = board->psqScore;
    score += ownTerms(own, ownPlace);  // first: the pawn hash shows the order
    score -= ownTerms(other, otherPlace);
    if (attacksCount(*board)) {
        score += attackTerms(own, other) - attackTerms(other, own);
    }
    return wrap16(score);
}
