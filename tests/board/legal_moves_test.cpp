// All moves of a position in one list, and the choice of the best capture.
#include "board_support.h"
#include "support/move_lists.h"

namespace {

using testing::ElementsAre;

TEST(PickBest, TakesTheFirstOfTheHighest) {
    MoveList list = captureList({{1, 5}, {2, 9}, {3, 9}, {4, -3}});
    std::vector<Mossa> picked;
    for (; list.count > 0; --list.count) {
        picked.push_back(pickBest(list));
    }
    EXPECT_THAT(picked, ElementsAre(2, 3, 1, 4));
}

TEST(PickBest, CopiesTheLastEntryAndLeavesTheCount) {
    MoveList list = captureList({{1, 9}, {2, 5}, {3, 7}});
    EXPECT_EQ(pickBest(list), 1U);
    EXPECT_EQ(list.count, 3);
    EXPECT_EQ(list.entries[0].move, 3U);
    EXPECT_EQ(list.entries[0].score, 7);
}

std::vector<std::string> textsOf(const MoveArray& moves, i32 count) {
    std::vector<std::string> result;
    for (i32 i = 0; i < count; ++i) {
        result.push_back(textOf(moves[i]));
    }
    return result;
}

TEST(OrderedMoves, AreCapturesByScoreThenQuietMovesInReverse) {
    newGame();
    ASSERT_EQ(fenToBoard("4k3/8/8/1p1q4/2P5/8/8/4K3 w - - 0 1"), 1);
    QuietList quiets;
    genQuiets(quiets);
    MoveArray moves;
    i32 count = 0;
    orderedMoves(moves, count);
    ASSERT_EQ(count, 2 + quiets.count);
    EXPECT_EQ(textOf(moves[0]), "c4d5");
    EXPECT_EQ(textOf(moves[1]), "c4b5");
    for (i32 i = 0; i < quiets.count; ++i) {
        EXPECT_EQ(moves[count - 1 - i], quiets.entries[i]);
    }
}

TEST(LegalMoves, KeepThatOrderWithoutTheIllegalOnes) {
    newGame();
    ASSERT_EQ(fenToBoard("4r1k1/8/8/1p1q4/2P5/8/4B3/4K3 w - - 0 1"), 1);  // the bishop is pinned
    MoveArray ordered;
    i32 orderedCount = 0;
    orderedMoves(ordered, orderedCount);
    std::vector<std::string> expected;
    for (i32 i = 0; i < orderedCount; ++i) {
        makeMove(ordered[i]);
        const bool legal = leftInCheck() == 0;
        --board;
        if (legal) {
            expected.push_back(textOf(ordered[i]));
        }
    }
    ASSERT_LT(expected.size(), static_cast<std::size_t>(orderedCount));

    MoveArray legal;
    i32 legalCount = 0;
    legalMoves(legal, legalCount);
    EXPECT_EQ(textsOf(legal, legalCount), expected);
}

}  // namespace
