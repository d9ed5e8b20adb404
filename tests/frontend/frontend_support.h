// What the tests of the front end share: default settings, positions, a clock that stands still, captured output.
#pragma once

#include "board/board.h"
#include "frontend/config.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "platform/print.h"
#include "support/manual_clock.h"
#include "support/position.h"

#include <gtest/gtest.h>
#include <string>

/// All settings and clocks as after a start without a configuration file; the start position.
inline void setDefaults() {
    resetManualClock();
    EngineOptions.stopSearch = 0;
    EngineOptions.gameOver = 0;
    EngineOptions.ponder = 0;
    TimeControl.opponentClock = 0;
    TimeControl.increment = 0;
    TimeControl.movesPerSession = 0;
    loadConfig("no such file.ini");
    newGame();
}

/// What `action` writes to standard output.
template <typename Action>
std::string outputOf(Action action) {
    testing::internal::CaptureStdout();
    action();
    flushOutput();
    return testing::internal::GetCapturedStdout();
}
