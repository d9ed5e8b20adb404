// Opening lines from a text file.
//
// A line of the file is a line of play from the start position: moves in short notation or coordinates, with or without
// move numbers. A number and a colon before it ("5: e4 e5") make it count so many times. A "?" behind a move ("f6?",
// "Qh5?!") means that the book does not play it, only answers it. Text from "#" to the line's end, and lines that begin
// with "[", are for the reader.
#pragma once

#include "book_builder.h"
#include "text_file.h"

#include <string>
#include <string_view>

/// Counts the moves of all lines of `text` in `builder`. Faults, with `fileName` and the line's number, go to `log`; a
/// line counts up to its fault. Returns the number of lines of play. The game on the board is lost.
u64 readOpeningLines(BookBuilder& builder, FaultLog& log, const std::string& fileName, std::string_view text);
