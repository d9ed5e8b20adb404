// A fresh state for each test of the search: new game, empty tables, a clock that stands still, nothing printed unless
// captured.
#pragma once

#include "support/fresh_state.h"
#include "support/manual_clock.h"
#include "support/record_text.h"

#include <gtest/gtest.h>

#include <string>

/// Positions that many tests begin with.
inline constexpr const char* middleGameFen =
    "r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq - 4 4";
inline constexpr const char* foolsMateFen = "rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3";

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

/// What the table holds in the slot of the position at `board`.
inline ys_hash slotHere() {
    ys_hash slot{};
    hashProbe(slot, 255, 0, 1);
    return slot;
}
