// What the analysis of a game's positions says of its moves.
#pragma once

#include "analysis.h"
#include "game_text.h"

#include <optional>
#include <string>
#include <vector>

/// One move and what it cost.
struct JudgedMove {
    std::string number;  // "12." or "12..."
    std::string san;
    bool white;
    bool known;                // both positions, before and after it, have scores
    std::optional<i32> score;  // after it, centipawns for White, within highestScore; empty if not analysed
    i32 loss;                  // centipawns; 0 if not known
    std::string better;        // the better move, empty if it was the best
    std::string men;           // before it: letters by squares, a1 first
    i32 from;                  // real squares
    i32 to;
};

struct JudgedGame {
    std::string white;
    std::string black;
    std::string event;
    std::string result;
    std::vector<JudgedMove> moves;
};

/// Scores beyond it are all alike: won.
constexpr i32 highestScore = 1000;

/// `analyses` are those of the positions before each move and after the last.
[[nodiscard]] JudgedGame judgeGame(const Game& game, const std::vector<Analysis>& analyses);

/// The game with comments, glyphs and better lines. `threshold`: from this loss on.
[[nodiscard]] std::string annotatedGame(const Game& game, const std::vector<Analysis>& analyses,
                                        const JudgedGame& judged, i32 threshold);

/// The same as one JSON object on a line.
[[nodiscard]] std::string annotatedJson(const Game& game, const std::vector<Analysis>& analyses,
                                        const JudgedGame& judged);

/// Comments of moves that have no analysis begin so.
constexpr const char* notAnalysed = "not analysed: ";
