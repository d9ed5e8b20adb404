// The evaluation once more, slow and plain: square by square on a board of letters, byte maps always built, no set, no
// table by rule. What the fast one must equal on any board.
#pragma once

#include "platform/bits.h"

struct PlainValue {
    i16 value;
    i32 kingDanger;
};

/// Value of the position at `board` with an empty pawn hash of many records, and whether it raises the flag.
[[nodiscard]] PlainValue plainEvaluate();
