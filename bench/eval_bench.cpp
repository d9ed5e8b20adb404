// Static evaluations a second over a fixed set. The sum of all values is checked.
#include "eval_set.h"
#include "hash/hash.h"
#include "repeats.h"

#include <benchmark/benchmark.h>

#include <cstdio>

static void evaluateWithWarmPawnHash(benchmark::State& state) {
    pawnHashClear();
    (void)sumOfValues();
    for (auto _ : state) {
        const i64 sum = sumOfValues();
        if (sum != expectedSum) {
            std::fprintf(stderr, "sum of values %lld, expected %lld\n", static_cast<long long>(sum),
                         static_cast<long long>(expectedSum));
            state.SkipWithError("wrong values");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<i64>(evaluatedPositions.size()));
}
BENCHMARK(evaluateWithWarmPawnHash)
    ->Iterations(repeats(40))
    ->Repetitions(repeats(9))
    ->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    setUpEvaluations();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
