// Tablebase probes a second over fixed random positions, in a warm process: one round goes before the first is timed.
// The small set needs only the tables that the tests have; the full set needs TARVELMON_SYZYGY_PATH, a folder with all
// tables of four men. The sum of all values is checked.
#include "board/board.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "repeats.h"
#include "tablebase/tablebase.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// ---- positions ------------------------------------------------------------------------------------------------

constexpr std::array<const char*, 5> smallSet = {"KNNk", "KNkn", "KBkb", "KBkn", "KRkr"};
constexpr std::array<const char*, 30> fullSet = {
    "KQQk", "KQRk", "KQBk", "KQNk", "KQPk", "KRRk", "KRBk", "KRNk", "KRPk", "KBBk",
    "KBNk", "KBPk", "KNNk", "KNPk", "KPPk", "KQkq", "KQkr", "KQkb", "KQkn", "KQkp",
    "KRkr", "KRkb", "KRkn", "KRkp", "KBkb", "KBkn", "KBkp", "KNkn", "KNkp", "KPkp"};

static u64 randomState = 0;

static u64 nextRandom() {
    randomState += 0x9E3779B97F4A7C15ULL;
    u64 z = randomState;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

static std::string randomFen(const char* men) {
    std::array<char, 64> squares{};
    for (; *men != '\0'; ++men) {
        u64 square = nextRandom() % 64;
        while (squares[square] != '\0') {
            square = nextRandom() % 64;
        }
        squares[square] = *men;
    }
    std::string fen;
    for (u32 i = 0; i < 64; ++i) {
        fen += squares[i] == '\0' ? '1' : squares[i];
        fen += i % 8 == 7 && i != 63 ? "/" : "";
    }
    return fen + (nextRandom() % 2 == 0 ? " w" : " b") + " - -";
}

// A position that the tables hold and that may stand in a game.
static bool isUsable() {
    constexpr TBB endRanks = 0xFF000000000000FFULL;
    return leftInCheck() == 0 && (pawns(*board) & endRanks) == 0;
}

template <std::size_t Count>
static std::vector<Scacchiera> makePositions(const std::array<const char*, Count>& set, i32 eachCount) {
    randomState = 0;
    std::vector<Scacchiera> positions;
    for (const char* men : set) {
        for (i32 i = 0; i < eachCount;) {
            newGame();
            if (fenToBoard(randomFen(men).c_str()) == 1 && isUsable()) {
                positions.push_back(*board);
                ++i;
            }
        }
    }
    // neighbours are of different tables
    for (std::size_t i = positions.size() - 1; i > 0; --i) {
        std::swap(positions[i], positions[nextRandom() % (i + 1)]);
    }
    return positions;
}

// ---- probes ---------------------------------------------------------------------------------------------------

using Probe = i32 (*)(i32& success);

// Sum of all values; -1000000 more for each probe that fails.
static i64 sumOfValues(const std::vector<Scacchiera>& positions, Probe probe) {
    newGame();
    i64 sum = 0;
    for (const Scacchiera& position : positions) {
        *board = position;
        i32 success = 0;
        sum += probe(success) - (success == 0 ? 1'000'000 : 0);
    }
    return sum;
}

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
    initBoardTables();
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
