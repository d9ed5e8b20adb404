// Ends searches early: without it one input could think for hours.
#pragma once

#include "frontend/frontend.h"

#include <atomic>
#include <chrono>
#include <thread>

/// From the first call to the end of the process every search is told to stop a few milliseconds after it began.
inline void startSearchWatchdog() {
    static std::atomic<bool> started{false};
    if (started.exchange(true)) {
        return;
    }
    std::thread([] {
        for (;;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            EngineOptions.stopSearch = 1;
        }
    }).detach();
}
