// A record of a book file in the Polyglot format: 16 bytes, all numbers big-endian, the file sorted by key.
#pragma once

#include "platform/bits.h"

#include <array>

constexpr i32 bookRecordSize = 16;
using BookRecordBytes = std::array<u8, bookRecordSize>;

struct BookRecord {
    u64 key;  // polyglotKey of the position
    u16 move;  // from the low bit up: three bits each of target file, target rank, origin file, origin rank, promotion
    u16 weight;  // how often the move is to be played, against the position's other moves
    u32 learn;   // free for other programs
};

/// Most moves of one position that a probe serves.
constexpr i32 bookMovesMax = 100;

/// Promotion numbers of `move`: 0 none, 1 knight, 2 bishop, 3 rook, 4 queen; 5 to 7 mean nothing.
[[nodiscard]] constexpr u32 bookMovePromotion(u16 move) {
    return move >> 12 & 7U;
}

/// `promotion` as bookMovePromotion tells it; real squares.
[[nodiscard]] constexpr u16 makeBookMove(i32 from, i32 to, i32 promotion) {
    return static_cast<u16>(promotion << 12 | from << 6 | to);
}

namespace big_endian {

template <typename Number>
constexpr Number get(const BookRecordBytes& bytes, u32 offset) {
    u64 value = 0;
    for (u32 i = 0; i < sizeof(Number); ++i) {
        value = value << 8 | bytes[offset + i];
    }
    return static_cast<Number>(value);
}

template <typename Number>
constexpr void put(BookRecordBytes& bytes, u32 offset, Number number) {
    u64 value = number;
    for (u32 i = sizeof(Number); i-- > 0; value >>= 8) {
        bytes[offset + i] = static_cast<u8>(value);
    }
}

}  // namespace big_endian

[[nodiscard]] constexpr BookRecord decodeBookRecord(const BookRecordBytes& bytes) {
    return {big_endian::get<u64>(bytes, 0), big_endian::get<u16>(bytes, 8), big_endian::get<u16>(bytes, 10),
            big_endian::get<u32>(bytes, 12)};
}

[[nodiscard]] constexpr BookRecordBytes encodeBookRecord(const BookRecord& record) {
    BookRecordBytes bytes{};
    big_endian::put(bytes, 0, record.key);
    big_endian::put(bytes, 8, record.move);
    big_endian::put(bytes, 10, record.weight);
    big_endian::put(bytes, 12, record.learn);
    return bytes;
}
