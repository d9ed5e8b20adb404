// Runs the benchmark's own set, so that there is one list of searches and one total.
#include "bench.h"

#include "bench/search_set.h"
#include "platform/print.h"

#include <cinttypes>

static void printTotals(u64 nodes, i32 milliseconds) {
    const u64 perSecond = nodes * 1000 / static_cast<u64>(milliseconds > 0 ? milliseconds : 1);
    print("\n===========================\n");
    print("Total time (ms) : %d\n", milliseconds);
    print("Nodes searched  : %" PRIu64 "\n", nodes);
    print("Nodes/second    : %" PRIu64 "\n", perSecond);
    print("%" PRIu64 " nodes %" PRIu64 " nps\n", nodes, perSecond);
}

static void setUpQuietly() {
    setLinePrefix(nullptr);
    setUpFixedSearches();
    setLinePrefix("");
}

bool runBench() {
    setUpQuietly();
    const i32 start = nowMs();
    u64 total = 0;
    for (const FixedSearch& fixed : fixedSearches) {
        const u64 nodes = runFixedSearch(fixed);
        print("%-18s depth %2d %10" PRIu64 " nodes\n", fixed.name, fixed.depth, nodes);
        total += nodes;
    }
    printTotals(total, elapsedMs(start));
    if (total != searchSignature) {
        print("The total is not %" PRIu64 "\n", searchSignature);
    }
    return total == searchSignature;
}
