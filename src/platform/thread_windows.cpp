// The Windows side of thread.h.
#include "platform/thread.h"

#include <windows.h>

#include <process.h>
#include <new>

// The default of 1 MB is too small: a search takes several MB of lists and lines.
constexpr unsigned stackBytes = 16u << 20;

struct ThreadStart {
    void (*entry)(void*);
    void* argument;
    HANDLE handle;
};

static unsigned __stdcall runEntry(void* start) {
    const ThreadStart& own = *static_cast<ThreadStart*>(start);
    own.entry(own.argument);
    return 0;
}

bool startThread(Thread& thread, void (*entry)(void*), void* argument) {
    thread.start = new (std::nothrow) ThreadStart{entry, argument, nullptr};
    if (thread.start == nullptr) {
        return false;
    }
    thread.start->handle = reinterpret_cast<HANDLE>(_beginthreadex(
        nullptr, stackBytes, runEntry, thread.start, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    if (thread.start->handle == nullptr) {
        delete thread.start;
        thread.start = nullptr;
    }
    return thread.start != nullptr;
}

// The main thread's stack has the size that it was linked with.
void raiseMainStackLimit() {}

void joinThread(Thread& thread) {
    WaitForSingleObject(thread.start->handle, INFINITE);
    CloseHandle(thread.start->handle);
    delete thread.start;
    thread.start = nullptr;
}
