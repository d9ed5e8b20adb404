// The one sort of lists of moves.
#pragma once

#include "platform/bits.h"

#include <utility>

/// Sorts the entries first to last (inclusive) by `before(entry, pivot)`; not stable. Equal entries go to the right of
/// the pivot; the order in which they end is part of the engine's play.
template <typename Entries, typename Before>
void quicksort(Entries& entries, i32 first, i32 last, Before before) {
    const auto at = [&entries](i32 i) -> auto& {
        return entries[static_cast<u32>(i)];
    };
    while (first < last) {
        const auto pivot = at(first);
        i32 left = first + 1;
        i32 right = last + 1;
        while (left < right) {
            if (before(at(left), pivot)) {
                ++left;
            } else {
                --right;
                std::swap(at(left), at(right));
            }
        }
        std::swap(at(first), at(left - 1));
        quicksort(entries, first, left - 1, before);
        first = right;
    }
}
