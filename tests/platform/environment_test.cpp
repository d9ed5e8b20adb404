// What the program learns of its surroundings.
#include "platform/environment.h"

#include "platform/platform.h"

#include <gtest/gtest.h>

#include <cstdlib>

TEST(Environment, TellsAVariableFromNoneAndFromAnEmptyOne) {
    std::string text = "before";
    ASSERT_EQ(setenv("TARVELMON_TEST_VARIABLE", "a b\xC3\xBC", 1), 0);
    EXPECT_TRUE(readEnvironment("TARVELMON_TEST_VARIABLE", text));
    EXPECT_EQ(text, "a b\xC3\xBC");
    ASSERT_EQ(setenv("TARVELMON_TEST_VARIABLE", "", 1), 0);
    EXPECT_TRUE(readEnvironment("TARVELMON_TEST_VARIABLE", text));
    EXPECT_EQ(text, "");
    ASSERT_EQ(unsetenv("TARVELMON_TEST_VARIABLE"), 0);
    text = "before";
    EXPECT_FALSE(readEnvironment("TARVELMON_TEST_VARIABLE", text));
    EXPECT_EQ(text, "");
}

TEST(Arguments, AreThoseBehindTheProgramsName) {
    char program[] = "program";
    char first[] = "one";
    char second[] = "two words";
    char* words[] = {program, first, second, nullptr};
    EXPECT_EQ(programArguments(3, words), (std::vector<std::string>{"one", "two words"}));
    EXPECT_TRUE(programArguments(1, words).empty());
    EXPECT_TRUE(programArguments(0, words).empty()) << "no name either";
}

TEST(ProcessorTime, CountsWorkInSeconds) {
    const i32 begunMs = nowMs();
    const double begun = processorSeconds();
    volatile u64 sum = 0;
    while (processorSeconds() - begun < 0.05) {
        sum = sum + 1;
    }
    EXPECT_GE(elapsedMs(begunMs), 45) << "one thread cannot work for longer than it has run";
}
