// Defines nowMs(), so that the linker leaves the real clock in its library.
#include "support/manual_clock.h"

#include "platform/platform.h"

constinit ManualClockRecord ManualClock = {1'000'000'000, 0, 0};

i32 nowMs() {
    const i32 now = ManualClock.ms;
    ManualClock.ms = static_cast<i32>(static_cast<u32>(now) + static_cast<u32>(ManualClock.msPerLook));
    ++ManualClock.looks;
    return now;
}
