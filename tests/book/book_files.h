// Small books that the tests write themselves.
#pragma once

#include "book/book_record.h"

#include <string>
#include <vector>

/// The bytes of a book of these records, in this order.
inline std::string bookBytes(const std::vector<BookRecord>& records) {
    std::string bytes;
    for (const BookRecord& record : records) {
        for (const u8 byte : encodeBookRecord(record)) {
            bytes.push_back(static_cast<char>(byte));
        }
    }
    return bytes;
}

/// Real square by its name, "e2".
constexpr i32 squareOf(const char* name) {
    return name[0] - 'a' + 8 * (name[1] - '1');
}

/// The 16-bit move by its squares, "e2e4", and a promotion number.
constexpr u16 bookMove(const char* squares, i32 promotion = 0) {
    return makeBookMove(squareOf(squares), squareOf(squares + 2), promotion);
}
