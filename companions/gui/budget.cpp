// The search ends itself by the clock: it compares the time since `searchStartMs` with `moveTime` and `allocatedTime`,
// in whole centiseconds.
#include "budget.h"

#include "frontend/frontend.h"
#include "frontend/time_allocation.h"
#include "platform/platform.h"
#include "settings.h"

#include <algorithm>
#include <limits>

constexpr i32 endless = std::numeric_limits<i32>::max();
constexpr i64 millisecondsPerCentisecond = 10;

i32 centisecondsOf(i64 milliseconds) {
    return static_cast<i32>(std::clamp(milliseconds / millisecondsPerCentisecond, i64{0}, longestClock));
}

// The search stops when more than this has passed, so one less than the whole stops it in time.
static i32 lastCentisecond(i64 milliseconds) {
    return std::max(0, centisecondsOf(milliseconds) - 1);
}

static void start(i32 moveTime) {
    TimeControl.moveTime = moveTime;
    TimeControl.allocatedTime = endless;
    EngineOptions.searchStartMs = nowMs();
    EngineOptions.stopSearch = 0;
}

void allowEndless() {
    start(endless);
}

void allowMilliseconds(i64 milliseconds) {
    start(lastCentisecond(milliseconds));
}

void storeClocks(const Clocks& clocks, i32 moveNumber) {
    TimeControl.engineClock = std::max(0, clocks.own);
    TimeControl.opponentClock = std::max(0, clocks.opponent);
    TimeControl.increment = std::max(0, clocks.increment);
    TimeControl.movesPerSession = std::max(0, clocks.movesToGo);
    TimeControl.moveNumber = moveNumber;
}

void allowByClocks(const Clocks& clocks, i32 moveNumber) {
    storeClocks(clocks, moveNumber);
    TimeControl.moveTime = settings.maxTime;
    allocateTime();
}

void allotRunningByClocks() {
    allocateTimeForRunningSearch();
}

// The start first, and a running search reads `allocatedTime` first: so it never holds the time since the old start
// against the new bound.
void allotRunningMilliseconds(i64 milliseconds) {
    EngineOptions.searchStartMs = nowMs();
    TimeControl.allocatedTime = lastCentisecond(milliseconds);
}
