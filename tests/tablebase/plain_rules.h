// The rules of chess without castling, written apart from the engine and as plainly as can be: a picture of 64 letters
// and every move as the position it leads to. Squares are real, a1 = 0.
#pragma once

#include "platform/bits.h"

#include <array>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace plain {

constexpr i32 noSquare = -1;

struct Position {
    std::array<char, 64> men;  // as in a FEN; '.' is empty
    bool whiteMoves;
    i32 epSquare;  // behind a pawn that has just made a double step
};

struct Successor {
    Position position;
    bool zeroing;  // a capture or a pawn's move
    bool capture;
};

[[nodiscard]] Position emptyPosition();
[[nodiscard]] bool isAttacked(const Position& p, i32 square, bool byWhite);
[[nodiscard]] bool inCheck(const Position& p, bool white);
[[nodiscard]] std::vector<Successor> legalSuccessors(const Position& p);
[[nodiscard]] std::string fenOf(const Position& p, i32 rule50 = 0);

/// Whether the position can stand before a move: no pawn on the first or last rank, the side that has moved not in
/// check, kings apart.
[[nodiscard]] bool isLegal(const Position& p);

/// The men of a table name, white ones first: "KQvKR" is "KQkr".
[[nodiscard]] std::string menOfName(std::string_view name);

/// The same name with the colours exchanged.
[[nodiscard]] std::string swappedName(std::string_view name);

/// Men on random squares, legal, either side to move. In a third of the positions where a pawn may just have made a
/// double step it has.
[[nodiscard]] Position randomPosition(std::string_view men, std::mt19937_64& random);

}  // namespace plain
