#include "epd.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* startFields = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -";

struct PlainCase {
    const char* name;
    std::string given;
    std::string plain;
};

const PlainCase plainCases[] = {
    {"four fields stay", startFields, startFields},
    {"blanks and the end of a Windows line go", std::string("  ") + startFields + " \r", startFields},
    {"clocks of a new game are left out", std::string(startFields) + " 0 1", startFields},
    {"other clocks become operations", std::string(startFields) + " 3 17",
     std::string(startFields) + " fmvn 17; hmvc 3;"},
    {"operations behind a FEN's clocks", std::string(startFields) + " 3 17 id \"x\";",
     std::string(startFields) + " fmvn 17; hmvc 3; id \"x\";"},
    {"operations come in the order of their names", std::string(startFields) + " id \"x\"; bm e4;",
     std::string(startFields) + " bm e4; id \"x\";"},
    {"a semicolon in quotation marks ends nothing", std::string(startFields) + " id \"a; b\"; bm e4;",
     std::string(startFields) + " bm e4; id \"a; b\";"},
    {"the last semicolon may be missing", std::string(startFields) + " bm e4",
     std::string(startFields) + " bm e4;"},
    {"an operation without operands", std::string(startFields) + " noop;",
     std::string(startFields) + " noop;"},
    {"what this program writes goes", std::string(startFields) + " acd 9; bm e4; ce 30; pm d4; pv d4 d5;",
     std::string(startFields) + " bm e4;"},
};

Analysis analysisOf(i32 score) {
    return {{}, Standstill::none, 8, score, 1234, 1600, {"e4", "e5"}, {}};
}

}  // namespace

TEST(Epd, TwoWritingsOfTheSameWorkBecomeOne) {
    for (const PlainCase& c : plainCases) {
        SCOPED_TRACE(c.name);
        const EpdLine line = readEpd(c.given);
        EXPECT_EQ(line.fault, "");
        EXPECT_EQ(plainEpd(line), c.plain);
    }
}

TEST(Epd, ClocksReachThePosition) {
    EXPECT_TRUE(readEpd(std::string(startFields) + " hmvc 7; fmvn 40;").fen.ends_with(" 7 40"));
    EXPECT_TRUE(readEpd(std::string(startFields) + " 7 40").fen.ends_with(" 7 40"));
    EXPECT_EQ(plainEpd(readEpd(std::string(startFields) + " hmvc 7; hmvc 8; hmvc 9;")),
              std::string(startFields) + " hmvc 7;");
    EXPECT_TRUE(readEpd(std::string(startFields) + " bm e4;").fen.ends_with(" 0 1"));
}

TEST(Epd, WhatIsNoPositionIsTold) {
    EXPECT_EQ(readEpd("rubbish").fault, "the board is not eight ranks of eight squares");
    EXPECT_EQ(readEpd("8/8/8/8/8/8/8/K7 w - -").fault, "each side needs one king");
    EXPECT_EQ(readEpd(std::string(startFields) + " ;;").fault, "");
    EXPECT_EQ(readEpd(std::string(startFields) + " \"x\";").fault, "an operation has no name");
    EXPECT_EQ(readEpd(std::string(startFields) + " bm e4; id \"x;").fault, "a quotation has no end");
    for (const char* text : {"\"", "w w w w", ";", "8/8/8/8/8/8/8/8 w - - 0 1 \"\"\""}) {
        EXPECT_NE(readEpd(text).fault, "") << text;
    }
}

TEST(Epd, OperandsAreWordsOrQuotedTexts) {
    const EpdLine line = readEpd(std::string(startFields) + " bm e4  d4; id \"two words\"; noop;");
    EXPECT_EQ(operandsOf(line, "bm"), (std::vector<std::string>{"e4", "d4"}));
    EXPECT_EQ(operandsOf(line, "id"), (std::vector<std::string>{"two words"}));
    EXPECT_TRUE(operandsOf(line, "noop").empty());
    EXPECT_TRUE(operandsOf(line, "am").empty());
}

TEST(Epd, WhatTheSearchFoundStandsAmongTheOperations) {
    const EpdLine line = readEpd(std::string(startFields) + " id \"x\"; ce 1; bm e4;");
    EXPECT_EQ(analysedEpd(line, analysisOf(-35), false, {}),
              std::string(startFields) + " acd 8; acn 1234; bm e4; ce -35; id \"x\"; pm e4; pv e4 e5;");
    EXPECT_EQ(analysedEpd(line, analysisOf(-35), true, {{"c9", "\"y\""}}),
              std::string(startFields) +
                  " acd 8; acn 1234; acs 2; bm e4; c9 \"y\"; ce -35; id \"x\"; pm e4; pv e4 e5;");
}

TEST(Epd, MatesAreCountedInMovesForTheMaterAndInPliesForTheMated) {
    const EpdLine line = readEpd(startFields);
    const auto scoreIn = [&](i32 score) {
        const std::string text = analysedEpd(line, analysisOf(score), false, {});
        const std::size_t begin = text.find("1234; ") + 6;
        return text.substr(begin, text.find(';', begin) - begin);
    };
    EXPECT_EQ(scoreIn(19999), "dm 1");
    EXPECT_EQ(scoreIn(19997), "dm 2");
    EXPECT_EQ(scoreIn(-19998), "ce -32765");  // mated by the second ply
    EXPECT_EQ(scoreIn(-19996), "ce -32763");
    EXPECT_EQ(scoreIn(18000), "ce 18000");
}

TEST(Epd, AMateOnTheBoardIsTheLowestEvaluation) {
    Analysis mate{{}, Standstill::checkmate, 0, -20000, 0, 0, {}, {}};
    EXPECT_EQ(analysedEpd(readEpd(startFields), mate, false, {}),
              std::string(startFields) + " acd 0; acn 0; ce -32767;");
}
