// Threads with a stack that holds the deepest search on every system.
#pragma once

/// A running thread, null when there is none.
struct Thread {
    struct ThreadStart* start;
};

/// Starts `entry(argument)` on a thread of its own. Returns false if the system has no thread or no memory for it.
[[nodiscard]] bool startThread(Thread& thread, void (*entry)(void*), void* argument);

/// Waits until a started thread has ended, and lets it go.
void joinThread(Thread& thread);
