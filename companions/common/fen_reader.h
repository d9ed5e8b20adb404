// Positions from outside, held strictly to the rules before the core's own loose reader gets them.
#pragma once

#include <string>
#include <string_view>

/// A text that the core's reader takes, or what is wrong with the one given.
struct FenReading {
    std::string fen;    // six fields
    std::string fault;  // a few words; empty if the position can be played
};

/// Reads a FEN of one to six fields. Refuses a placement that is not eight ranks of eight, other than one king a side,
/// pawns on the first or last rank, and a side to move that could take the king. Rights without king and rook at home
/// and an en passant square without its pawn are dropped. Uses a record far above the game's; `board` is as before.
[[nodiscard]] FenReading readFen(std::string_view text);

constexpr const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
