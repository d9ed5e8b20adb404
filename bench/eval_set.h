// The positions that are evaluated: those of the golden list and all positions one legal move on, so that neighbours are
// alike as they are in a search.
#pragma once

#include "board/board.h"
#include "eval/eval.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "hash/hash.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

constexpr i64 expectedSum = -2595315;  // of all values with a warm pawn hash
constexpr u64 pawnHashRecords = 11184810;

inline std::vector<Scacchiera> evaluatedPositions;

inline void addWithSuccessors(const char* fen) {
    newGame();
    if (fenToBoard(fen) != 1) {
        std::fprintf(stderr, "rejected: %s\n", fen);
        std::exit(1);
    }
    evaluatedPositions.push_back(*board);
    static MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    for (i32 i = 0; i < count; ++i) {
        makeMove(moves[static_cast<u32>(i)]);
        evaluatedPositions.push_back(*board);
        --board;
    }
}

/// Allocates the pawn hash and reads the positions.
inline void setUpEvaluations() {
    EngineOptions.pawnHashSize = 256;
    EngineOptions.pawnHashEntries = pawnHashRecords;
    pawnHashAlloc();
    std::ifstream file(TEST_DATA_DIR "/golden/eval.txt");
    const std::string head = "fen ";
    std::string line;
    while (std::getline(file, line)) {
        if (line.compare(0, head.size(), head) == 0) {
            addWithSuccessors(line.c_str() + head.size());
        }
    }
}

/// The sum of all values.
inline i64 sumOfValues() {
    i64 sum = 0;
    for (Scacchiera& position : evaluatedPositions) {
        board = &position;
        sum += evaluate();
    }
    return sum;
}
