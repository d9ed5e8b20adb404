// The engine's book, asked for a legal move.
#pragma once

#include "game.h"

#include <string>

/// A book move for the position at `board`, empty if there is none: the book is off or its file missing, the game has
/// gone beyond the engine's last book move, or the book's move is not legal. `moveNumber` counts the engine's moves.
[[nodiscard]] std::string bookMove(const Standing& standing, i32 moveNumber);

/// Whether the settings' book can be opened.
[[nodiscard]] bool bookIsThere();
