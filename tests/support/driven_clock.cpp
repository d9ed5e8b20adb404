// Loaded ahead of the C library by a test: a monotonic clock that the test drives, so that nothing it sees depends on
// how fast the machine is. TARVELMON_CLOCK is "processor" for a clock of the process's own processor time, or names a
// file that holds a DrivenClock, through which the test moves it while the process runs.
//
// A sanitizer looks at the clock too, before it has set itself up and while it holds its locks. So nothing is called here
// that it watches: the system is asked directly.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
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

#ifdef SYS_mmap2
constexpr long mapPages = SYS_mmap2;
#else
constexpr long mapPages = SYS_mmap;
#endif

DrivenClock* drivenClock = nullptr;
bool countsProcessorTime = false;

// Ahead of the program, and of the first look that matters.
__attribute__((constructor)) void openClock() {
    const char* text = std::getenv("TARVELMON_CLOCK");
    if (text == nullptr) {
        return;
    }
    if (std::strcmp(text, "processor") == 0) {
        countsProcessorTime = true;
        return;
    }
    const long file = syscall(SYS_openat, AT_FDCWD, text, O_RDWR | O_CLOEXEC);
    if (file < 0) {
        return;
    }
    const long memory =
        syscall(mapPages, nullptr, sizeof(DrivenClock), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0L);
    syscall(SYS_close, file);
    drivenClock = memory == -1 ? nullptr : reinterpret_cast<DrivenClock*>(memory);
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
        const timespec wait{0, static_cast<long>(longer * 1000)};
        syscall(SYS_nanosleep, &wait, nullptr);
    }
    return result;
}

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (clock != CLOCK_MONOTONIC) {
        return realClock()(clock, time);
    }
    if (countsProcessorTime) {
        return realClock()(CLOCK_PROCESS_CPUTIME_ID, time);
    }
    return drivenClock != nullptr ? look(*drivenClock, time) : realClock()(clock, time);
}
