// Output by whole lines and input by lines.
#pragma once

#include "platform/bits.h"

/// printf to standard output, but each line is written at once and whole, whichever calls build it and whatever other
/// threads print: text waits, per thread, until its newline comes or flushOutput is called.
[[gnu::format(printf, 1, 2)]] void print(const char* format, ...);

/// Whole lines that this thread prints from now on begin with `prefix`, which stays valid meanwhile; null: they are
/// dropped. Empty at first. For another front end, to which what the core says by itself is a comment.
void setLinePrefix(const char* prefix);

/// Writes out what this thread has printed without a newline so far.
void flushOutput();

constexpr i32 lineBufferSize = 256;

/// Reads a line of at most 255 characters from standard input into `line`, which is cleared first; the first newline,
/// and a carriage return right before it, become NUL. The rest of a longer line comes as the next. Returns false at
/// end of input when nothing was read. Waits for more also where standard input does not block.
[[nodiscard]] bool readLine(char (&line)[lineBufferSize]);
