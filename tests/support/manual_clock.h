// The clock of the test programs that link manual_clock.cpp: it stands still until a test moves it, so that no result
// depends on how fast the machine is.
#pragma once

#include "platform/bits.h"

struct ManualClockRecord {
    i32 ms;         // what the next nowMs() returns
    i32 msPerLook;  // by how much each nowMs() then moves it: a search that looks at it runs out of time
    i32 looks;      // calls of nowMs() since the last reset
};

extern ManualClockRecord ManualClock;

/// While it lives each look takes so many milliseconds.
struct LooksTakeTime {
    explicit LooksTakeTime(i32 ms) { ManualClock.msPerLook = ms; }
    LooksTakeTime(const LooksTakeTime&) = delete;
    LooksTakeTime& operator=(const LooksTakeTime&) = delete;
    ~LooksTakeTime() { ManualClock.msPerLook = 0; }
};

/// Stands still from now on, far from the wrap.
inline void resetManualClock() {
    ManualClock = {1'000'000'000, 0, 0};
}
