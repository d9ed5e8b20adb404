// How long the next search may take. With the session's mutex held; the first three with no search running.
#pragma once

#include "platform/bits.h"

/// Centiseconds: far beyond any game, and far enough from the limits of 32 bits for sums.
constexpr i64 longestClock = 1'000'000'000;

/// Clocks in centiseconds, from the engine's view.
struct Clocks {
    i32 own;
    i32 opponent;
    i32 increment;
    i32 movesToGo;  // 0: the rest of the game
};

/// Until somebody ends it.
void allowEndless();

/// So many milliseconds and no more.
void allowMilliseconds(i64 milliseconds);

/// What the engine's own time allocation gives. `moveNumber` counts the engine's moves of the game.
void allowByClocks(const Clocks& clocks, i32 moveNumber);

/// The clocks for a running search that may yet become the real one; nothing is allotted.
void storeClocks(const Clocks& clocks, i32 moveNumber);

/// A running search has become the real one: from now on it has the share of the stored clocks, or so many milliseconds.
void allotRunningByClocks();
void allotRunningMilliseconds(i64 milliseconds);

/// Centiseconds for a number of milliseconds that may be anything; never negative.
[[nodiscard]] i32 centisecondsOf(i64 milliseconds);
