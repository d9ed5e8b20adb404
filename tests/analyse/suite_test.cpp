#include "suite.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* middle = "r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - ";

Analysis choosing(const std::vector<Choice>& choices) {
    return {{}, Standstill::none, 9, 0, 0, 0, {}, choices};
}

SuiteResult judged(const std::string& operations, const std::vector<Choice>& choices) {
    const EpdLine line = readEpd(middle + operations);
    const SuiteTask task = readSuiteTask(line);
    EXPECT_EQ(task.fault, "");
    return judge(line, task, choosing(choices));
}

}  // namespace

TEST(Suite, AMoveThatIsNoneHereIsAFault) {
    EXPECT_EQ(readSuiteTask(readEpd(std::string(middle) + "bm Nd5;")).fault,
              "\"Nd5\" is not a legal move here");
    EXPECT_EQ(readSuiteTask(readEpd(std::string(middle) + "am zz;")).fault,
              "\"zz\" cannot be read as a move");
    EXPECT_EQ(readSuiteTask(readEpd(middle)).fault, "neither bm nor am");
}

TEST(Suite, SolvedFromTheDepthOnThatKeepsTheMove) {
    EXPECT_EQ(judged("bm Bb5;", {{1, 0, "d2d4"}, {3, 10, "f1b5"}}).depth, 3);
    EXPECT_EQ(judged("bm Bb5;", {{1, 0, "d2d4"}, {3, 10, "f1b5"}}).milliseconds, 10);
    EXPECT_EQ(judged("bm Bb5;", {{1, 0, "f1b5"}, {3, 10, "d2d4"}}).depth, 0);
    EXPECT_EQ(judged("bm Bb5;", {{1, 0, "f1b5"}, {3, 10, "d2d4"}, {6, 30, "f1b5"}}).depth, 6);
    EXPECT_EQ(judged("bm Bb5;", {}).depth, 0);
}

TEST(Suite, EachOfSeveralBestMovesIsRight) {
    EXPECT_EQ(judged("bm Bb5 Bc4;", {{2, 0, "f1b5"}, {5, 0, "f1c4"}}).depth, 2);
}

TEST(Suite, AMoveToAvoidIsWrongAndAllElseRight) {
    EXPECT_EQ(judged("am Nxe5;", {{1, 0, "f3e5"}, {4, 0, "d2d4"}, {5, 0, "f1b5"}}).depth, 4);
    EXPECT_EQ(judged("am Nxe5;", {{1, 0, "d2d4"}, {4, 0, "f3e5"}}).depth, 0);
}

TEST(Suite, AResultIsReadBackFromItsOperation) {
    for (const SuiteResult& result : {SuiteResult{"x", 7, 1230}, SuiteResult{"x", 0, -1}}) {
        const Operation operation = resultOperation(result, true);
        const EpdLine line =
            readEpd(std::string(middle) + "id \"x\"; " + operation.code + " " + operation.operands + ";");
        SuiteResult read{};
        ASSERT_TRUE(readSuiteResult(line, read));
        EXPECT_EQ(read.id, "x");
        EXPECT_EQ(read.depth, result.depth);
        EXPECT_EQ(read.milliseconds, result.milliseconds);
    }
    EXPECT_EQ(resultOperation({"x", 7, 1230}, false).operands, "\"solved at depth 7\"");
}

TEST(Suite, TheTableCountsAndLinesUp) {
    EXPECT_EQ(suiteTable({{"first", 7, 1230}, {"2", 0, -1}, {"3", 4, -1}}),
              "# id      depth   seconds\n"
              "# first       7      1.23\n"
              "# 2           -         -\n"
              "# 3           4         -\n"
              "# solved 2 of 3\n");
}
