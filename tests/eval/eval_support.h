// What the evaluation's tests share: positions set up from text, values taken with an empty pawn hash.
#pragma once

#include "board/board.h"
#include "eval/eval.h"
#include "eval/internal.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "hash/hash.h"
#include "support/position.h"

#include <gtest/gtest.h>

#include <cstring>

/// A term's value at a position.
struct TermCase {
    const char* name;
    const char* fen;
    i32 score;
};

constexpr u64 manyPawnRecords = 43690;
constexpr u64 onePawnRecord = 0;  // the static one serves; emptied at once

/// A pawn hash of `entries` records from here on.
inline void usePawnHash(u64 entries) {
    static u64 present = ~u64{0};
    if (present != entries) {
        EngineOptions.pawnHashSize = 1;
        EngineOptions.pawnHashEntries = entries;
        pawnHashAlloc();
        present = entries;
    }
}

/// The position of `fen` in record 0 of a new game, with empty pawn hash and `kingDanger` 0.
inline void setUp(const char* fen) {
    usePawnHash(manyPawnRecords);
    setUpPosition(fen);
    pawnHashClear();
    EngineOptions.kingDanger = 0;
}

/// evaluate with an empty pawn hash and `kingDanger` 0 before.
inline i32 freshValue() {
    pawnHashClear();
    EngineOptions.kingDanger = 0;
    return evaluate();
}

/// The sets of the side to move of `fen`.
inline Pass passOf(const char* fen) {
    setUp(fen);
    return gatherSets(*board);
}

inline PawnPlace ownPlace(const Pass& pass) {
    const u64 key = pawnHashKeys(pass.ownPawns, pass.enemyPawns, pass.black).own;
    return {key, &pawnHashSlot(key)};
}

/// Both sides' passes of `fen` after all their own terms: attacks are filled.
struct BothPasses {
    Pass own;
    Pass enemy;
    i32 ownTerms;    // centipawns for the side to move, all terms but those that weigh attacks
    i32 enemyTerms;  // for the other side
};

inline i32 runTerms(Pass& pass) {
    i32 score = pawnTerms(pass, ownPlace(pass));
    score += pawnEndingTerm(pass) + passedPawnKingTerms(pass);
    score += knightTerms(pass) + bishopTerms(pass);
    score += rookTerms(pass) + queenTerms(pass);
    return score;
}

inline BothPasses bothPasses(const char* fen) {
    setUp(fen);
    Scacchiera view = *board;
    flipBoard(view);
    BothPasses both{gatherSets(*board), gatherSets(view), 0, 0};
    both.ownTerms = runTerms(both.own);
    both.enemyTerms = runTerms(both.enemy);
    return both;
}

/// Turns the position at `board` into its mirror image: colours exchanged, the same side as seen from itself to move.
inline void mirrorColours() {
    board->stateFlags ^= blackToMoveFlag;
}

/// Gives the move to the other side without changing the men.
inline void passTheTurn() {
    flipBoard(*board);
}
