// Pawn terms: structure through the pawn hash, and what also depends on the other men.
#include "eval/internal.h"

#include "eval/masks.h"
#include "hash/hash.h"

#include <algorithm>
#include <cstdlib>

// ---- structure ------------------------------------------------------------------------------------------------

constexpr i32 backwardPawn = 10;         // centipawns a backward pawn
constexpr i32 isolatedPawn = 10;         // centipawns a pawn without neighbour still to come
constexpr i32 stackedPawn = 10;          // centipawns for each pawn of a stack still to come
constexpr TBB backwardRanks = 0xFFFF00;  // ranks 2 and 3; deliberate: further up no pawn is backward

// Centipawns for a passed pawn by rank index, rank 1 is 0.
constexpr std::array<i32, 8> pawnRankBonus = {0, 5, 10, 20, 35, 60, 100, 200};

static i32 pawnIslands(TBB ownPawns) {
    const u32 files = filesOf(ownPawns);
    return popCount(files & ~(files >> 1));
}

static i32 islandCost(TBB ownPawns) {
    const i32 islands = pawnIslands(ownPawns);
    return std::abs(3 * islands * islands - popCount(ownPawns));
}

// Counts, rank by rank, neighbouring files of which one alone has a pawn at that height or above: grows with steps in
// the pawn chain and with gaps.
static i32 fileEdgeCost(TBB ownPawns) {
    const TBB filled = southFill(ownPawns);
    return popCount((filled ^ filled << 1) & ~fileA);
}

// On a half-open file, with the next square under an enemy pawn's attack and no neighbour level with it or behind.
static TBB backwardPawns(TBB ownPawns, TBB enemyPawns) {
    const TBB nextSquareAttacked = sideways(enemyPawns >> 8) >> 8;
    const TBB canBeSupported = northFill(sideways(ownPawns));
    return ownPawns & backwardRanks & nextSquareAttacked & ~canBeSupported & ~southFill(enemyPawns);
}

PawnStructure pawnStructure(TBB ownPawns, TBB enemyPawns) {
    i32 score = -(islandCost(ownPawns) + fileEdgeCost(ownPawns) +
                  backwardPawn * popCount(backwardPawns(ownPawns, enemyPawns)));
    TBB passed = 0;
    i32 healthy = 0;
    // Deliberate: neighbours and stacks are looked for only among the pawns still to come in the scan.
    for (TBB rest = ownPawns; rest != 0; rest &= rest - 1) {
        const u32 square = static_cast<u32>(lowestBit(rest));
        const u32 file = square & 7;
        const i32 sameFile = popCount(rest & fileMask[file]);
        const bool hasNeighbours = (rest & adjacentFiles[file]) != 0;
        if ((passedMask[square] & enemyPawns) == 0) {
            passed |= TBB{1} << square;
            score += pawnRankBonus[square >> 3];
        }
        if (!hasNeighbours) {
            score -= isolatedPawn;
        }
        if (sameFile > 1) {
            score -= stackedPawn * sameFile;
        }
        healthy += sameFile == 1 || hasNeighbours ? 1 : 0;
    }
    return {wrap16(score), passed, static_cast<u8>(healthy)};
}

i32 pawnTerms(Pass& pass, const PawnPlace& place) {
    hashPawn& slot = *place.slot;
    if (!holdsPawns(slot, place.key)) {
        const PawnStructure structure = pawnStructure(pass.ownPawns, pass.enemyPawns);
        storePawns(slot, place.key, structure.pawnScore, structure.passedPawns, structure.healthyPawns);
    }
    pass.passedPawns = slot.passedPawns;
    pass.healthyPawns = slot.healthyPawns;
    return slot.pawnScore;
}

// ---- beyond the structure -------------------------------------------------------------------------------------

// Centipawns by number of healthy pawns.
constexpr std::array<i32, 9> pawnEndingBonus = {0, 0, 100, 200, 300, 400, 500, 600, 700};

i32 pawnEndingTerm(const Pass& pass) {
    return pass.onlyKingsAndPawns ? pawnEndingBonus[static_cast<u32>(std::min(pass.healthyPawns, 8))] : 0;
}

constexpr i32 fewMen = 16;                // of both colours, kings and pawns included
constexpr i32 kingBesidePassedPawn = 15;  // centipawns, once

// Centipawns for each step of the enemy king's distance, by the passed pawn's rank index.
constexpr std::array<i32, 8> passedRaceWeight = {0, 2, 3, 5, 10, 15, 20, 0};

static i32 raceValue(TBB passedPawns, i32 enemyKing) {
    i32 score = 0;
    while (passedPawns != 0) {
        const u32 pawn = static_cast<u32>(popLowest(passedPawns));
        score += squareDistance[pawn][static_cast<u32>(enemyKing)] * passedRaceWeight[pawn >> 3];
    }
    return score;
}

i32 passedPawnKingTerms(const Pass& pass) {
    if (pass.men > fewMen || pass.passedPawns == 0) {
        return 0;
    }
    i32 score = (pass.attacks.byKing & pass.passedPawns) != 0 ? kingBesidePassedPawn : 0;
    if (!pass.anyQueen && pass.enemyKing != noSquare) {
        score += raceValue(pass.passedPawns, pass.enemyKing);
    }
    return score;
}
