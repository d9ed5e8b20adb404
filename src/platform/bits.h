// Fixed-width names and the primitive operations on 64-bit sets. Every other file builds on these.
#pragma once

#include <bit>
#include <cassert>
#include <cstdint>

using i8 = std::int8_t;
using i16 = std::int16_t;
using i32 = std::int32_t;
using i64 = std::int64_t;
using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

/// A set of squares: bit n is square n, a1 = 0, h8 = 63.
using TBB = u64;

/// Number of members, 0 to 64.
[[nodiscard]] constexpr i32 popCount(TBB set) {
    return std::popcount(set);
}

/// Lowest member. `set` must not be empty.
[[nodiscard]] constexpr i32 lowestBit(TBB set) {
    assert(set != 0);
    return std::countr_zero(set);
}

/// Removes the lowest member and returns it. `set` must not be empty.
constexpr i32 popLowest(TBB& set) {
    const i32 square = lowestBit(set);
    set &= set - 1;
    return square;
}

/// The set with `square` (0 to 63) as its only member.
[[nodiscard]] constexpr TBB squareBit(i32 square) {
    assert(square >= 0 && square < 64);
    return TBB{1} << square;
}

/// Reverses the eight bytes: the vertical mirror of a set, square s becomes s XOR 56.
[[nodiscard]] constexpr u64 byteSwap(u64 word) {
    return __builtin_bswap64(word);
}

/// The high 64 bits of the product of two words.
[[nodiscard]] constexpr u64 highHalfOfProduct(u64 a, u64 b) {
#ifdef __SIZEOF_INT128__
    __extension__ using u128 = unsigned __int128;
    return static_cast<u64>(u128{a} * b >> 64);
#else
    const u64 lowA = a & 0xFFFFFFFF;
    const u64 lowB = b & 0xFFFFFFFF;
    const u64 middle = (a >> 32) * lowB + (lowA * lowB >> 32);
    const u64 otherMiddle = lowA * (b >> 32) + (middle & 0xFFFFFFFF);
    return (a >> 32) * (b >> 32) + (middle >> 32) + (otherMiddle >> 32);
#endif
}

/// The low 16 bits as a signed number: the one way scores are narrowed.
[[nodiscard]] constexpr i16 wrap16(i32 value) {
    return static_cast<i16>(static_cast<u16>(static_cast<u32>(value)));
}
