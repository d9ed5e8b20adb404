// What the tests of the companion share.
#pragma once

#include "game.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

/// Plays moves given as words; each must be legal.
inline void playAll(Game& game, const std::string& moves) {
    std::istringstream words(moves);
    for (std::string move; words >> move;) {
        ASSERT_EQ(playMove(game, move, false), "") << move;
    }
}

inline Game gameFrom(const std::string& fen, const std::string& moves = "") {
    Game game;
    EXPECT_EQ(setUpGame(game, fen), "") << fen;
    playAll(game, moves);
    return game;
}

inline Game gameFromStart(const std::string& moves = "") {
    Game game;
    startGame(game);
    playAll(game, moves);
    return game;
}
