// Leaves a second of the move tree: generators, make-move and check test together, each leaf made in full. Every count
// is checked against the published one.
#include "board/board.h"
#include "frontend/session.h"
#include "repeats.h"

#include <benchmark/benchmark.h>

#include <string>

struct PerftCase {
    const char* name;
    const char* fen;
    i32 shallowDepth;
    u64 shallowLeaves;
    i32 fullDepth;
    u64 fullLeaves;
};

constexpr PerftCase perftCases[] = {
    {"start", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 4, 197281, 6, 119060324},
    {"castlingAndPins", "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 3, 97862, 5,
     193690690},
    {"rookEnding", "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 5, 674624, 7, 178633661},
    {"promotions", "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 4, 422333, 6,
     706045033},
    {"middleGame", "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10", 3, 89890, 5,
     164075551},
};

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
    initBoardTables();
    for (const PerftCase& c : perftCases) {
        registerCase(c, "shallow", c.shallowDepth, c.shallowLeaves);
        registerCase(c, "fullDepth", c.fullDepth, c.fullLeaves);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
