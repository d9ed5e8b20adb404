// What the words behind "go" ask for.
#pragma once

#include "game.h"
#include "platform/bits.h"

#include <optional>
#include <string_view>
#include <vector>

struct GoLimits {
    std::optional<i64> whiteTime;  // milliseconds
    std::optional<i64> blackTime;
    i64 whiteIncrement = 0;
    i64 blackIncrement = 0;
    i64 movesToGo = 0;
    std::optional<i64> moveTime;
    std::optional<i64> depth;
    std::optional<i64> nodes;
    std::optional<i64> mate;
    bool infinite = false;
    bool ponder = false;
    std::vector<Mossa> only;
};

/// Reads the words of `text`; unknown ones, and numbers that are none, are passed over. Moves of "searchmoves" that are not legal
/// in `standing` are dropped.
[[nodiscard]] GoLimits readGo(std::string_view text, const Standing& standing);

/// Whether a time on a clock is told.
[[nodiscard]] bool hasClock(const GoLimits& limits);

/// Whether nothing says when the search is to end: only "stop" ends it.
[[nodiscard]] bool isEndless(const GoLimits& limits);

/// Whether a move for a game is wanted: a clock runs, or a time for the move is set, and nothing asks for a look at the
/// position. Only such a move may come from the book.
[[nodiscard]] bool isForPlay(const GoLimits& limits);
