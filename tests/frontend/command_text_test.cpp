// Matching by fixed counts, and reading numbers.
#include "frontend/internal.h"
#include "frontend_support.h"

#include <limits>

TEST(CommandText, AWordHasNothingBehindIt) {
    EXPECT_TRUE(isWord("new", "new"));
    EXPECT_FALSE(isWord("new ", "new"));
    EXPECT_FALSE(isWord("newer", "new"));
    EXPECT_FALSE(isWord("ne", "new"));
    EXPECT_FALSE(isWord("New", "new"));
    EXPECT_FALSE(isWord(" new", "new"));
    EXPECT_FALSE(isWord("", "new"));
}

TEST(CommandText, APrefixMayBeFollowedByAnything) {
    EXPECT_TRUE(hasPrefix("sd 5", "sd"));
    EXPECT_TRUE(hasPrefix("sdx", "sd"));
    EXPECT_TRUE(hasPrefix("sd", "sd"));
    EXPECT_FALSE(hasPrefix("s", "sd"));
    EXPECT_FALSE(hasPrefix("", "sd"));
    EXPECT_FALSE(hasPrefix("SD", "sd"));
}

TEST(CommandText, TextBehindTheEndIsEmpty) {
    EXPECT_STREQ(fromByte("time 300", 6), "300");
    EXPECT_STREQ(fromByte("time ", 6), "");
    EXPECT_STREQ(fromByte("time", 6), "");
    EXPECT_STREQ(fromByte("", 10), "");
}

struct NumberCase {
    const char* line;
    bool fits;
    i32 number;
};

constexpr NumberCase numberCases[] = {
    {"sd 5", true, 5},
    {"sd5", true, 5},
    {"sd \t 5", true, 5},
    {"sd +7", true, 7},
    {"sd -7", true, -7},
    {"sd 007", true, 7},
    {"sd 5x9", true, 5},
    {"sd 5.9", true, 5},
    {"sd 0x10", true, 0},
    {"sd 2147483647", true, std::numeric_limits<i32>::max()},
    {"sd 2147483648", true, std::numeric_limits<i32>::max()},
    {"sd 99999999999999999999999999", true, std::numeric_limits<i32>::max()},
    {"sd -2147483648", true, std::numeric_limits<i32>::min()},
    {"sd -2147483649", true, std::numeric_limits<i32>::min()},
    {"sd -99999999999999999999999999", true, std::numeric_limits<i32>::min()},
    {"sd", false, 123},
    {"sd ", false, 123},
    {"sd x", false, 123},
    {"sd - 5", false, 123},
    {"sd +-5", false, 123},
    {"sd -", false, 123},
    {"s 5", false, 123},
    {"st 5", false, 123},
};

TEST(CommandText, NumbersAreReadBehindTheWordAndSaturate) {
    for (const NumberCase& c : numberCases) {
        SCOPED_TRACE(c.line);
        i32 number = 123;
        EXPECT_EQ(scanNumberBehind(c.line, "sd", number), c.fits);
        EXPECT_EQ(number, c.number);
    }
}

TEST(CommandText, NumbersFollowOneAnotherUntilOneDoesNotFit) {
    const char* text = "40 0:30 12";
    i32 number = 0;
    EXPECT_TRUE(scanNumber(text, number));
    EXPECT_EQ(number, 40);
    EXPECT_TRUE(scanNumber(text, number));
    EXPECT_EQ(number, 0);
    EXPECT_FALSE(scanNumber(text, number));
    EXPECT_STREQ(text, ":30 12");
}

TEST(CommandText, ProductsSaturate) {
    EXPECT_EQ(saturatedProduct(5, 100), 500);
    EXPECT_EQ(saturatedProduct(21474837, 100), std::numeric_limits<i32>::max());
    EXPECT_EQ(saturatedProduct(-357914, 6001), std::numeric_limits<i32>::min());
    EXPECT_EQ(saturatedProduct(std::numeric_limits<i32>::min(), 6000), std::numeric_limits<i32>::min());
}

static i32 rowTaken = 0;
static Next takeFirst(const char*) {
    rowTaken = 1;
    return Next::replyStep;
}
static Next takeSecond(const char*) {
    rowTaken = 2;
    return Next::leave;
}

TEST(CommandText, TheFirstRowThatMatchesActs) {
    constexpr Row rows[] = {
        {"st", hasPrefix, takeFirst}, {"stop", isWord, takeSecond}, {"q", isWord, takeSecond}};
    EXPECT_EQ(walkRows(rows, "stop"), Next::replyStep);
    EXPECT_EQ(rowTaken, 1);
    EXPECT_EQ(walkRows(rows, "q"), Next::leave);
    EXPECT_EQ(rowTaken, 2);
    EXPECT_EQ(walkRows(rows, "quit"), Next::notTaken);
}
