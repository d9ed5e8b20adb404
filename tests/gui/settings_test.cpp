// Options, as both protocols set them.
#include "settings.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace {

class Options : public testing::Test {
  protected:
    void SetUp() override {
        settings = {};
        settings.hashMegabytes = 64;
        settings.fastOpening = 105;
    }
};

}  // namespace

TEST_F(Options, NumbersAreHeldToTheirRange) {
    EXPECT_EQ(setOption(Side::uci, "Hash", "0"), "");
    EXPECT_EQ(settings.hashMegabytes, 1);
    EXPECT_EQ(setOption(Side::uci, "hash", "99999999999999999999"), "");
    EXPECT_EQ(settings.hashMegabytes, 65536);
    EXPECT_EQ(setOption(Side::uci, "Hash", "x"), "not a number for Hash");
    EXPECT_EQ(settings.hashMegabytes, 65536);
}

TEST_F(Options, FastOpeningIsAddedSevenfold) {
    EXPECT_NE(describeOptions(Side::uci).find("FastOpening type spin default 15 "), std::string::npos);
    EXPECT_EQ(setOption(Side::xboard, "FastOpening", "5"), "");
    EXPECT_EQ(settings.fastOpening, 35);
    EXPECT_NE(describeOptions(Side::xboard).find("FastOpening -spin 5 5 15"), std::string::npos);
}

TEST_F(Options, TruthsAreWordsOrDigits) {
    for (const char* yes : {"true", "TRUE", "1"}) {
        settings.ownBook = false;
        EXPECT_EQ(setOption(Side::uci, "OwnBook", yes), "");
        EXPECT_TRUE(settings.ownBook);
    }
    for (const char* no : {"false", "0"}) {
        settings.ownBook = true;
        EXPECT_EQ(setOption(Side::xboard, "OwnBook", no), "");
        EXPECT_FALSE(settings.ownBook);
    }
    EXPECT_EQ(setOption(Side::uci, "OwnBook", "perhaps"), "neither true nor false for OwnBook");
}

TEST_F(Options, APathToTablesSwitchesThemOn) {
    EXPECT_EQ(setOption(Side::uci, "SyzygyPath", "/a path"), "");
    EXPECT_TRUE(settings.tables);
    EXPECT_EQ(settings.tablePath, "/a path");
    EXPECT_EQ(setOption(Side::uci, "SyzygyPath", "<empty>"), "");
    EXPECT_FALSE(settings.tables);
}

TEST_F(Options, EachProtocolKnowsItsOwn) {
    EXPECT_EQ(setOption(Side::xboard, "Hash", "5"), "no option Hash");
    EXPECT_EQ(setOption(Side::uci, "ClearHash", ""), "no option ClearHash");
    EXPECT_EQ(setOption(Side::xboard, "ClearHash", ""), "");
    EXPECT_EQ(setOption(Side::uci, "Clear Hash", ""), "");
}

TEST_F(Options, EveryDescribedOptionCanBeSet) {
    std::istringstream lines(describeOptions(Side::xboard));
    i32 count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_EQ(setOption(Side::xboard, line.substr(0, line.find(" -")), "7"),
                  line.find("-check") != std::string::npos
                      ? "neither true nor false for " + line.substr(0, line.find(" -"))
                      : "")
            << line;
    }
    EXPECT_EQ(count, 13);
}
