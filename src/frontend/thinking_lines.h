// The engine's thinking as lines of text. No include but search records.
#pragma once

#include "frontend/thinking_output.h"

/// Prints all that a think tells: thinking lines, mates, the debug line of its budget.
extern const ThinkingSink printedThinking;

/// Prints the numbers of a thinking line, without its end: depth in plies, score in centipawns from the side to move,
/// centiseconds, nodes. Sets SearchInfo.elapsedCs. printLine completes the line.
void printThinkingHead(i32 depth, i32 score);

/// Prints the moves of `line` as played from the position at `board`, and ends the line.
void printLine(PvLine line);
