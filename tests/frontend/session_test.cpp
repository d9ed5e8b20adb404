// The start of a game.
#include "frontend/session.h"

#include "frontend_support.h"

TEST(Session, ANewGameLeavesTheScoreOfTheRecord) {
    newGame();
    ASSERT_EQ(fenToBoard("4k3/8/8/8/8/8/8/QQQQK3 w - - 0 1"), 1);
    const i16 score = board->psqScore;
    ASSERT_NE(score, 0);
    TimeControl.moveNumber = 12;
    newGame();
    EXPECT_EQ(board->psqScore, score) << "deliberate";
    EXPECT_EQ(TimeControl.moveNumber, 0);
    board->psqScore = 0;
}
