// Leaves a second of the move tree: generators, make-move and check test together, each leaf made in full. Every count
// is checked against the published one.
#include "board/board.h"
#include "frontend/session.h"
#include "perft_set.h"
#include "repeats.h"

#include <benchmark/benchmark.h>

#include <string>

static void countLeaves(benchmark::State& state, const char* fen, i32 depth, u64 expected) {
    newGame();
    if (fenToBoard(fen) != 1) {
        state.SkipWithError("the position was not read");
        return;
    }
    u64 leaves = 0;
    for (auto _ : state) {
        leaves = perft(depth);
        if (leaves != expected) {
            state.SkipWithError(("counted " + std::to_string(leaves)).c_str());
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<i64>(leaves));
}

static void registerCase(const PerftCase& c, const char* kind, i32 depth, u64 leaves) {
    constexpr int repetitions = 5;
    benchmark::RegisterBenchmark((std::string(kind) + "/" + c.name).c_str(), countLeaves, c.fen, depth,
                                 leaves)
        ->Iterations(1)
        ->Repetitions(repeats(repetitions))
        ->Unit(benchmark::kMillisecond);
}

int main(int argc, char** argv) {
    for (const PerftCase& c : perftCases) {
        registerCase(c, "shallow", c.shallowDepth, c.shallowLeaves);
        registerCase(c, "fullDepth", c.fullDepth, c.fullLeaves);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
