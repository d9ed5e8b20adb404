// What the two tables share.
#pragma once

#include "platform/bits.h"

#include <algorithm>
#include <cstddef>
#include <limits>

constexpr u64 defaultHashEntries = 268435456;     // 4096 MB
constexpr u64 defaultPawnHashEntries = 11184810;  // 256 MB

/// Tables up to this size are soon touched everywhere: there large pages save address look-ups. In a larger one each of
/// them costs milliseconds when it is touched first, a search's first thousands of nodes in all.
constexpr std::size_t largePagesUpTo = std::size_t{64} << 20;

/// A number of records, with what makes the remainder by it quick.
struct RecordCount {
    u64 count;
    u64 reciprocal;  // (2^64 - 1) / count
};

constexpr RecordCount recordCount(u64 count) {
    return {count, ~u64{0} / count};
}

/// `key` modulo the number of records, exactly: the quotient by the reciprocal is right or one too small.
[[nodiscard]] constexpr u64 slotIndex(u64 key, const RecordCount& records) {
    const u64 quotient = highHalfOfProduct(key, records.reciprocal);
    const u64 remainder = key - quotient * records.count;
    return remainder < records.count ? remainder : remainder - records.count;
}

/// Bytes of so many records; 0, which no table can have, if the machine's addresses cannot count them.
template <typename Record>
constexpr std::size_t bytesOf(u64 records) {
    constexpr u64 most = std::numeric_limits<std::size_t>::max() / sizeof(Record);
    return records <= most ? static_cast<std::size_t>(records) * sizeof(Record) : 0;
}

/// Allocates what can be had of a table of which `wanted` records cannot: at most `most`, halved until it succeeds.
/// Leaves everything as it is if not even a small table can be had.
template <typename Allocate>
void allocateSmallerTable(u64 wanted, u64 most, Allocate allocate) {
    constexpr u64 fewest = 1024;
    u64 entries = std::min(wanted / 2, most);
    while (entries >= fewest && !allocate(entries)) {
        entries /= 2;
    }
}
