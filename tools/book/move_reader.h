// Moves as people write them, read on the position at `board`.
#pragma once

#include "board/board.h"

#include <string_view>

/// What a text comes to. `fault` is null if it is one legal move, else says in words what is wrong.
struct ReadMove {
    Mossa move;
    const char* fault;
};

/// Reads `text` as the standard short notation ("Nf3", "exd5", "O-O", "e8=Q+", "Nbd7") or as coordinates ("g1f3",
/// "e7e8q"), both with or without marks such as "+", "#", "!" and "?" behind. `board` is as before afterwards; adds to
/// SearchInfo.nodes.
[[nodiscard]] ReadMove readMoveText(std::string_view text);

/// The text without the marks behind it.
[[nodiscard]] std::string_view withoutMarks(std::string_view text);

/// `move`, legal in the position at `board`, as a book record writes it: real squares, castling as king takes rook.
[[nodiscard]] u16 bookMoveOf(Mossa move);
