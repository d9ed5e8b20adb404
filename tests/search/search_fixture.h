// A fresh state for each test of the search: new game, empty tables, a clock that stands still, nothing printed unless
// captured.
#pragma once

#include "support/fresh_state.h"
#include "support/manual_clock.h"
#include "support/record_text.h"

#include <gtest/gtest.h>

#include <string>

inline void resetClock() {
    resetManualClock();
    TimeControl.moveTime = twoHours;
    TimeControl.allocatedTime = twoHours;
    EngineOptions.searchStartMs = nowMs();
    EngineOptions.stopSearch = 0;
}

/// What a process that has just been told a position is like.
inline void setUpFreshState(const std::string& fen) {
    ASSERT_TRUE(startFresh(fen)) << fen;
    resetClock();
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
