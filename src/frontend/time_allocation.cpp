// From the two clocks to the budget of one move. The search compares the elapsed time with the result; the command
// loops and the monitor thread call in here before a think that is to produce a move. All times in centiseconds.
#include "frontend/time_allocation.h"

#include "frontend/frontend.h"
#include "frontend/thinking_output.h"
#include "platform/platform.h"

#include <cassert>

constexpr i32 shortClock = 6000;       // one minute: at or below it time is short ...
constexpr i32 comfortIncrement = 300;  // ... unless each move brings three seconds
constexpr i32 clockReserve = 500;      // an increment is spent only while more than this stays
constexpr i32 openingMoves = 12;       // last move number that is played at the opening's speed

// What the clocks say about the divisor: less when ahead of the opponent, more when behind.
static i32 clockBalance(i32 engineClock, i32 opponentClock) {
    if (engineClock > opponentClock) {
        return -TimeControl.moreTime;
    }
    return engineClock < opponentClock ? TimeControl.lessTime : 0;
}

// Switches pondering off when either clock is short, and hurries when the engine's is. Returns what the divisor
// rises by. Deliberate: neither `ponder` nor `minDepth` comes back by itself.
static i32 clockPressure(i32 engineClock, i32 opponentClock) {
    if (TimeControl.increment >= comfortIncrement) {
        return 0;
    }
    if (engineClock > shortClock) {
        if (opponentClock <= shortClock) {
            EngineOptions.ponder = 0;
        }
        return 0;
    }
    EngineOptions.minDepth = 1;
    EngineOptions.ponder = 0;
    return TimeControl.fastGame;
}

// The part of `engineClock` that `divisor` gives, and the increment if the clock can bear it.
static i32 budgetOf(i32 engineClock, i32 divisor) {
    assert(divisor > 0);
    // Single precision is part of the behaviour.
    const i32 share = static_cast<i32>(static_cast<float>(engineClock) / static_cast<float>(divisor));
    const i32 increment = TimeControl.increment;
    // With the increment the budget stays below the clock, so the sum has room in 32 bits; the test may not have.
    const bool clockBearsIncrement = i64{engineClock} - share - increment > clockReserve;
    return increment > 0 && clockBearsIncrement ? share + increment : share;
}

// Deliberate: movesPerSession has no say, 40 moves in 5 minutes are budgeted like a game of 5 minutes.
static void setBudget() {
    const i32 engineClock = TimeControl.engineClock;
    const i32 opponentClock = TimeControl.opponentClock;
    i32 divisor = TimeControl.suddenDeath + clockBalance(engineClock, opponentClock) +
                  clockPressure(engineClock, opponentClock);
    if (TimeControl.moveNumber <= openingMoves) {
        divisor += TimeControl.fastOpening;
    }
    const i32 budget = budgetOf(engineClock, divisor);
    thinkingSink.budget(TimeControl.moveNumber, divisor, budget);
    // In this order: a running search that reads the new budget then sees the new start too, and never holds the time
    // since the old start against it, which would end it at once.
    EngineOptions.searchStartMs = nowMs();
    TimeControl.allocatedTime = budget;
}

void allocateTime() {
    setBudget();
    EngineOptions.stopSearch = 0;
}

void allocateTimeForRunningSearch() {
    setBudget();
}
