// Threads with a stack that holds the deepest search on every system.
#pragma once

/// A running thread, null when there is none.
struct Thread {
    struct ThreadStart* start;
};

/// Starts `entry(argument)` on a thread of its own. Returns false if the system has no thread or no memory for it.
[[nodiscard]] bool startThread(Thread& thread, void (*entry)(void*), void* argument);

/// Lets the main thread's stack grow as far as those of started threads, where the system's limit is lower and may be
/// raised. To be called first of all.
void raiseMainStackLimit();

/// Waits until a started thread has ended, and lets it go.
void joinThread(Thread& thread);
