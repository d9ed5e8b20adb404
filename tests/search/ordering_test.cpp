// List operations of the search: selection, dropping, killers, the history pass, the test of a hash move, the root list
// and its sorts.
#include "search/ordering.h"

#include "frontend/session.h"
#include "search/search_fixture.h"
#include "support/move_lists.h"

#include <gmock/gmock.h>

#include <random>
#include <vector>

namespace {

using testing::ElementsAre;

std::vector<Mossa> movesOf(const QuietList& list) {
    return {list.entries.begin(), list.entries.begin() + list.count};
}

// A knight move from b1 to `to`, to tell moves apart.
constexpr Mossa quiet(i32 to) {
    return makeMossa(MOVE_KNIGHT, 1, to);
}

class Ordering : public testing::Test {
  protected:
    void SetUp() override {
        newGame();
        historyTable = {};
        killers = {};
    }
};

// ---- captures -------------------------------------------------------------------------------------------------

TEST_F(Ordering, DroppingACaptureGivesItsScoreToTheLastMove) {
    MoveList list = captureList({{1, 10}, {2, 20}, {3, 30}});
    EXPECT_EQ(dropFromCaptures(1, list), 1);
    ASSERT_EQ(list.count, 2);
    EXPECT_EQ(list.entries[0].move, 3U);
    EXPECT_EQ(list.entries[0].score, 10);
    EXPECT_EQ(dropFromCaptures(7, list), 0);
    EXPECT_EQ(list.count, 2);
}

TEST_F(Ordering, DroppingTheLastCaptureOnlyShortensTheList) {
    MoveList list = captureList({{1, 10}, {2, 20}});
    EXPECT_EQ(dropFromCaptures(2, list), 1);
    ASSERT_EQ(list.count, 1);
    EXPECT_EQ(list.entries[0].move, 1U);
    MoveList empty = captureList({});
    EXPECT_EQ(dropFromCaptures(1, empty), 0);
}

// ---- quiet moves ----------------------------------------------------------------------------------------------

TEST_F(Ordering, DroppingAQuietMovePutsTheLastInItsPlace) {
    QuietList list = quietList({1, 2, 3});
    EXPECT_EQ(dropFromQuiets(1, list), 1);
    EXPECT_THAT(movesOf(list), ElementsAre(3, 2));
    EXPECT_EQ(dropFromQuiets(9, list), 0);
    EXPECT_THAT(movesOf(list), ElementsAre(3, 2));
}

TEST_F(Ordering, TheKillerAtTheLowerIndexComesFirst) {
    QuietList list = quietList({10, 11, 12, 13, 14, 15, 16});
    killers[3] = {15, 12};
    EXPECT_EQ(killerToEnd(3, list), 1);
    EXPECT_THAT(movesOf(list), ElementsAre(10, 11, 16, 13, 14, 15, 12));
    --list.count;
    EXPECT_EQ(killerToEnd(3, list), 1);
    EXPECT_EQ(list.entries[list.count - 1], 15U);
}

TEST_F(Ordering, KillersThatAreNotInTheListAreNoMoves) {
    QuietList list = quietList({10, 11});
    killers[0] = {12, 13};
    EXPECT_EQ(killerToEnd(0, list), 0);
    EXPECT_THAT(movesOf(list), ElementsAre(10, 11));
    QuietList empty = quietList({});
    EXPECT_EQ(killerToEnd(0, empty), 0);
}

TEST_F(Ordering, ASavedKillerPushesTheNewerToTheOlderPlace) {
    saveKiller(5, 10);
    saveKiller(5, 10);
    EXPECT_THAT(killers[5], ElementsAre(10, 0));
    saveKiller(5, 11);
    EXPECT_THAT(killers[5], ElementsAre(11, 10));
    saveKiller(5, 10);
    EXPECT_THAT(killers[5], ElementsAre(10, 11));
    EXPECT_THAT(killers[4], ElementsAre(0, 0));
}

struct HistoryCase {
    const char* name;
    std::vector<i32> histories;  // of the entries in list order
    std::vector<i32> expected;   // of the entries after the pass
};

const HistoryCase historyCases[] = {
    {"none", {0, 0, 0}, {0, 0, 0}},
    {"a history of 1 is not moved", {1, 0, 1}, {1, 0, 1}},
    {"the pass misses the highest", {50, 10, 20, 5}, {5, 50, 20, 10}},
    {"the threshold falls to that of the move just gone", {2, 3, 0}, {0, 2, 3}},
    {"the last alone", {0, 0, 9}, {0, 0, 9}},
    {"one entry", {7}, {7}},
    {"empty", {}, {}},
};

TEST_F(Ordering, TheHistoryPassIsOneForwardPass) {
    for (const HistoryCase& c : historyCases) {
        SCOPED_TRACE(c.name);
        historyTable = {};
        std::vector<Mossa> moves;
        for (std::size_t i = 0; i < c.histories.size(); ++i) {
            const i32 to = static_cast<i32>(i);
            moves.push_back(quiet(to));
            historyTable[0][1][to] = c.histories[i];
        }
        QuietList list = quietList(moves);
        historyToEnd(list);
        std::vector<i32> after;
        for (const Mossa move : movesOf(list)) {
            after.push_back(historyTable[0][1][moveTo(move)]);
        }
        EXPECT_EQ(after, c.expected);
    }
}

TEST_F(Ordering, TheHistoryIsThatOfTheSideToMove) {
    ASSERT_EQ(fenToBoard("4k3/8/8/8/8/8/8/4K3 b - - 0 1"), 1);
    historyTable[0][1][20] = 100;
    historyTable[1][1][21] = 100;
    QuietList list = quietList({quiet(20), quiet(21), quiet(22)});
    historyToEnd(list);
    EXPECT_EQ(list.entries[2], quiet(21));
}

// ---- hash moves -----------------------------------------------------------------------------------------------

struct LegalityCase {
    const char* name;
    const char* fen;
    Mossa move;
    bool expected;
};

constexpr const char* rooksFen = "r3k2r/8/8/3pP3/1b6/2N5/P7/R3K2R w KQkq d6 0 1";

constexpr LegalityCase legalityCases[] = {
    {"empty from", rooksFen, makeMossa(MOVE_ROOK, 1, 2), false},
    {"rook move without a rook", rooksFen, makeMossa(MOVE_ROOK, 18, 26), false},
    {"rook move of an enemy's rook", rooksFen, makeMossa(MOVE_ROOK, 56, 57), false},
    {"rook move", rooksFen, makeMossa(MOVE_ROOK, 0, 1), true},
    {"rook move through a man", rooksFen, makeMossa(MOVE_ROOK, 0, 16), true},
    {"rook move that no rook makes", rooksFen, makeMossa(MOVE_ROOK, 0, 9), true},
    {"quiet move onto a man", rooksFen, makeMossa(MOVE_ROOK, 0, 56), false},
    {"capture", rooksFen, makeMossa(CAPT_ROOK, 0, 56), true},
    {"capture of nothing", rooksFen, makeMossa(CAPT_ROOK, 0, 1), false},
    {"capture of an own man", rooksFen, makeMossa(CAPT_ROOK, 0, 8), false},
    {"capture of the king", rooksFen, makeMossa(CAPT_ROOK, 7, 60), false},
    {"pawn takes the king", "3k4/2P5/8/8/8/8/8/4K3 w - - 0 1", makeMossa(PROMO_CAPT, 50, 59, QUEEN), false},
    {"knight move", rooksFen, makeMossa(MOVE_KNIGHT, 18, 1), true},
    {"knight takes", rooksFen, makeMossa(CAPT_KNIGHT, 18, 35), true},
    {"bishop kind for a knight", rooksFen, makeMossa(MOVE_BISHOP, 18, 27), false},
    {"king move", rooksFen, makeMossa(MOVE_KING, 4, 12), true},
    {"short castling", rooksFen, makeMossa(CASTLE_SHORT, 4, 6), true},
    {"long castling", rooksFen, makeMossa(CASTLE_LONG, 4, 2), true},
    {"short castling without the right", "4k3/8/8/8/8/8/8/4K2R w - - 0 1", makeMossa(CASTLE_SHORT, 4, 6),
     false},
    {"long castling with the other right", "4k3/8/8/8/8/8/8/R3K2R w K - 0 1", makeMossa(CASTLE_LONG, 4, 2),
     false},
    {"castling onto a man", "4k3/8/8/8/8/8/8/4K1NR w K - 0 1", makeMossa(CASTLE_SHORT, 4, 6), false},
    {"en passant", rooksFen, makeMossa(EN_PASSANT, 36, 43), true},
    {"en passant on another file", rooksFen, makeMossa(EN_PASSANT, 36, 45), false},
    {"en passant without the right", "4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1", makeMossa(EN_PASSANT, 36, 43),
     false},
    {"en passant of no pawn", "4k3/8/8/3nP3/8/8/8/4K3 w - d6 0 1", makeMossa(EN_PASSANT, 36, 43), false},
    {"pawn move", rooksFen, makeMossa(MOVE_PAWN, 8, 24), true},
    {"pawn move of a rook", rooksFen, makeMossa(MOVE_PAWN, 0, 1), false},
    {"promotion", "4k3/2P5/8/8/8/8/8/4K3 w - - 0 1", makeMossa(PROMO, 50, 58, QUEEN), true},
    {"promotion onto a man", "2n1k3/2P5/8/8/8/8/8/4K3 w - - 0 1", makeMossa(PROMO, 50, 58, QUEEN), false},
    {"no kind", rooksFen, makeMossa(0, 0, 1), false},
    {"kind 7", rooksFen, makeMossa(7, 0, 1), false},
    {"kind 20, a rook's code with a promotion's bit", rooksFen, makeMossa(20, 0, 1), false},
    {"kind 42", rooksFen, makeMossa(42, 18, 1), false},
};

TEST_F(Ordering, AHashMoveMustSuitTheMenOnItsSquares) {
    for (const LegalityCase& c : legalityCases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(fenToBoard(c.fen), 1);
        EXPECT_EQ(isPseudoLegal(c.move), c.expected);
    }
}

// ---- lists of a whole position --------------------------------------------------------------------------------

TEST_F(Ordering, RootMovesAreTheLegalOnesAndLeaveTheOtherWords) {
    ASSERT_EQ(fenToBoard("4r1k1/8/8/1p1q4/2P5/8/4B3/4K3 w - - 0 1"), 1);  // the bishop is pinned
    MoveArray legal;
    i32 legalCount = 0;
    legalMoves(legal, legalCount);
    RootList root{};
    for (RootMove& entry : root) {
        entry.tbRank = 7;
    }
    i32 rootCount = 0;
    rootMoves(root, rootCount);
    ASSERT_EQ(rootCount, legalCount);
    for (i32 i = 0; i < rootCount; ++i) {
        EXPECT_EQ(root[i].move, legal[i]);
        EXPECT_EQ(root[i].tbRank, 7);
    }
}

TEST_F(Ordering, ThePositionOfMostMovesFitsTheRootList) {
    ASSERT_EQ(fenToBoard("R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - - 0 1"), 1);
    RootList root{};
    i32 count = 0;
    rootMoves(root, count);
    EXPECT_EQ(count, 218);
}

// ---- sorts ----------------------------------------------------------------------------------------------------

RootList rootList(const std::vector<i32>& keys) {
    RootList list{};
    for (std::size_t i = 0; i < keys.size(); ++i) {
        list[i] = {static_cast<u32>(i + 1), keys[i], keys[i]};
    }
    return list;
}

std::vector<u32> movesOf(const RootList& list, std::size_t count) {
    std::vector<u32> moves;
    for (std::size_t i = 0; i < count; ++i) {
        moves.push_back(list[i].move);
    }
    return moves;
}

TEST_F(Ordering, SortsOfNothingAndOfOneEntryReturnAtOnce) {
    RootList list = rootList({3, 1, 2});
    sortByScore(list, 0, -1);
    sortByScore(list, 2, 2);
    sortByTbRank(list, 0, 0);
    EXPECT_THAT(movesOf(list, 3), ElementsAre(1, 2, 3));
}

// Worked by hand: equal keys go to the right of the pivot and end in the order that the swaps give.
TEST_F(Ordering, EqualScoresEndInTheOrderOfTheSwaps) {
    RootList list = rootList({5, 5, 5});
    sortByScore(list, 0, 2);
    EXPECT_THAT(movesOf(list, 3), ElementsAre(1, 3, 2));

    list = rootList({1, 9, 1, 9});
    sortByScore(list, 0, 3);
    EXPECT_THAT(movesOf(list, 4), ElementsAre(4, 2, 1, 3));

    list = rootList({0, -5, 0, -5});
    sortByTbRank(list, 0, 3);
    EXPECT_THAT(movesOf(list, 4), ElementsAre(4, 2, 1, 3));
}

TEST_F(Ordering, SortsOrderTheirRangeAndLeaveTheRest) {
    std::mt19937 random(7);
    for (i32 round = 0; round < 200; ++round) {
        std::vector<i32> keys(60);
        for (i32& key : keys) {
            key = static_cast<i32>(random() % 40) - 20;
        }
        RootList list = rootList(keys);
        const i32 first = static_cast<i32>(random() % 20);
        const i32 last = 30 + static_cast<i32>(random() % 29);
        const bool byScore = round % 2 == 0;
        if (byScore) {
            sortByScore(list, first, last);
        } else {
            sortByTbRank(list, first, last);
        }
        for (i32 i = first + 1; i <= last; ++i) {
            const i32 fall = list[i - 1].score - list[i].score;  // both keys are the same number here
            EXPECT_GE(byScore ? fall : -fall, 0);
        }
        std::vector<bool> seen(61);
        for (i32 i = 0; i < 60; ++i) {
            EXPECT_FALSE(seen[list[i].move]);
            seen[list[i].move] = true;
            EXPECT_EQ(list[i].score, keys[list[i].move - 1]);
            if (i < first || i > last) {
                EXPECT_EQ(list[i].move, static_cast<u32>(i + 1));
            }
        }
    }
}

}  // namespace
