// Whether the game on the board has ended.
#pragma once

#include "platform/bits.h"

/// Whether the game has ended in the position at `board`: 1 or 0. Prints the result lines. Adds to SearchInfo.nodes.
i32 checkGameEnd();
