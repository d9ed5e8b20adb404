// The positions whose move trees are counted, with the published counts.
#pragma once

#include "platform/bits.h"

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
