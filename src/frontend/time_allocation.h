// From the clocks to the budget of a think.
#pragma once

#include "platform/bits.h"

/// The budget of a search that nobody waits for: two hours, in centiseconds.
constexpr i32 ponderingTime = 720000;

/// Turns the two clocks into the budget of the next move and starts it: writes allocatedTime, searchStartMs and
/// stopSearch (0), when time is short also minDepth and ponder. Tells thinkingSink.
void allocateTime();

/// The same for a ponder search that goes on as the real one, from the monitor thread. Leaves stopSearch alone: it is
/// 0 while that search runs, and one that unwinds already must not be told to go on.
void allocateTimeForRunningSearch();
