// Whole book files in memory.
#pragma once

#include "book/book_record.h"

#include <string>
#include <vector>

using BookRecords = std::vector<BookRecord>;

struct LoadedBook {
    BookRecords records;  // in the file's order
    u64 spareBytes;       // behind the last whole record
};

/// Reads a book. Returns false, and says why on standard error, if it cannot be read.
[[nodiscard]] bool loadBook(const std::string& fileName, LoadedBook& book);

/// Writes a book: under another name first, so that a book that stands is replaced whole or not at all. Returns false,
/// and says why on standard error, if it cannot be written.
[[nodiscard]] bool saveBook(const std::string& fileName, const BookRecords& records);

/// All moves of both books, sorted; the weights of a move that both have are added, within what a weight can hold.
[[nodiscard]] BookRecords mergeBooks(const BookRecords& a, const BookRecords& b);
