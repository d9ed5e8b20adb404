// Fixed work of one kind, for tools/measure.sh, which counts the instructions inside `measuredWork`. The first argument
// names the kind, a second one says how many rounds of it. Printed are how often it was done, and of what. Status 1 if an
// answer is not what it should be.
#include "board/board.h"
#include "eval_set.h"
#include "frontend/session.h"
#include "hash/hash.h"
#include "perft_set.h"
#include "probe_set.h"
#include "search_set.h"
#include "tablebase/tablebase.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

// The searches, by so many plies less deep than the benchmark's: a second of work becomes one under an emulator.
constexpr i32 pliesLess = 4;
constexpr u64 nodesOfShallowSearches = 582880;
constexpr i64 sumOfProbes = 1190;

struct Work {
    const char* name;
    const char* unit;
    void (*setUp)();
    u64 (*run)();  // returns how many units were done, 0 if an answer was wrong
};

static void setUpNothing() {}

static u64 search() {
    u64 nodes = 0;
    for (FixedSearch fixed : fixedSearches) {
        fixed.depth -= pliesLess;
        nodes += runFixedSearch(fixed);
    }
    return nodes == nodesOfShallowSearches ? nodes : 0;
}

static u64 countLeaves() {
    u64 leaves = 0;
    for (const PerftCase& c : perftCases) {
        newGame();
        if (fenToBoard(c.fen) != 1 || perft(c.shallowDepth) != c.shallowLeaves) {
            return 0;
        }
        leaves += c.shallowLeaves;
    }
    return leaves;
}

static void setUpWarmEvaluations() {
    setUpEvaluations();
    (void)sumOfValues();
}

static u64 evaluateAll() {
    return sumOfValues() == expectedSum ? evaluatedPositions.size() : 0;
}

static std::vector<Scacchiera> probedPositions;

static void setUpProbes() {
    tbInit(TEST_DATA_DIR "/syzygy");
    probedPositions = makePositions(smallSet, 2000);
    (void)sumOfValues(probedPositions, probeWdl);
}

static u64 probeAll() {
    return sumOfValues(probedPositions, probeWdl) == sumOfProbes ? probedPositions.size() : 0;
}

constexpr Work works[] = {
    {"search", "node", setUpFixedSearches, search},
    {"perft", "leaf", setUpNothing, countLeaves},
    {"evaluation", "evaluation", setUpWarmEvaluations, evaluateAll},
    {"tables", "WDL probe", setUpProbes, probeAll},
};

[[gnu::noinline]] u64 measuredWork(const Work& work);
u64 measuredWork(const Work& work) {
    return work.run();
}

static int doWork(const Work& work, int rounds) {
    work.setUp();
    u64 count = 0;
    for (int round = 0; round < rounds; ++round) {
        count = measuredWork(work);
    }
    std::printf("count=%llu\nunit=%s\n", static_cast<unsigned long long>(count), work.unit);
    std::printf("recorded=%d\nrecordedWith=%s\ncompiler=%s\n", recordedInstructions, recordedCompiler,
                __VERSION__);
    return count != 0 ? 0 : 1;
}

int main(int argc, char** argv) {
    for (const Work& work : works) {
        if (argc >= 2 && std::strcmp(argv[1], work.name) == 0) {
            return doWork(work, argc > 2 ? std::atoi(argv[2]) : 1);
        }
    }
    std::fputs("usage: measured_work search|perft|evaluation|tables [ROUNDS]\n", stderr);
    return 2;
}
