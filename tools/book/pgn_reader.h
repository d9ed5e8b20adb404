// Games from a PGN file.
#pragma once

#include "book_builder.h"
#include "text_file.h"

#include <string>
#include <string_view>

/// Counts each move of each game of `text` once in `builder`; comments and variations are passed over, a FEN tag sets
/// the game's first position. Faults, with `fileName` and the line's number, go to `log`; a game counts up to its
/// fault. Returns the number of games. The game on the board is lost.
u64 readPgnGames(BookBuilder& builder, FaultLog& log, const std::string& fileName, std::string_view text);
