// Numbers in the bytes of a table file, wherever they lie.
#pragma once

#include "platform/bits.h"

[[nodiscard]] inline u32 littleEndian16(const u8* at) {
    return static_cast<u32>(at[0] | at[1] << 8);
}
[[nodiscard]] inline u32 littleEndian32(const u8* at) {
    return littleEndian16(at) | littleEndian16(at + 2) << 16;
}

/// The four bytes at `at` as the bit stream of a block has them; those from `end` on read as 0.
[[nodiscard]] inline u32 bigEndian32(const u8* at, const u8* end) {
    if (end - at >= 4) [[likely]] {
        return static_cast<u32>(at[0]) << 24 | static_cast<u32>(at[1] << 16 | at[2] << 8 | at[3]);
    }
    u32 word = 0;
    for (i32 i = 0; i < 4 && at + i < end; ++i) {
        word |= static_cast<u32>(at[i]) << (24 - 8 * i);
    }
    return word;
}

/// The two numbers of twelve bits in a symbol's three bytes.
[[nodiscard]] inline u32 pairLeft(const u8* pair) {
    return static_cast<u32>(pair[0] | (pair[1] & 15) << 8);
}
[[nodiscard]] inline u32 pairRight(const u8* pair) {
    return static_cast<u32>(pair[1] >> 4 | pair[2] << 4);
}
constexpr u32 leafMark = 0xFFF;  // as the right one: the symbol is a value, the first byte
