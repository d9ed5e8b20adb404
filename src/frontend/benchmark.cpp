// The console's benchmark: the move trees of six positions counted, with the rate.
#include "board/board.h"
#include "frontend/internal.h"
#include "frontend/session.h"
#include "platform/platform.h"

#include <algorithm>

struct BenchmarkRecord {
    char text[200];
    u64 depth;
    u64 expected;
};

static constexpr std::array<BenchmarkRecord, 6> benchmark = {{
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 6, 119060324},
    {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 5, 193690690},
    {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 7, 178633661},
    {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 6, 706045033},
    {"rnbqkb1r/pp1p1ppp/2p5/4P3/2B5/8/PPP1NnPP/RNBQK2R w KQkq - 0 6", 3, 53392},
    {"r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10", 5, 164075551},
}};

i32 nodesPerSecond(u64 nodes, double seconds) {
    const double rate = seconds > 0.0 ? static_cast<double>(nodes) / seconds : 0.0;
    return static_cast<i32>(std::min(rate, static_cast<double>(INT32_MAX)));
}

void runBenchmark() {
    print("Running benchmark. . .\n");
    const double start = processorSeconds();
    u64 total = 0;
    for (const BenchmarkRecord& record : benchmark) {
        newGame();
        fenToBoard(record.text);
        const u64 value = perftOrOne(static_cast<i32>(record.depth));
        total += value;
        print("Expected value:         %10lld\n", static_cast<long long>(record.expected));
        print("Calculated value:       %10lld\n\n", static_cast<long long>(value));
    }
    const double elapsed = processorSeconds() - start;
    print("\n");
    print("Total nodes:            %10lld \n", static_cast<long long>(total));
    print("Raw nodes per second:   %10d\n", nodesPerSecond(total, elapsed));
    print("Total elapsed time:     %10.2f\n", elapsed);
}
