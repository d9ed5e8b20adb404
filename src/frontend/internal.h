// What the files of the front end share among themselves.
#pragma once

#include "platform/bits.h"

// ---- time -----------------------------------------------------------------------------------------------------

/// Turns the two clocks into the budget of the next move and starts it: writes allocatedTime, searchStartMs and
/// stopSearch (0), when time is short also minDepth and ponder. Prints a debug line.
void allocateTime();

/// The same for a ponder search that goes on as the real one, from the monitor thread. Leaves stopSearch alone: it is
/// 0 while that search runs, and one that unwinds already must not be told to go on.
void allocateTimeForRunningSearch();
