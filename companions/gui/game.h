// The record of a game: where it began, the moves, takebacks, and how it ends by the laws. Keeps `board` and the stack
// below it in step, so it is called with no search running; a game may be read at any time.
#pragma once

#include "board/board.h"
#include "rules.h"

#include <string>
#include <string_view>
#include <vector>

struct Ply {
    std::string text;
    bool byEngine;
};

/// What must be equal for a repetition by the laws.
struct LawKey {
    TBB side;
    TBB pbq;
    TBB nbk;
    TBB rqk;
    u8 rights;
    u8 enPassantFile;  // only where such a capture is legal
    bool black;

    bool operator==(const LawKey&) const = default;
};

struct Game {
    std::vector<Ply> plies;
    std::vector<LawKey> keys;   // of each position, the first included
    std::vector<i32> clocks;    // of each position: plies since a capture or pawn move, without end
    Standing standing;          // the present position
    std::string illegalReason;  // not empty: the position set up is none, and nothing can be played
};

/// How the laws end a game.
enum class GameEnd : u8 { none, checkmate, stalemate, repetition, fiftyMoves, material };

/// The start position.
void startGame(Game& game);

/// Sets up a position. Returns an empty text, or what is wrong with it: then nothing has changed.
[[nodiscard]] std::string setUpGame(Game& game, std::string_view fen);

/// Plays a move. Returns an empty text, or why it is not legal: then nothing has changed.
[[nodiscard]] std::string playMove(Game& game, std::string_view text, bool byEngine);

/// Takes the last move back; false if there is none.
bool takeBack(Game& game);

/// Moves that the engine has played.
[[nodiscard]] i32 engineMoves(const Game& game);

[[nodiscard]] GameEnd endOf(const Game& game);

/// "1-0 {White mates}" and the like; empty for none.
[[nodiscard]] std::string resultLine(const Game& game, GameEnd end);
