// Games of PGN, taken apart so that they can be written again with more in them.
#pragma once

#include "board/board.h"

#include <string>
#include <string_view>
#include <vector>

/// What may stand behind a move: a comment with its braces, a variation with its brackets and all that is inside, or an
/// annotation glyph.
enum class ItemKind : u8 { comment, variation, glyph };

struct GameItem {
    ItemKind kind;
    std::string text;  // as it goes out: "{...}", "(...)", "$4"
};

struct GameMove {
    Mossa move;
    std::string san;
    std::vector<GameItem> after;
};

struct Game {
    std::string raw;  // all of it as it came
    u64 line;         // of the file, where it begins
    u64 faultLine;
    std::string fault;              // not empty: it cannot be played to its end
    std::vector<std::string> tags;  // "[Name "value"]"
    std::string fen;                // of the first position
    std::vector<GameItem> before;   // the first move
    std::vector<GameMove> moves;
    std::string result;
    bool ended;  // by a result of its own
};

/// The text of a file, from which games are taken one by one.
struct GameText {
    std::string_view rest;
    u64 line = 1;
    bool lineStarts = true;
};

/// Takes the next game; false at the end. The game on the board is lost.
[[nodiscard]] bool nextGame(GameText& text, Game& game);

/// The value of a tag; empty if there is none.
[[nodiscard]] std::string tagValue(const Game& game, std::string_view name);

/// What makes two games the same work: tags, first position and moves.
[[nodiscard]] std::string gameKey(const Game& game);

/// Words of a game's text, broken into lines of 79 characters where there is a blank between words.
struct GameWriter {
    std::string text;
    std::size_t column = 0;
};
void writeWord(GameWriter& writer, const std::string& word);

/// "12." before White's move, "12..." before Black's where one is needed. `ply` counts from 0 at the first position.
[[nodiscard]] std::string moveNumber(const std::string& fen, std::size_t ply);
[[nodiscard]] bool isWhitePly(const std::string& fen, std::size_t ply);
