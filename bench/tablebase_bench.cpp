// Tablebase probes a second over fixed random positions, in a warm process: one round goes before the first is timed.
// The small set needs only the tables that the tests have; the full set needs TARVELMON_SYZYGY_PATH, a folder with all
// tables of four men. The sum of all values is checked.
#include "board/board.h"
#include "probe_set.h"
#include "repeats.h"
#include "tablebase/tablebase.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

struct Work {
    bool full;
    Probe probe;
    i64 expectedSum;
};

static const char* fullFolder() {
    return std::getenv("TARVELMON_SYZYGY_PATH");
}

static void probeAll(benchmark::State& state, Work work) {
    tbInit(work.full ? fullFolder() : TEST_DATA_DIR "/syzygy");
    const std::vector<Scacchiera> positions =
        work.full ? makePositions(fullSet, 2000) : makePositions(smallSet, 2000);
    (void)sumOfValues(positions, work.probe);
    for (auto _ : state) {
        const i64 sum = sumOfValues(positions, work.probe);
        if (sum != work.expectedSum) {
            std::fprintf(stderr, "sum of values %lld, expected %lld\n", static_cast<long long>(sum),
                         static_cast<long long>(work.expectedSum));
            state.SkipWithError("wrong values");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<i64>(positions.size()));
}

static void measure(const char* name, Work work, i32 iterations) {
    benchmark::RegisterBenchmark(name, probeAll, work)
        ->Iterations(repeats(iterations))
        ->Repetitions(repeats(9))
        ->Unit(benchmark::kMillisecond);
}

int main(int argc, char** argv) {
    measure("wdlOfSmallSet", {false, probeWdl, 1190}, 10);
    measure("dtzOfSmallSet", {false, probeDtz, 653}, 10);
    if (fullFolder() != nullptr) {
        measure("wdlOfFourMen", {true, probeWdl, -874}, 10);
        measure("dtzOfFourMen", {true, probeDtz, -70575}, 2);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
