// The root filter: ranks, scores, the fifty-move budget and repetitions. The tables are those of tests/data/syzygy.
#include "real_tables.h"
#include "search/ordering.h"
#include "support/test_data.h"

#include <algorithm>
#include <map>
#include <memory>

namespace {

struct Root {
    i32 result;
    i32 tbScore;
    i32 dtz;
    std::map<std::string, i32> ranks;  // of the moves kept
    std::vector<std::string> order;
    i32 before;  // moves before the filter
};

std::string textOf(Mossa move) {
    char text[6];
    moveToText(text, move, *board);
    return text[4] == ' ' ? std::string(text, 4) : std::string(text);
}

// Filters the root list of the position at `board`.
Root filterRoot() {
    const auto list = std::make_unique<RootList>();
    i32 count = 0;
    rootMoves(*list, count);
    Root root{0, 12345, 12345, {}, {}, count};
    root.result = rootProbe(*list, count, root.tbScore, root.dtz);
    for (i32 i = 0; i < count; ++i) {
        root.ranks[textOf((*list)[i].move)] = (*list)[i].tbRank;
        root.order.push_back(textOf((*list)[i].move));
    }
    return root;
}

Root filterRoot(const std::string& fen) {
    setUpPosition(fen);
    return filterRoot();
}

std::string withRule50(const std::string& placement, i32 rule50) {
    return placement + " " + std::to_string(rule50) + " 1";
}

}  // namespace

class RootProbe : public testing::Test {
  protected:
    void SetUp() override { tables::registerFolder(testDataPath("syzygy")); }
};

TEST_F(RootProbe, FailsOutsideTheTables) {
    const Root root = filterRoot("8/8/3k1r2/8/8/3K4/Q7/8 w - - 0 1");
    EXPECT_EQ(root.result, 0);
    EXPECT_EQ(static_cast<i32>(root.ranks.size()), root.before);
    EXPECT_EQ(root.tbScore, 12345);
}

TEST_F(RootProbe, KeepsTheDrawingMovesOfADrawnRoot) {
    // the opposition must be taken
    const Root root = filterRoot("4k3/8/8/4K3/4P3/8/8/8 b - - 0 1");
    EXPECT_EQ(root.result, 1);
    EXPECT_EQ(root.dtz, 0);
    EXPECT_EQ(root.tbScore, 0);
    EXPECT_LT(static_cast<i32>(root.ranks.size()), root.before);
    ASSERT_FALSE(root.ranks.empty());
    for (const auto& [move, rank] : root.ranks) {
        EXPECT_EQ(rank, 0) << move;
    }
}

TEST_F(RootProbe, RanksAMateFirst) {
    const Root root = filterRoot("7k/8/6K1/8/8/8/8/R7 w - - 0 1");
    EXPECT_EQ(root.result, 1);
    EXPECT_EQ(root.dtz, 1);
    EXPECT_EQ(root.tbScore, 10000);
    ASSERT_EQ(root.ranks.count("a1a8"), 1u);
    EXPECT_EQ(root.ranks.at("a1a8"), 1);
}

TEST_F(RootProbe, KeepsTheMovesInTheirOrder) {
    setUpPosition("8/8/8/8/3k4/8/8/KR6 w - - 0 1");
    const auto list = std::make_unique<RootList>();
    i32 count = 0;
    rootMoves(*list, count);
    std::vector<std::string> all;
    for (i32 i = 0; i < count; ++i) {
        all.push_back(textOf((*list)[i].move));
    }
    const Root root = filterRoot();
    std::erase_if(all, [&](const std::string& move) { return root.ranks.count(move) == 0; });
    EXPECT_EQ(root.order, all);
}

TEST_F(RootProbe, KeepsEveryWinningMoveInsideTheFiftyMoveBudget) {
    const Root root = filterRoot("8/8/8/8/3k4/8/8/KR6 w - - 0 1");
    EXPECT_EQ(root.tbScore, 10000);
    EXPECT_GT(root.ranks.size(), 10u);
    for (const auto& [move, rank] : root.ranks) {
        EXPECT_GT(rank, 0) << move;
        EXPECT_LE(rank, 99) << move;
    }
}

TEST_F(RootProbe, KeepsTheFastestMovesWhenTheBudgetIsUsedUp) {
    const std::string placement = "8/8/8/8/3k4/8/8/KR6 w - -";
    const i32 dtz = filterRoot(withRule50(placement, 0)).dtz;
    ASSERT_GT(dtz, 15);
    ASSERT_LT(dtz, 60);
    const Root inTime = filterRoot(withRule50(placement, 99 - dtz - 2));
    EXPECT_EQ(inTime.tbScore, 10000);
    for (const auto& [move, rank] : inTime.ranks) {
        EXPECT_LE(rank, dtz + 2) << move;
    }
    const Root late = filterRoot(withRule50(placement, 100 - dtz));
    EXPECT_EQ(late.tbScore, 10000);
    const i32 best = late.ranks.begin()->second;
    for (const auto& [move, rank] : late.ranks) {
        EXPECT_EQ(rank, best) << move;
    }
    const Root tooLate = filterRoot(withRule50(placement, 101 - dtz));
    EXPECT_EQ(tooLate.tbScore, 2);
    EXPECT_EQ(tooLate.ranks, late.ranks);
}

TEST_F(RootProbe, LeavesALostRootAloneWhileTheFiftyMoveRuleIsFar) {
    const std::string placement = "8/8/8/8/3k4/8/8/KR6 b - -";
    const Root far = filterRoot(withRule50(placement, 10));
    ASSERT_LT(far.dtz, -10);
    ASSERT_GT(far.dtz, -44);
    EXPECT_EQ(far.tbScore, -10000);
    EXPECT_EQ(static_cast<i32>(far.ranks.size()), far.before);
    i32 lowest = 0;
    for (const auto& [move, rank] : far.ranks) {
        lowest = std::min(lowest, rank);
    }
    const Root near = filterRoot(withRule50(placement, 100 + 2 * lowest));
    EXPECT_LT(near.ranks.size(), far.ranks.size());
    for (const auto& [move, rank] : near.ranks) {
        EXPECT_EQ(rank, lowest) << move;
    }
    EXPECT_EQ(filterRoot(withRule50(placement, 99 + 2 * lowest)).ranks, far.ranks);
    EXPECT_EQ(filterRoot(withRule50(placement, 100 + far.dtz)).tbScore, -10000);
    EXPECT_EQ(filterRoot(withRule50(placement, 101 + far.dtz)).tbScore, -2);
}

TEST_F(RootProbe, RanksAZeroingMoveByItsResult) {
    const Root root = filterRoot("8/P7/8/8/8/2k5/8/K7 w - - 0 1");
    EXPECT_EQ(root.ranks.at("a7a8q"), 1);
    EXPECT_EQ(root.ranks.at("a7a8r"), 1);
    EXPECT_EQ(root.ranks.count("a7a8n"), 0u);
    EXPECT_EQ(root.ranks.count("a7a8b"), 0u);
}

// ---- repetitions ----------------------------------------------------------------------------------------------

namespace {

// Plays `rounds` times to and fro, so that the position at the end stands for the (rounds + 1)th time.
void shuffle(i32 rounds) {
    for (i32 i = 0; i < rounds; ++i) {
        for (const char* move : {"b1b2", "d4d5", "b2b1", "d5d4"}) {
            ASSERT_EQ(parseUserMove(move), 1) << move;
        }
    }
}

bool fastestAlone(const Root& root) {
    return std::all_of(root.ranks.begin(), root.ranks.end(),
                       [&](const auto& entry) { return entry.second == root.ranks.begin()->second; });
}

}  // namespace

TEST_F(RootProbe, KeepsTheFastestMovesOnceThePositionStandsForTheFourthTime) {
    for (const i32 rounds : {0, 1, 2, 3, 4}) {
        SCOPED_TRACE(rounds);
        setUpPosition("8/8/8/8/3k4/8/8/KR6 w - - 0 1");
        shuffle(rounds);
        ASSERT_EQ(repetitionCount(*board), rounds);
        // with a count of 4 the record below, two moves back, has 3
        EXPECT_EQ(fastestAlone(filterRoot()), rounds >= 3);
    }
}

TEST_F(RootProbe, LooksForRepetitionsNoFurtherThanTheLastZeroingMove) {
    setUpPosition("8/8/8/8/3k4/8/8/KR6 w - - 0 1");
    shuffle(3);
    ASSERT_EQ(parseUserMove("b1b3"), 1);
    ASSERT_EQ(parseUserMove("d4e4"), 1);
    EXPECT_TRUE(fastestAlone(filterRoot()));
    board->rule50 = 0;
    EXPECT_FALSE(fastestAlone(filterRoot()));
}

// A FEN may bring a count of plies that no record stands for.
TEST_F(RootProbe, StopsAtTheFirstRecord) {
    setUpPosition("8/8/8/8/3k4/8/8/KR6 w - - 40 30");
    EXPECT_EQ(board, boardStack.data());
    EXPECT_EQ(filterRoot().result, 1);
    setUpPosition("8/8/8/8/3k4/8/8/KR6 w - - 255 200");
    EXPECT_EQ(filterRoot().tbScore, 2);
}
