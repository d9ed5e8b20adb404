// Loaded ahead of the C library by a test: a monotonic clock that the test drives, so that nothing it sees depends on
// how fast the machine is. TARVELMON_CLOCK is "processor" for a clock of the process's own processor time, or names a
// file that holds a DrivenClock, through which the test moves it while the process runs.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

// In the order of tests/driver/driven_clock.py.
struct DrivenClock {
    std::int64_t standsAt;  // nanoseconds; 0 while the clock runs
    std::int64_t ahead;     // nanoseconds that the running clock is ahead of the real one
    std::int64_t looks;     // at the clock, so far
    std::int64_t
        lookTakes;  // microseconds that each look takes longer: what another thread writes meanwhile then falls
                    // between the reading of the clock and what follows it
};

constexpr std::int64_t billion = 1'000'000'000;

using ClockGetTime = int (*)(clockid_t, timespec*);

ClockGetTime realClock() {
    static const auto real = reinterpret_cast<ClockGetTime>(dlsym(RTLD_NEXT, "clock_gettime"));
    return real;
}

DrivenClock* openClock() {
    const char* path = std::getenv("TARVELMON_CLOCK");
    const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
    if (file < 0) {
        return nullptr;
    }
    void* memory = mmap(nullptr, sizeof(DrivenClock), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return memory == MAP_FAILED ? nullptr : static_cast<DrivenClock*>(memory);
}

DrivenClock* drivenClock() {
    static DrivenClock* const clock = openClock();
    return clock;
}

bool countsProcessorTime() {
    const char* text = std::getenv("TARVELMON_CLOCK");
    static const bool answer = text != nullptr && std::strcmp(text, "processor") == 0;
    return answer;
}

int look(DrivenClock& clock, timespec* time) {
    const int result = realClock()(CLOCK_MONOTONIC, time);
    const std::int64_t standsAt = __atomic_load_n(&clock.standsAt, __ATOMIC_ACQUIRE);
    const std::int64_t now = standsAt != 0 ? standsAt
                                           : time->tv_sec * billion + time->tv_nsec +
                                                 __atomic_load_n(&clock.ahead, __ATOMIC_ACQUIRE);
    time->tv_sec = now / billion;
    time->tv_nsec = now % billion;
    __atomic_fetch_add(&clock.looks, 1, __ATOMIC_ACQ_REL);
    const std::int64_t longer = __atomic_load_n(&clock.lookTakes, __ATOMIC_ACQUIRE);
    if (longer != 0) {
        usleep(static_cast<useconds_t>(longer));
    }
    return result;
}

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (clock != CLOCK_MONOTONIC) {
        return realClock()(clock, time);
    }
    if (countsProcessorTime()) {
        return realClock()(CLOCK_PROCESS_CPUTIME_ID, time);
    }
    return drivenClock() != nullptr ? look(*drivenClock(), time) : realClock()(clock, time);
}
