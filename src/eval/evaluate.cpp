// The driver of the static evaluation: the terms are added up for one side and, by the same code, for the other.
#include "eval/eval.h"

#include "board/board.h"
#include "eval/internal.h"
#include "eval/masks.h"
#include "hash/hash.h"

#include <algorithm>

constinit std::array<i32, std::size_t{2} * evalTermCount> evalTerms{};

constexpr TBB outpostSquares = 0x3C3C18000000;  // d4 e4, c5 to f5, c6 to f6

// The squares that pawns moving down could attack now or later.
static TBB enemyPawnSpan(TBB enemyPawns) {
    return sideways(southFill(enemyPawns) >> 8);
}

static TBB ownPawnSpan(TBB ownPawns) {
    return sideways(northFill(ownPawns) << 8);
}

// In the own frame; the enemy's king safety sees the same squares in his.
static TBB kingZoneOf(TBB enemyKings) {
    const TBB inItsFrame = byteSwap(enemyKings);
    return inItsFrame == 0 ? 0 : byteSwap(kingZone[static_cast<u32>(lowestBit(inItsFrame))]);
}

Pass gatherSets(const Scacchiera& view) {
    const TBB own = view.side;
    const TBB occ = occupied(view);
    const TBB allPawns = pawns(view);
    const TBB ownPawns = allPawns & own;
    const TBB enemyPawns = allPawns & ~own;
    Pass pass{};
    pass.own = own;
    pass.enemyPawns = enemyPawns;
    pass.allPawns = allPawns;
    pass.occ = occ;
    pass.ownPawns = ownPawns;
    pass.ownKnights = knights(view) & own;
    pass.ownBishops = bishops(view) & own;
    pass.ownRooks = rooks(view) & own;
    pass.ownQueens = queens(view) & own;
    pass.outposts = outpostSquares & ~enemyPawnSpan(enemyPawns) & ownPawnSpan(ownPawns);
    pass.ownKing = kingSquare(kings(view) & own);
    pass.enemyKing = kingSquare(kings(view) & ~own);
    pass.enemyKingZone = kingZoneOf(kings(view) & ~own);
    pass.men = popCount(occ);
    pass.pawnCountIndex = static_cast<u32>(std::min(popCount(ownPawns), 8));
    pass.anyQueen = queens(view) != 0;
    pass.onlyKingsAndPawns = occ == (allPawns | kings(view));
    pass.black = blackToMove(view);
    pass.attacks.byPawn = sideways((ownPawns & ~rank1 & ~rank8) << 8);
    pass.attacks.byKing = pass.ownKing == noSquare ? 0 : KingAttacks[static_cast<u32>(pass.ownKing)];
    return pass;
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

struct PawnPlaces {
    PawnPlace own;
    PawnPlace other;
};

// Also fetches the slots, which are far away in memory and needed late.
static PawnPlaces findPawnPlaces(const Scacchiera& b) {
    const TBB allPawns = pawns(b);
    const PawnHashKeys keys = pawnHashKeys(allPawns & b.side, allPawns & ~b.side, blackToMove(b));
    const PawnPlaces places = {{keys.own, &pawnHashSlot(keys.own)}, {keys.other, &pawnHashSlot(keys.other)}};
    __builtin_prefetch(places.own.slot);
    __builtin_prefetch(places.other.slot);
    return places;
}

i16 evaluate() {
    assert(boardIsRecord());
    if (sufficientMaterial() == 0) {
        return 0;
    }
    const PawnPlaces places = findPawnPlaces(*board);
    Scacchiera otherView = *board;
    flipBoard(otherView);
    Pass own = gatherSets(*board);
    Pass other = gatherSets(otherView);
    i32 score = board->psqScore;
    score += ownTerms(own, places.own);  // first: the pawn hash shows the order
    score -= ownTerms(other, places.other);
    if (attacksCount(*board)) {
        score += attackTerms(own, other) - attackTerms(other, own);
    }
    return wrap16(score);
}
