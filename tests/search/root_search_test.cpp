// One search of the root list: what is written into list, line and table, and what is returned.
#include "search/internal.h"
#include "search/search_fixture.h"

#include <vector>

namespace {

constexpr const char* pawnTakesQueenFen = "4k3/8/8/3q4/4P3/8/8/4K3 w - - 0 1";

struct SearchedRoot {
    RootList list{};
    i32 count = 0;
};

SearchedRoot rootOf(const std::string& fen) {
    setUpFreshState(fen);
    SearchedRoot root;
    rootMoves(root.list, root.count);
    SearchInfo.nodes = 0;
    return root;
}

i16 run(SearchedRoot& root, i32 depth, i32 alpha, i32 beta, PvLine& line) {
    return rootSearch(root.list, root.count, depth, wrap16(alpha), wrap16(beta), line, MATE, 0);
}

TEST(RootSearch, EveryMoveGetsItsScoreAndTheBestItsLine) {
    SearchedRoot root = rootOf(pawnTakesQueenFen);
    PvLine line{};
    const i16 score = run(root, 2, -INFINITE, INFINITE, line);
    EXPECT_EQ(moveText(line.argmove[0]), "e4d5");
    EXPECT_EQ(line.argmove[0], root.list[0].move);
    EXPECT_EQ(root.list[0].score, score);
    for (i32 i = 1; i < root.count; ++i) {
        EXPECT_LE(root.list[i].score, score);
    }
    const ys_hash slot = slotHere();
    EXPECT_EQ(slot.bound, HASH_EXACT);
    EXPECT_EQ(slot.depth, 2);
    EXPECT_EQ(slot.value, score);
    EXPECT_EQ(slot.move, line.argmove[0]);
    EXPECT_EQ(board, boardStack.data());
}

TEST(RootSearch, AFailHighReturnsBetaAndLeavesTheRestAsItWas) {
    SearchedRoot root = rootOf(pawnTakesQueenFen);
    std::swap(root.list[0], root.list[1]);  // the capture second
    for (i32 i = 0; i < root.count; ++i) {
        root.list[i].score = 4321;
    }
    PvLine line{};
    const i32 beta = -200;
    EXPECT_EQ(run(root, 1, -INFINITE, beta, line), beta);
    EXPECT_NE(root.list[0].score, 4321);
    EXPECT_GE(root.list[1].score, beta);
    for (i32 i = 2; i < root.count; ++i) {
        EXPECT_EQ(root.list[i].score, 4321);
    }
    EXPECT_EQ(line.argmove[0], root.list[0].move) << "the line of the move that raised alpha before";
    EXPECT_EQ(slotHere().key, 0U);
}

TEST(RootSearch, AFailLowReturnsAlphaKeepsTheLineAndStoresItAsExact) {
    SearchedRoot root = rootOf(pawnTakesQueenFen);
    PvLine line{};
    line.count = 9;
    line.argmove[0] = 77;
    EXPECT_EQ(run(root, 3, 5000, 6000, line), 5000);
    EXPECT_EQ(line.count, 9);
    EXPECT_EQ(line.argmove[0], 77U);
    for (i32 i = 0; i < root.count; ++i) {
        EXPECT_LE(root.list[i].score, 5000);
    }
    const ys_hash slot = slotHere();
    EXPECT_EQ(slot.bound, HASH_EXACT);
    EXPECT_EQ(slot.value, 5000);
    EXPECT_EQ(slot.depth, 3);
    EXPECT_EQ(slot.move, 0U);
}

TEST(RootSearch, AnEmptyListIsMateOrStalemate) {
    PvLine line{};
    SearchedRoot mated = rootOf(foolsMateFen);
    ASSERT_EQ(mated.count, 0);
    EXPECT_EQ(run(mated, 5, -INFINITE, INFINITE, line), -MATE);
    EXPECT_EQ(slotHere().key, 0U);
    SearchedRoot stalemated = rootOf("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1");
    ASSERT_EQ(stalemated.count, 0);
    EXPECT_EQ(run(stalemated, 5, -INFINITE, INFINITE, line), 0);
    EXPECT_EQ(slotHere().bound, HASH_EXACT);
    EXPECT_EQ(slotHere().depth, 5);
}

TEST(RootSearch, MatingWithTheFirstMoveScoresOneLessThanMate) {
    SearchedRoot root = rootOf("6k1/5ppp/8/8/8/8/8/K3R3 w - - 0 1");
    PvLine line{};
    EXPECT_EQ(run(root, 2, -INFINITE, INFINITE, line), 19999);
    EXPECT_EQ(moveText(line.argmove[0]), "e1e8");
}

TEST(RootSearch, AnIllegalEntryIsPassedOver) {
    SearchedRoot root = rootOf("4r1k1/8/8/8/8/8/4B3/4K3 w - - 0 1");
    root.list[root.count++] = {makeMossa(MOVE_BISHOP, 12, 19), 0, 4321};  // the bishop is pinned
    PvLine line{};
    run(root, 1, -INFINITE, INFINITE, line);
    EXPECT_EQ(root.list[root.count - 1].score, 4321);
    EXPECT_EQ(board, boardStack.data());
}

TEST(RootSearch, ADepthBelowOneSearchesLikeOne) {
    for (const i32 depth : {0, -3, -32768}) {
        SCOPED_TRACE(depth);
        PvLine line{};
        SearchedRoot one = rootOf(pawnTakesQueenFen);
        const i16 expected = run(one, 1, -INFINITE, INFINITE, line);
        SearchedRoot root = rootOf(pawnTakesQueenFen);
        EXPECT_EQ(run(root, depth, -INFINITE, INFINITE, line), expected);
    }
}

}  // namespace
