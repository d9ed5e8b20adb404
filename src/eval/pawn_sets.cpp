// What follows from the pawns alone. A search meets the same placements again and again, so the last ones are kept: a
// plain memory of pure results, which nothing but speed depends on. Owned by the thread that searches.
#include "eval/internal.h"

#include "eval/masks.h"
#include "hash/hash.h"

#include <algorithm>
#include <array>

constexpr TBB outpostSquares = 0x3C3C18000000;  // d4 e4, c5 to f5, c6 to f6

// ---- from scratch ---------------------------------------------------------------------------------------------

// The squares that pawns moving down could attack now or later.
static TBB enemyPawnSpan(TBB enemyPawns) {
    return sideways(southFill(enemyPawns) >> 8);
}

static TBB ownPawnSpan(TBB ownPawns) {
    return sideways(northFill(ownPawns) << 8);
}

static PawnSets setsOfSide(TBB ownPawns, TBB enemyPawns, u64 key) {
    PawnSets sets{};
    sets.key = key;
    sets.outposts = outpostSquares & ~enemyPawnSpan(enemyPawns) & ownPawnSpan(ownPawns);
    sets.attacks = sideways((ownPawns & ~rank1 & ~rank8) << 8);
    sets.countIndex = static_cast<u32>(std::min(popCount(ownPawns), 8));
    sets.filesWithPawns = filesOf(ownPawns | enemyPawns);
    sets.halfOpenFiles = sets.filesWithPawns & ~filesOf(ownPawns);
    return sets;
}

// ---- the memory -----------------------------------------------------------------------------------------------

struct KnownPlacement {
    TBB ownPawns;
    TBB enemyPawns;
    bool black;
    PawnSetsOfBoth sets;
};

constexpr u32 indexBits = 8;

// An empty entry is right for a board without pawns.
static constinit std::array<KnownPlacement, std::size_t{1} << indexBits> knownPlacements{};

static u32 placementIndex(TBB ownPawns, TBB enemyPawns) {
    const u64 mixed = (ownPawns ^ enemyPawns * 0x9E3779B97F4A7C15) * 0xBF58476D1CE4E5B9;
    return static_cast<u32>(mixed >> (64 - indexBits));
}

// Not inlined, as it is seldom needed.
[[gnu::noinline]] static void workOut(KnownPlacement& known, TBB ownPawns, TBB enemyPawns, bool black) {
    const PawnHashKeys keys = pawnHashKeys(ownPawns, enemyPawns, black);
    known.ownPawns = ownPawns;
    known.enemyPawns = enemyPawns;
    known.black = black;
    known.sets.own = setsOfSide(ownPawns, enemyPawns, keys.own);
    known.sets.other = setsOfSide(byteSwap(enemyPawns), byteSwap(ownPawns), keys.other);
}

const PawnSetsOfBoth& pawnSets(TBB ownPawns, TBB enemyPawns, bool black) {
    KnownPlacement& known = knownPlacements[placementIndex(ownPawns, enemyPawns)];
    if (known.ownPawns != ownPawns || known.enemyPawns != enemyPawns || known.black != black) {
        workOut(known, ownPawns, enemyPawns, black);
    }
    return known.sets;
}
