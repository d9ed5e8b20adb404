// Lines that the core prints by itself: comments of the protocol in hand, or nothing.
#pragma once

#include "platform/print.h"

#include <atomic>

/// What makes a line a comment; null where the core is to be silent.
inline std::atomic<const char*> commentPrefix{"# "};

/// While it lives, what this thread prints goes out as comments.
struct CoreSpeaks {
    CoreSpeaks() { setLinePrefix(commentPrefix.load(std::memory_order_relaxed)); }
    CoreSpeaks(const CoreSpeaks&) = delete;
    CoreSpeaks& operator=(const CoreSpeaks&) = delete;
    ~CoreSpeaks() { setLinePrefix(""); }
};
