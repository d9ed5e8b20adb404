// The two attack tests.
#include "board_support.h"
#include "support/test_data.h"

TEST(InCheck, IsEmptyInTheStartPosition) {
    setUpPosition("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
    EXPECT_EQ(inCheck(), 0U);
    EXPECT_EQ(leftInCheck(), 0U);
}

TEST(InCheck, HoldsEveryChecker) {
    setUpPosition("4k3/8/8/8/8/8/4q3/r3K3 w - - 0 1");
    EXPECT_EQ(inCheck(), squareBit(0) | squareBit(12));
    setUpPosition("4k3/8/8/8/8/3p1p2/3pkp2/4K3 w - - 0 1");
    EXPECT_EQ(inCheck(), squareBit(11) | squareBit(12) | squareBit(13)) << "the enemy king counts";
    setUpPosition("4k3/8/3n4/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(inCheck(), 0U);
    EXPECT_EQ(leftInCheck(), 0U);
    setUpPosition("4k3/8/8/8/8/3n4/8/4K3 w - - 0 1");
    EXPECT_EQ(inCheck(), squareBit(19));
}

TEST(LeftInCheck, HoldsTheMoversAttackers) {
    setUpPosition("4k3/3P4/8/8/8/8/4R3/4K3 w - - 0 1");
    EXPECT_EQ(leftInCheck(), squareBit(51) | squareBit(12));
    setUpPosition("7k/6P1/8/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(leftInCheck(), squareBit(54));
}

TEST(Checks, DoNotRunRoundTheBoardsEdge) {
    setUpPosition("8/8/8/8/7k/P7/8/K7 w - - 0 1");
    EXPECT_EQ(leftInCheck(), 0U);
    setUpPosition("8/8/8/7p/K7/8/8/7k w - - 0 1");
    EXPECT_EQ(inCheck(), 0U);
    setUpPosition("8/8/7p/K7/8/8/8/7k w - - 0 1");
    EXPECT_EQ(inCheck(), 0U);
}

TEST(Checks, AreEmptyWithoutAKing) {
    setUpPosition("q7/8/8/8/8/8/8/Q7 w - - 0 1");
    EXPECT_EQ(inCheck(), 0U);
    EXPECT_EQ(leftInCheck(), 0U);
}

// The shared sets of a node and the plain tests agree on every move of many positions.
#include "board/make_move.h"
TEST(NodeMoves, TryMoveIsMakeMoveAndLeftInCheck) {
    const std::vector<std::string> golden = linesOf(testDataPath("golden/moves.txt"));
    i32 moves = 0;
    i32 refused = 0;
    for (const std::string& line : golden) {
        if (line.substr(0, 4) != "fen ") {
            continue;
        }
        SCOPED_TRACE(line);
        setUpPosition(line.c_str() + 4);
        const NodeMoves shared = nodeMoves();
        EXPECT_EQ(shared.checkers, inCheck());
        MoveArray all;
        i32 count = 0;
        orderedMoves(all, count);
        for (i32 i = 0; i < count; ++i, ++moves) {
            SearchInfo.nodes = 0;
            makeMove(all[i]);
            const Scacchiera made = *board;
            const bool legal = leftInCheck() == 0;
            --board;
            ASSERT_EQ(tryMove(shared, all[i]), legal) << textOf(all[i]);
            EXPECT_EQ(SearchInfo.nodes, 2U);
            if (legal) {
                EXPECT_TRUE(sameRecord(*board, made));
                --board;
            } else {
                ++refused;
            }
        }
    }
    EXPECT_GT(moves, 2000);
    EXPECT_GT(refused, 50);
}
