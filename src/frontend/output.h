// What the engine says about its thinking and the game. No include but search records.
#pragma once

#include "search/search_info.h"

/// Prints the numbers of a thinking line, without its end: depth in plies, score in centipawns from the side to move,
/// centiseconds, nodes. Sets SearchInfo.elapsedCs. printLine completes the line.
void printThinkingHead(i32 depth, i32 score);

/// Prints the moves of `line` as played from the position at `board`, and ends the line.
void printLine(PvLine line);

/// Whether the game has ended in the position at `board`: 1 or 0. Prints the result lines. Adds to SearchInfo.nodes.
i32 checkGameEnd();
