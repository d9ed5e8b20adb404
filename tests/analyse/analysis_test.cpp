#include "analysis.h"
#include "fen_reader.h"
#include "frontend/session.h"
#include "rules.h"

#include <gtest/gtest.h>

namespace {

bool isWanted() {
    return true;
}

Analysis searched(const std::string& fen, const Limits& limits) {
    static const bool setUp = setUpAnalysis(4);
    EXPECT_TRUE(setUp);
    return analysePosition({fen, {}}, limits, isWanted);
}

}  // namespace

TEST(Analysis, TheSameWhateverWasSearchedBefore) {
    const Limits limits{5, 0, 0};
    const Analysis first = searched(startFen, limits);
    static_cast<void>(searched("r1b2rk1/2q1b1pp/p2ppn2/1p6/3QP3/1BN1B3/PPP3PP/R4RK1 w - - 0 1", limits));
    const Analysis second = searched(startFen, limits);
    EXPECT_EQ(first.nodes, second.nodes);
    EXPECT_EQ(first.score, second.score);
    EXPECT_EQ(first.line, second.line);
    EXPECT_EQ(first.depth, 5);
}

TEST(Analysis, AnOnlyMoveHasTheScoreOfThePositionBehindIt) {
    // After Ka2 Black queens and mates.
    const Analysis analysis = searched("k7/8/1r6/8/8/8/7p/K7 w - - 0 1", {6, 0, 0});
    EXPECT_EQ(analysis.line.front(), "Ka2");
    EXPECT_EQ(mateDistance(analysis.score), -2);
    EXPECT_EQ(analysis.depth, 6);
}

TEST(Analysis, MateAndStalemateNeedNoSearch) {
    EXPECT_EQ(searched("7k/8/8/8/8/8/5PPP/r5K1 w - - 0 1", {4, 0, 0}).standstill, Standstill::checkmate);
    EXPECT_EQ(searched("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", {4, 0, 0}).standstill, Standstill::stalemate);
}

TEST(Analysis, NodesEndASearchSoon) {
    const Analysis analysis = searched(startFen, {0, 0, 5000});
    EXPECT_GE(analysis.nodes, 5000U);
    EXPECT_LE(analysis.nodes, 5000U + 1024);
    EXPECT_GT(analysis.depth, 1);
    EXPECT_FALSE(analysis.line.empty());
}

TEST(Analysis, TheMovesOfAGameAreMadeFirst) {
    const char* const fen = "6k1/5ppp/8/8/8/7q/5P2/4Q1K1 w - - 0 1";
    newGame();
    ASSERT_EQ(fenToBoard(fen), 1);
    const Standing standing = standingHere();
    const LegalMove* const legal = findLegal(standing, std::string_view("e1e8"));
    ASSERT_NE(legal, nullptr);
    EXPECT_EQ(analysePosition({fen, {legal->move}}, {4, 0, 0}, isWanted).standstill, Standstill::checkmate);
}

TEST(Analysis, MatesAreToldInMoves) {
    EXPECT_EQ(mateDistance(19999), 1);
    EXPECT_EQ(mateDistance(19997), 2);
    EXPECT_EQ(mateDistance(-19998), -1);
    EXPECT_EQ(mateDistance(-19996), -2);
    EXPECT_EQ(mateDistance(18999), 0);
    EXPECT_EQ(mateDistance(0), 0);
}
