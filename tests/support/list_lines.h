// What the engine says of one position, in the form of the golden lists; tests/data/golden/README.md tells what they hold.
// The golden tests compare these lines with the lists, list_writer makes lists of them. All of them look at `board`, which
// is as before afterwards unless a line says otherwise.
#pragma once

#include "board/board.h"

#include <string>
#include <vector>

using Lines = std::vector<std::string>;

/// moves.txt: both check tests, and what every generator lists.
[[nodiscard]] Lines generatedMoves();

/// see.txt: value and cost of each capture and each check.
[[nodiscard]] Lines exchangeValues();

/// user.txt: the answer to a move as a user types it, and the record afterwards. Plays the move.
[[nodiscard]] std::string answerToUserMove(const char* text);

/// eval.txt: the static value and what goes with it. Wants an empty pawn hash.
[[nodiscard]] std::string staticValues();

/// What ends a search of a list. One that would need more nodes is left out from the attempt on that would pass them.
struct SearchLimits {
    i32 depth;
    u64 nodes;
};

struct ListedSearch {
    Lines lines;  // thinking lines, mates, and where the nodes were used up
    Mossa best;   // of the last line
};

/// search-*.txt and games-depth5.txt: a think from the state that startFresh makes, or from that of a game that goes on.
[[nodiscard]] ListedSearch listedSearch(const SearchLimits& limits);
