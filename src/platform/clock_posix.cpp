// The POSIX clock of platform.h. Alone in its file: a test that brings a clock of its own then links that one instead.
#include "platform/platform.h"

#include <ctime>

i32 nowMs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const u64 ms = static_cast<u64>(now.tv_sec) * 1000 + static_cast<u64>(now.tv_nsec) / 1'000'000;
    return static_cast<i32>(static_cast<u32>(ms));
}
