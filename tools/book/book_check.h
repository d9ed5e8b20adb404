// What can be wrong with a book.
#pragma once

#include "book_file.h"

#include <string>

struct BookReport {
    u64 records;
    u64 positions;
    u64 spareBytes;            // behind the last whole record
    u64 unsorted;              // records whose key is below the one before
    u64 repeated;              // records with the key and the move of another
    u64 crowded;               // positions with more moves than a probe serves
    u64 badPromotions;         // moves with a promotion number that means nothing
    u64 reachedPositions;      // positions of the book that were met from the start position
    u64 reachedRecords;        // their records
    u64 illegal;               // those of them that are no legal move
    u64 publishedKeysOnly;     // positions met with an en passant capture that only other programs' keys find
    std::string firstIllegal;  // position's key and move
};

/// Examines `book`. Positions are met by playing, from the start position on, every legal move in positions of the
/// book, and every legal reply to a move of the book; what lies behind other openings is not met, and not faulty. The
/// game on the board is lost.
[[nodiscard]] BookReport checkBook(const LoadedBook& book);

/// Whether `report` has nothing wrong: a probe of the book works as it should.
[[nodiscard]] bool isSound(const BookReport& report);

/// Prints `report`.
void printReport(const BookReport& report);
