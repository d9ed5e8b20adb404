// What a think tells the program around it.
#include "frontend/thinking_output.h"

#include "search/search.h"
#include "search/search_fixture.h"

#include <vector>

namespace {

// An attempt without its time, and its line's first move.
struct Attempt {
    i32 depth;
    i32 score;
    AttemptEnd end;
    u32 nodes;
    u64 nodesOfThink;
    u64 tableHits;
    Mossa best;
};

struct News {
    std::vector<Attempt> attempts;
    std::vector<Mossa> onlyMoves;
    std::vector<i32> matesIn;
    std::vector<i32> matedIn;
    std::vector<i32> rootMoves;  // the numbers told
    i32 rootCount = 0;
};
News news;

constexpr ThinkingSink collectingSink{
    .attempt =
        [](const ThinkingAttempt& a) {
            news.attempts.push_back(
                {a.depth, a.score, a.end, a.nodes, a.nodesOfThink, a.tableHits, a.line.argmove[0]});
            EXPECT_GE(a.milliseconds, 0);
            EXPECT_EQ(&a.line, &gs_lineH);
        },
    .onlyMove = [](const PvLine& line) { news.onlyMoves.push_back(line.argmove[0]); },
    .mateIn = [](i32 moves) { news.matesIn.push_back(moves); },
    .matedIn = [](i32 moves) { news.matedIn.push_back(moves); },
    .rootMove =
        [](Mossa, i32 number, i32 count) {
            news.rootMoves.push_back(number);
            news.rootCount = count;
        },
    .budget = [](i32, i32, i32) {},
};

class ThinkingNews : public testing::Test {
  protected:
    void SetUp() override {
        news = {};
        thinkingSink = collectingSink;
    }
    void TearDown() override { thinkingSink = former; }

    ThinkingSink former = thinkingSink;
};

TEST_F(ThinkingNews, EachAttemptIsToldWithItsNodesAndTheSum) {
    setUpFreshState("r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq - 4 4");
    EngineOptions.maxDepth = 5;
    EngineOptions.postThinking = 0;  // whoever shows the news asks for it
    const Mossa best = think(0);
    ASSERT_GE(news.attempts.size(), 5U);
    u64 sum = 0;
    for (const Attempt& attempt : news.attempts) {
        sum += attempt.nodes;
        EXPECT_EQ(attempt.nodesOfThink, sum);
        EXPECT_EQ(attempt.tableHits, 0U);
    }
    EXPECT_EQ(news.attempts.back().depth, 5);
    EXPECT_EQ(news.attempts.back().best, best);
    EXPECT_EQ(news.attempts.back().nodes, SearchInfo.nodes);
}

TEST_F(ThinkingNews, AFailedAttemptIsABoundAndItsDepthComesAgain) {
    setUpFreshState("8/6k1/3pP3/pP6/8/2K5/8/n7 w - - 2 42");
    EngineOptions.maxDepth = 12;
    static_cast<void>(think(0));
    i32 failed = 0;
    for (std::size_t i = 0; i + 1 < news.attempts.size(); ++i) {
        const bool again = news.attempts[i + 1].depth == news.attempts[i].depth;
        EXPECT_EQ(news.attempts[i].end != AttemptEnd::exact, again);
        failed += again ? 1 : 0;
    }
    EXPECT_GT(failed, 0);
}

TEST_F(ThinkingNews, RootMovesAreNumberedFromOneInEachAttempt) {
    setUpFreshState("4k3/8/8/8/8/8/4P3/4K3 w - - 0 1");
    EngineOptions.maxDepth = 1;
    static_cast<void>(think(0));
    EXPECT_EQ(news.rootCount, 6);
    EXPECT_EQ(news.rootMoves, (std::vector<i32>{1, 2, 3, 4, 5, 6}));
}

TEST_F(ThinkingNews, AnOnlyMoveIsToldWithoutAnAttempt) {
    setUpFreshState("6k1/8/8/2B5/8/8/6PP/r6K w - - 0 1");
    const Mossa move = think(0);
    EXPECT_EQ(news.onlyMoves, std::vector<Mossa>{move});
    EXPECT_TRUE(news.attempts.empty());
    EXPECT_TRUE(news.rootMoves.empty());
}

TEST_F(ThinkingNews, MatesAreToldInMoves) {
    setUpFreshState("6k1/5ppp/8/8/8/8/8/K3R3 w - - 0 1");
    EngineOptions.maxDepth = 3;
    static_cast<void>(think(0));
    ASSERT_FALSE(news.matesIn.empty());
    EXPECT_EQ(news.matesIn.back(), 1);
    setUpFreshState("rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3");
    EngineOptions.maxDepth = 1;
    static_cast<void>(think(0));
    EXPECT_EQ(news.matedIn, std::vector<i32>{0});
}

TEST_F(ThinkingNews, AStoppedAttemptIsNotTold) {
    setUpFreshState("r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq - 4 4");
    EngineOptions.stopSearch = 1;
    EXPECT_EQ(think(0), 0U);
    EXPECT_TRUE(news.attempts.empty());
}

}  // namespace
