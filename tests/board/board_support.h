// What the board's tests share: positions from text, moves by text, lists as text.
#pragma once

#include "board/board.h"
#include "eval/psq.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "search/search_info.h"
#include "support/position.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>
#include <vector>

inline constexpr const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

inline std::string textOf(Mossa move) {
    char text[6];
    moveToText(text, move, *board);
    return text[4] == ' ' ? std::string(text, 4) : std::string(text);
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
