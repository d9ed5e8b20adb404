// Move lists from their entries.
#pragma once

#include "board/board.h"

#include <vector>

inline MoveList captureList(const std::vector<ScoredMove>& entries) {
    MoveList list;
    list.count = 0;
    for (const ScoredMove& entry : entries) {
        list.entries[list.count++] = entry;
    }
    return list;
}

inline QuietList quietList(const std::vector<Mossa>& moves) {
    QuietList list;
    list.count = 0;
    for (const Mossa move : moves) {
        list.entries[list.count++] = move;
    }
    return list;
}
