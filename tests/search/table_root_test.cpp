// What think does where the tables know the root: it leaves moves out, sorts the rest by rank, probes no more and shows
// the better of both scores. Each search is done again here step by step from the root list as it should be, and must
// have the same nodes; a list or a limit that is not so gives others.
#include "search/internal.h"
#include "search/search.h"
#include "search/search_fixture.h"
#include "support/test_data.h"
#include "tablebase/tablebase.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>
#include <vector>

namespace {

constexpr i32 lastDepth = 5;

struct Iteration {
    i32 depth;
    i32 score;
    u32 nodes;
    bool operator==(const Iteration&) const = default;
};
using Iterations = std::vector<Iteration>;

void PrintTo(const Iteration& iteration, std::ostream* out) {
    *out << iteration.depth << " " << iteration.score << " " << iteration.nodes;
}

// How the steps after the probe are to be done.
struct Plan {
    bool leavesOut = true;
    bool sorts = true;
    bool probesOn = false;
    bool showsTables = true;
};

class TableRoot : public testing::Test {
  protected:
    void SetUp() override { registerTables(testDataPath("syzygy").c_str()); }
    void TearDown() override { registerTables("no such folder"); }

    static void registerTables(const char* path) {
        testing::internal::CaptureStdout();
        tbInit(path);
        testing::internal::GetCapturedStdout();
    }
};

void setUpWithTables(const char* fen) {
    setUpFreshState(fen);
    EngineOptions.syzygy = 1;
    EngineOptions.maxDepth = lastDepth;
}

Iterations thinkAt(const char* fen) {
    setUpWithTables(fen);
    testing::internal::CaptureStdout();
    static_cast<void>(think(0));
    std::istringstream output(testing::internal::GetCapturedStdout());
    Iterations found;
    for (std::string line; std::getline(output, line);) {
        std::istringstream fields(line);
        Iteration iteration{};
        i32 centiseconds = 0;
        if (fields >> iteration.depth >> iteration.score >> centiseconds >> iteration.nodes) {
            found.push_back(iteration);
        }
    }
    return found;
}

struct Root {
    RootList list{};
    i32 generated = 0;
    i32 count = 0;
    i32 tbScore = 0;
};

Root probedRoot(const Plan& plan) {
    Root root;
    rootMoves(root.list, root.generated);
    const RootList all = root.list;
    root.count = root.generated;
    i32 dtz = 0;
    EXPECT_EQ(rootProbe(root.list, root.count, root.tbScore, dtz), 1);
    if (!plan.leavesOut) {
        root.list = all;
        root.count = root.generated;
    }
    if (plan.sorts) {
        sortByTbRank(root.list, 0, root.count - 1);
    }
    return root;
}

Iterations searchAt(const char* fen, const Plan& plan) {
    setUpWithTables(fen);
    Root root = probedRoot(plan);
    gs_lineH = {};
    searchCeiling = board + searchRecordsMax;
    Iterations found;
    i16 alpha = -INFINITE;
    i16 beta = INFINITE;
    for (i32 depth = 1; depth <= lastDepth;) {
        SearchInfo.nodes = 0;
        killers = {};
        const i16 tbMen = plan.probesOn ? wrap16(EngineOptions.syzygyMen) : i16{0};
        const i16 score = rootSearch(root.list, root.count, depth, alpha, beta, gs_lineH, MATE, tbMen);
        found.push_back(
            {depth, plan.showsTables ? std::max<i32>(score, root.tbScore) : score, SearchInfo.nodes});
        const bool failed = score <= alpha || score >= beta;
        alpha = failed ? i16{-INFINITE} : wrap16(score - 50);
        beta = failed ? i16{INFINITE} : wrap16(score + 50);
        depth += failed ? 0 : 1;
    }
    return found;
}

struct RootCase {
    const char* name;
    const char* fen;
    i32 tbScore;
    i32 generated;
    i32 kept;
};

constexpr RootCase rootCases[] = {
    {"won", "8/8/8/8/3k4/8/8/KR6 w - - 0 1", 10000, 15, 15},
    {"won, with hardly time left by the rule", "7k/8/6K1/8/8/8/8/R7 w - - 94 1", 10000, 20, 17},
    {"a win that the fifty-move rule spoils", "8/8/8/8/3k4/8/8/KR6 w - - 90 1", 2, 15, 2},
    {"lost", "8/8/8/8/8/2k5/8/K1R5 b - - 0 1", -10000, 5, 5},
    {"drawn, most moves hold", "8/8/8/8/8/1k6/1r6/K1R5 w - - 0 1", 0, 13, 12},
    {"drawn, the opposition alone holds", "8/8/3k4/8/3PK3/8/8/8 b - - 0 1", 0, 5, 1},
};

TEST_F(TableRoot, TheSearchIsThatOfTheMovesThatKeepTheResultByRankWithoutProbes) {
    for (const RootCase& c : rootCases) {
        SCOPED_TRACE(c.name);
        setUpWithTables(c.fen);
        const Root root = probedRoot({});
        EXPECT_EQ(root.tbScore, c.tbScore);
        EXPECT_EQ(root.generated, c.generated);
        EXPECT_EQ(root.count, c.kept);
        EXPECT_EQ(thinkAt(c.fen), searchAt(c.fen, {}));
    }
}

TEST_F(TableRoot, TheBetterOfBothScoresIsShown) {
    for (const Iteration& iteration : thinkAt(rootCases[0].fen)) {
        EXPECT_EQ(iteration.score, 10000);
    }
    for (const Iteration& iteration : thinkAt(rootCases[3].fen)) {
        EXPECT_GT(iteration.score, -10000) << "a lost root is not shown as such";
        EXPECT_LT(iteration.score, 0);
    }
}

TEST_F(TableRoot, TheMoveComesFromTheListThatIsLeft) {
    setUpWithTables(rootCases[5].fen);
    testing::internal::CaptureStdout();
    const Mossa move = think(0);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(moveText(move), "d6e6");
}

// The comparisons above see each of the steps.
TEST_F(TableRoot, EachStepMakesADifference) {
    const auto differ = [](const Plan& plan) {
        return std::count_if(std::begin(rootCases), std::end(rootCases),
                             [&plan](const RootCase& c) { return thinkAt(c.fen) != searchAt(c.fen, plan); });
    };
    EXPECT_GT(differ({.leavesOut = false}), 0);
    EXPECT_GT(differ({.sorts = false}), 0);
    EXPECT_GT(differ({.probesOn = true}), 0);
    EXPECT_GT(differ({.showsTables = false}), 0);
}

TEST_F(TableRoot, MoreMenThanAskedForAreNotProbed) {
    setUpWithTables(rootCases[0].fen);
    EngineOptions.syzygyMen = 2;
    testing::internal::CaptureStdout();
    static_cast<void>(think(0));
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::Not(testing::HasSubstr(" 10000 ")));
}

// A node of the tree, asked for at most so many men.
u64 hitsAtNode(i16 menAsked, i16& score) {
    setUpWithTables(rootCases[0].fen);
    searchCeiling = board + searchRecordsMax;
    tableHits = 0;
    PvLine line{};
    score = search(2, 0, -INFINITE, INFINITE, line, MATE, 0, 0, menAsked);
    return tableHits;
}

TEST_F(TableRoot, ANodeIsProbedIfItHasNoMoreMenThanAskedFor) {
    i16 score = 0;
    EXPECT_EQ(hitsAtNode(3, score), 1U);
    EXPECT_EQ(score, TB_WIN);
    EXPECT_EQ(hitsAtNode(2, score), 0U);
    EXPECT_LT(score, TB_WIN);
}

}  // namespace
