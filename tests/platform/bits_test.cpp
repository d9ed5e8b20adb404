#include "platform/bits.h"

#include <gtest/gtest.h>

struct WrapCase {
    const char* name;
    i32 value;
    i32 wrapped;
};

constexpr WrapCase wrapCases[] = {
    {"the largest score stays", 32767, 32767},    {"one more is the smallest", 32768, -32768},
    {"the smallest score stays", -32768, -32768}, {"one less is the largest", -32769, 32767},
    {"whole turns fall away", 3 * 65536 + 5, 5},  {"whole turns below zero fall away", -3 * 65536 - 5, -5},
};

TEST(Wrap16, KeepsTheLowSixteenBits) {
    for (const WrapCase& c : wrapCases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(wrap16(c.value), c.wrapped);
    }
}

TEST(Sets, AreWalkedFromTheLowestMember) {
    TBB set = squareBit(3) | squareBit(0) | squareBit(63);
    EXPECT_EQ(popCount(set), 3);
    EXPECT_EQ(popLowest(set), 0);
    EXPECT_EQ(popLowest(set), 3);
    EXPECT_EQ(lowestBit(set), 63);
    EXPECT_EQ(popLowest(set), 63);
    EXPECT_EQ(set, 0U);
}

TEST(ByteSwap, MirrorsEverySquare) {
    for (i32 square = 0; square < 64; ++square) {
        EXPECT_EQ(byteSwap(squareBit(square)), squareBit(square ^ 56));
    }
}

struct ProductCase {
    u64 a;
    u64 b;
    u64 highHalf;
};
constexpr ProductCase productCases[] = {
    {0, ~u64{0}, 0},
    {u64{1} << 32, u64{1} << 32, 1},
    {~u64{0}, ~u64{0}, ~u64{0} - 1},
    {~u64{0}, 2, 1},
    {0xFFFFFFFF, 0xFFFFFFFF00000001, 0xFFFFFFFE},
    {0x123456789ABCDEF0, 0xFEDCBA9876543210, 0x121FA00AD77D7422},
};

TEST(HighHalfOfProduct, CarriesIntoTheUpperWord) {
    for (const ProductCase& c : productCases) {
        EXPECT_EQ(highHalfOfProduct(c.a, c.b), c.highHalf) << c.a << " " << c.b;
        EXPECT_EQ(highHalfOfProduct(c.b, c.a), c.highHalf) << c.b << " " << c.a;
    }
}
