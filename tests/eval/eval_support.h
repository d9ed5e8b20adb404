// What the evaluation's tests share: positions set up from text, values taken with an empty pawn hash.
#pragma once

#include "board/board.h"
#include "eval/eval.h"
#include "eval/internal.h"
#include "frontend/frontend.h"
#include "hash/hash.h"

#include <gtest/gtest.h>

#include <cstring>

/// The position of `fen` in record 0 of a new game, with empty pawn hash and `kingDanger` 0.
inline void setUp(const char* fen) {
    newGame();
    ASSERT_EQ(fenToBoard(fen), 1) << fen;
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

/// The sets of the other side, seen from it.
inline Pass otherPassOf(const char* fen) {
    setUp(fen);
    Scacchiera view = *board;
    flipBoard(view);
    return gatherSets(view);
}

/// Turns the position at `board` into its mirror image: colours exchanged, the same side as seen from itself to move.
inline void mirrorColours() {
    board->stateFlags ^= blackToMoveFlag;
}

/// Gives the move to the other side without changing the men.
inline void passTheTurn() {
    flipBoard(*board);
}

inline bool sameRecord(const Scacchiera& a, const Scacchiera& b) {
    return std::memcmp(&a.side, &b.side, 6 * sizeof(u64)) == 0 && a.castleRights == b.castleRights &&
           a.epFile == b.epFile && a.rule50 == b.rule50 && a.stateFlags == b.stateFlags &&
           a.psqScore == b.psqScore;
}
