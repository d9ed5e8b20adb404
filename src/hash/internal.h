// What the two tables share.
#pragma once

#include "platform/bits.h"

#include <algorithm>

constexpr u64 defaultHashEntries = 268435456;     // 4096 MB
constexpr u64 defaultPawnHashEntries = 11184810;  // 256 MB

/// Allocates what can be had of a table of which `wanted` records cannot: at most `most`, halved until it succeeds.
/// Returns the number of records, 0 if not even a small table can be had.
template <typename Allocate>
u64 smallerTable(u64 wanted, u64 most, Allocate allocate) {
    constexpr u64 fewest = 1024;
    for (u64 entries = std::min(wanted / 2, most); entries >= fewest; entries /= 2) {
        if (allocate(entries)) {
            return entries;
        }
    }
    return 0;
}
