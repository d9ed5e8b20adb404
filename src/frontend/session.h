// What a program around the engine does first and at each turn: the tables of a mode, a new game, whose move it is,
// taking back.
#pragma once

#include "platform/bits.h"

/// Allocates the hash tables and looks for tablebases, as a mode is entered.
void setUpTables();

/// A transposition table of so many MB, empty.
void resizeHashTable(i32 megabytes);

/// `board` becomes record 0 with the start position, key computed. `psqScore` of the record stays as it was:
/// deliberate. Also sets TimeControl.moveNumber to 0. Clocks, flags and hash tables are the caller's business.
void newGame();

/// 0 White, 1 Black.
[[nodiscard]] u8 sideToMove();

/// Whether the game goes on and the engine plays the side to move.
[[nodiscard]] bool engineIsToMove();

/// Whether one more move of the game may be played: a further one would leave the search without records.
[[nodiscard]] bool gameHasRoom();

/// One record down; stays at the first record.
void takeBackMove();
