// What the board's tests share: positions from text, moves by text, lists as text.
#pragma once

#include "board/board.h"
#include "eval/psq.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "search/search_info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>
#include <vector>

/// The position of `fen` in record 0 of a new game, nothing else on the stack.
inline void setUp(const char* fen) {
    newGame();
    boardStack.fill(Scacchiera{});
    newGame();
    ASSERT_EQ(fenToBoard(fen), 1) << fen;
    SearchInfo.nodes = 0;
}

inline std::string textOf(Mossa move) {
    char text[6];
    moveToText(text, move, *board);
    return text[4] == ' ' ? std::string(text, 4) : std::string(text);
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

inline bool sameRecord(const Scacchiera& a, const Scacchiera& b) {
    return std::memcmp(&a, &b, offsetof(Scacchiera, castleRights)) == 0 && a.castleRights == b.castleRights &&
           a.epFile == b.epFile && a.rule50 == b.rule50 && a.stateFlags == b.stateFlags &&
           a.psqScore == b.psqScore;
}

inline std::vector<std::string> texts(const QuietList& list) {
    std::vector<std::string> all;
    for (i32 i = 0; i < list.count; ++i) {
        all.push_back(textOf(list.entries[i]));
    }
    return all;
}

inline std::vector<std::string> texts(const MoveList& list) {
    std::vector<std::string> all;
    for (i32 i = 0; i < list.count; ++i) {
        all.push_back(textOf(list.entries[i].move));
    }
    return all;
}

inline std::vector<std::string> linesOf(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}
