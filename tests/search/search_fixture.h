// A fresh state for each test of the search: new game, empty tables, a clock that stands still, nothing printed unless
// captured.
#pragma once

#include "board/board.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "search/ordering.h"
#include "search/search_info.h"
#include "support/manual_clock.h"

#include <gtest/gtest.h>

#include <string>

constexpr i32 twoHours = 720000;  // centiseconds

/// Allocates both hash tables in the sizes of the golden lists, unless they are so, with nothing on standard output.
inline void allocateTestTables() {
    constexpr u64 entries = 4194304;
    constexpr u64 pawnEntries = 11184810;
    if (EngineOptions.hashEntries == entries && EngineOptions.pawnHashEntries == pawnEntries) {
        return;
    }
    EngineOptions.hashSize = 64;
    EngineOptions.hashEntries = entries;
    EngineOptions.pawnHashSize = 256;
    EngineOptions.pawnHashEntries = pawnEntries;
    testing::internal::CaptureStdout();
    hashAlloc(EngineOptions.hashEntries, EngineOptions.hashSize);
    pawnHashAlloc();
    testing::internal::GetCapturedStdout();
}

inline void resetClock() {
    resetManualClock();
    TimeControl.moveTime = twoHours;
    TimeControl.allocatedTime = twoHours;
    EngineOptions.searchStartMs = nowMs();
    EngineOptions.stopSearch = 0;
}

/// What a process that has just been told a position is like.
inline void setUpFreshState(const std::string& fen) {
    allocateTestTables();
    boardStack = {};
    newGame();
    ASSERT_EQ(fenToBoard(fen.c_str()), 1) << fen;
    hashClear(EngineOptions.hashEntries);
    pawnHashClear();
    historyTable = {};
    killers = {};
    SearchInfo.nodes = 0;
    EngineOptions.syzygy = 0;
    EngineOptions.syzygyMen = 5;
    EngineOptions.minDepth = 1;
    EngineOptions.maxDepth = 64;
    EngineOptions.postThinking = 1;
    EngineOptions.kingDanger = 0;
    resetClock();
}

/// Text of a move without the blank of moves that do not promote.
inline std::string moveText(Mossa move) {
    char text[6];
    moveToText(text, move, *board);
    std::string result = text;
    return result.substr(0, result.find(' '));
}

/// The pseudo-legal move of this text, 0 if there is none.
inline Mossa findMove(const std::string& text) {
    MoveArray moves;
    i32 count = 0;
    orderedMoves(moves, count);
    for (i32 i = 0; i < count; ++i) {
        if (moveText(moves[static_cast<u32>(i)]) == text) {
            return moves[static_cast<u32>(i)];
        }
    }
    return 0;
}
