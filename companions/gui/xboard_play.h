// The flow of a game on the xboard side: when the engine thinks, moves, ponders, analyses and claims. The commands
// (xboard_side.cpp) change the state and call in here.
#pragma once

#include "budget.h"
#include "game.h"
#include "platform/relaxed.h"
#include "searcher.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the search thread is busy with, or was when it ended by itself. In `pondering` the expected move stands on the
/// board; once it has been played the search is `thinking` though it began earlier.
enum class Busy : u8 { nothing, thinking, pondering, analysing };

constexpr u8 whiteSide = 0;
constexpr u8 blackSide = 1;
constexpr u8 neitherSide = 2;

/// Clocks in centiseconds. Without a "level" those of the INI file stand.
struct TimeControls {
    Clocks clocks{};
    std::optional<i32> base{};                 // of "level", to which "new" sets both clocks
    std::optional<i64> millisecondsPerMove{};  // of "st"
    std::optional<i32> depth{};                // of "sd"
};

struct XboardState {
    Game game{};
    u8 engineSide = neitherSide;
    bool analysisWanted = false;
    bool ponderWanted = false;
    bool over = false;  // by a claim or by "result": no move is made until the game changes
    Busy busy = Busy::nothing;
    std::string expected{};         // the opponent's move that is pondered on
    bool hit = false;               // he has played it, and the game's record does not hold it yet
    std::optional<Outcome> held{};  // of a ponder search that ended before the opponent moved
    std::string hint{};             // the move to suggest to the opponent; empty if there is none
    TimeControls time{};
    std::vector<std::string> owed{};  // lines to be said after the move
};

extern XboardState session;

/// Whether thinking lines are wanted. Read by the search thread.
extern Relaxed<i32> postWanted;

/// Whether the engine's own clock runs: it thinks about its move.
[[nodiscard]] bool isThinking();

/// Ends what the search thread does, without a move, and brings the game's record up to date.
void settle(SessionLock& lock);

/// The engine's turn, if it is; nothing otherwise. Before: settled.
void moveIfDue();

/// The same after an order to move: also where the game could be claimed a draw.
void moveNow();

/// Goes on analysing, where that is wanted. Before: settled.
void analyseIfWanted();

/// Begins to ponder on the expected move anew. Before: settled.
void ponderAgain(const std::string& expected);

/// The opponent, or whoever enters moves, plays `text`.
void takeMove(std::string_view text, SessionLock& lock);

/// Says the result if the laws have ended the game.
void claimEnd();

/// Says what was owed until the move was out.
void payOwed();
