// Loaded ahead of the C library by a test: each look at the monotonic clock takes a few milliseconds more, so that
// whatever another thread writes meanwhile falls between the reading of the clock and what follows it.
#include <dlfcn.h>
#include <unistd.h>
#include <ctime>

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    using ClockGetTime = int (*)(clockid_t, timespec*);
    static const auto original = reinterpret_cast<ClockGetTime>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int result = original(clock, time);
    if (clock == CLOCK_MONOTONIC) {
        usleep(3000);
    }
    return result;
}
