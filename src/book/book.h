// The opening book, a file in the Polyglot format, read from disk at each probe.
#pragma once

#include "platform/bits.h"

/// The book's key of the position at `board`. Deliberate: the en passant term is never part of it in play.
[[nodiscard]] u64 polyglotKey();

/// Puts a book move for the position at `board` into `text` and returns 0; returns 1 if there is none: the reverse of
/// the engine's other predicates. The move may be illegal if the book is wrong. A file that cannot be opened puts the
/// system's error text on standard error.
i32 bookProbe(const char* fileName, char (&text)[6]);

/// Prints the book's moves of the position at `board` with their shares.
i32 bookList(const char* fileName);

/// Text of a book record's 16-bit move: four characters, or five with a promotion letter, and a NUL. Castling, which
/// books write as king takes rook, comes out as the king's move.
void bookMoveText(char (&text)[6], u16 move);
