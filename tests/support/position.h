// Positions and moves from text, for every test.
#pragma once

#include "board/board.h"
#include "frontend/session.h"
#include "search/search_info.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

/// The position of `fen` in record 0 of a new game; no nodes are counted yet.
inline void setUpPosition(const std::string& fen) {
    boardStack[0] = Scacchiera{};
    newGame();
    ASSERT_EQ(fenToBoard(fen.c_str()), 1) << fen;
    SearchInfo.nodes = 0;
}

/// Plays moves given as blank-separated text; each must be accepted.
inline void play(const std::string& moves) {
    std::size_t start = 0;
    while (start < moves.size()) {
        const std::size_t end = std::min(moves.find(' ', start), moves.size());
        const std::string move = moves.substr(start, end - start);
        ASSERT_EQ(parseUserMove(move.c_str()), 1) << move;
        start = end + 1;
    }
}

/// Whether all fields agree; a record has bytes between them that may not.
inline bool sameRecord(const Scacchiera& a, const Scacchiera& b) {
    return std::memcmp(&a, &b, offsetof(Scacchiera, castleRights)) == 0 && a.castleRights == b.castleRights &&
           a.epFile == b.epFile && a.rule50 == b.rule50 && a.stateFlags == b.stateFlags &&
           a.psqScore == b.psqScore;
}
