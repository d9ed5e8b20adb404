// The small random sequence from which tables of keys are drawn.
#pragma once

#include "platform/bits.h"

/// SplitMix64: moves `state` on and returns the next number. Good enough for keys.
constexpr u64 splitMix64(u64& state) {
    state += 0x9E3779B97F4A7C15ULL;
    u64 z = state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}
