// Lines taken apart, numbers and times.
#include "words.h"

#include "time_words.h"

#include <gtest/gtest.h>

TEST(Words, AreSeparatedByBlanksAndTabs) {
    Words words{"  one\ttwo  three four "};
    EXPECT_EQ(words.next(), "one");
    EXPECT_EQ(words.next(), "two");
    EXPECT_EQ(words.remainder(), "three four");
    EXPECT_EQ(Words{"   "}.next(), "");
    EXPECT_EQ(Words{"   "}.remainder(), "");
    EXPECT_EQ(Words{""}.next(), "");
}

TEST(Words, NumbersEndAtTheFirstOtherByte) {
    EXPECT_EQ(numberIn("12abc"), 12);
    EXPECT_EQ(numberIn("-5"), -5);
    EXPECT_EQ(numberIn("+7"), 7);
    EXPECT_FALSE(numberIn("abc"));
    EXPECT_FALSE(numberIn(""));
    EXPECT_FALSE(numberIn("-"));
    EXPECT_FALSE(numberIn("+"));
    EXPECT_EQ(numberOr("x", 3), 3);
}

TEST(Words, AreComparedWithoutCase) {
    EXPECT_TRUE(sameWord("Move Overhead", "move overhead"));
    EXPECT_FALSE(sameWord("Hash", "Hash "));
    EXPECT_FALSE(sameWord("[", "{"));
}

struct BaseTime {
    const char* text;
    std::optional<i32> centiseconds;
};

TEST(TimeWords, BaseTimeIsMinutesOrMinutesAndSeconds) {
    constexpr BaseTime times[] = {
        {"5", 30000},     {"0:30", 3000},
        {"2:05", 12500},  {"0:02.5", 250},
        {"25+5", 150000}, {"40x", 240000},
        {"1:", 6000},     {"1:x", 6000},
        {"1:-5", 6000},   {"", {}},
        {"x", {}},        {"-5", {}},
        {":30", {}},      {"99999999999", 999996000},
    };
    for (const BaseTime& time : times) {
        EXPECT_EQ(baseTimeIn(time.text), time.centiseconds) << time.text;
    }
}

struct Seconds {
    const char* text;
    std::optional<i64> milliseconds;
};

TEST(TimeWords, SecondsMayHaveAFraction) {
    constexpr Seconds times[] = {
        {"5", 5000},
        {"0.02", 20},
        {"3.0", 3000},
        {"0", 0},
        {".5", 500},
        {"1e1", 10000},
        {"-1", {}},
        {"", {}},
        {"x", {}},
        {"nan", {}},
        {"inf", 10000000000},
        {"1e400", 10000000000},
        {"99999999999", 10000000000},
    };
    for (const Seconds& time : times) {
        EXPECT_EQ(secondsIn(time.text), time.milliseconds) << time.text;
    }
}
