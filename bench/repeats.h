// How often a benchmark does its work over.
#pragma once

#include <cstdlib>

/// `wanted` for a measurement; once for a test, which asks with TARVELMON_BENCH_ONCE for the answer alone.
[[nodiscard]] inline int repeats(int wanted) {
    return std::getenv("TARVELMON_BENCH_ONCE") == nullptr ? wanted : 1;
}
