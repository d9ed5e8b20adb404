// What the programs that write golden lists share: reading the positions, printing what is said of them.
#pragma once

#include "support/list_lines.h"

#include <span>
#include <string>

struct GoldenList {
    const char* name;                         // of its file in tests/data/golden
    bool (*write)(const std::string& input);  // prints what is said of a position; false if it is none
    bool hasPositions;  // read from an old list, "fen " before each; else each line is one
};

void printLines(const Lines& lines);

/// Searches the position at `board` and prints lines and best move. Returns the move.
Mossa writeThink(const SearchLimits& limits);

/// The program: LIST is its argument. Takes the positions from standard input, and nothing else of an old list; writes the
/// list to standard output. The exit status: 0, or 2 with the reason on standard error for a list that is not in `lists`,
/// for a position that is none, and for input without any.
[[nodiscard]] i32 runListWriter(std::span<const GoldenList> lists, i32 argc, char** argv);
