// Static evaluations a second over a fixed set: the positions of the golden list and all positions one legal move on,
// so that neighbours are alike as they are in a search. The sum of all values is checked.
#include "board/board.h"
#include "eval/eval.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "hash/hash.h"
#include "repeats.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

constexpr i64 expectedSum = -2595315;  // of all values with a warm pawn hash
constexpr u64 pawnHashRecords = 11184810;

static std::vector<Scacchiera> positions;

static void addWithSuccessors(const char* fen) {
    newGame();
    if (fenToBoard(fen) != 1) {
        std::fprintf(stderr, "rejected: %s\n", fen);
        std::exit(1);
    }
    positions.push_back(*board);
    static MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    for (i32 i = 0; i < count; ++i) {
        makeMove(moves[static_cast<u32>(i)]);
        positions.push_back(*board);
        --board;
    }
}

static void setUpPositions() {
    std::ifstream file(TEST_DATA_DIR "/golden/eval.txt");
    const std::string head = "fen ";
    std::string line;
    while (std::getline(file, line)) {
        if (line.compare(0, head.size(), head) == 0) {
            addWithSuccessors(line.c_str() + head.size());
        }
    }
}

static i64 sumOfValues() {
    i64 sum = 0;
    for (Scacchiera& position : positions) {
        board = &position;
        sum += evaluate();
    }
    return sum;
}

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
    state.SetItemsProcessed(state.iterations() * static_cast<i64>(positions.size()));
}
BENCHMARK(evaluateWithWarmPawnHash)
    ->Iterations(repeats(40))
    ->Repetitions(repeats(9))
    ->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    initBoardTables();
    EngineOptions.pawnHashSize = 256;
    EngineOptions.pawnHashEntries = pawnHashRecords;
    pawnHashAlloc();
    setUpPositions();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
