// The POSIX side of thread.h.
#include "platform/thread.h"

#include <pthread.h>
#include <sys/resource.h>
#include <algorithm>
#include <cstddef>
#include <new>

// The default depends on the system, from 128 kB up; a search takes several MB of lists and lines.
constexpr std::size_t stackBytes = std::size_t{16} << 20;

struct ThreadStart {
    void (*entry)(void*);
    void* argument;
    pthread_t handle;
};

static void* runEntry(void* start) {
    const ThreadStart& own = *static_cast<ThreadStart*>(start);
    own.entry(own.argument);
    return nullptr;
}

static bool create(ThreadStart& start) {
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        return false;
    }
    const bool created = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                         pthread_create(&start.handle, &attributes, runEntry, &start) == 0;
    pthread_attr_destroy(&attributes);
    return created;
}

bool startThread(Thread& thread, void (*entry)(void*), void* argument) {
    thread.start = new (std::nothrow) ThreadStart{entry, argument, {}};
    if (thread.start != nullptr && !create(*thread.start)) {
        delete thread.start;
        thread.start = nullptr;
    }
    return thread.start != nullptr;
}

void raiseMainStackLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur < stackBytes) {
        limit.rlim_cur = std::min<rlim_t>(stackBytes, limit.rlim_max);
        setrlimit(RLIMIT_STACK, &limit);
    }
}

void joinThread(Thread& thread) {
    pthread_join(thread.start->handle, nullptr);
    delete thread.start;
    thread.start = nullptr;
}
