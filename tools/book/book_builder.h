// Counts which moves were played in which positions, and makes book records of the counts.
#pragma once

#include "board/board.h"
#include "book_file.h"

#include <map>
#include <utility>

struct BookBuilder {
    i32 maxPly;                                      // moves of a game or line that count, from its start
    std::map<std::pair<u64, u16>, u64> countOfMove;  // by position's key and book move
};

/// Adds `times` to the count of `move` in the position at `board`. 0 leaves no trace.
void countMove(BookBuilder& builder, Mossa move, u64 times);

/// The records of all moves that were counted at least `minCount` times: sorted by key, and within a position from the
/// heaviest down, so that an engine that plays a position's first move plays the heaviest. Counts that do not fit into
/// a weight are scaled down position by position. No position has more moves than a probe serves.
[[nodiscard]] BookRecords recordsOf(const BookBuilder& builder, u64 minCount);
