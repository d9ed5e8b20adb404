// The driver: what it adds up, and what it leaves alone.
#include "eval_support.h"

TEST(Evaluate, IsTheScorePlusOwnTermsLessTheEnemys) {
    const BothPasses both =
        bothPasses("r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2QK2R w KQ - 4 8");
    const i32 attacks = hangingTerms(both.own, both.enemy) + kingSafetyTerm(both.own, both.enemy) -
                        hangingTerms(both.enemy, both.own) - kingSafetyTerm(both.enemy, both.own);
    EXPECT_EQ(freshValue(), board->psqScore + both.ownTerms - both.enemyTerms + attacks);
}

TEST(Evaluate, StartsFromTheKeptScoreInSixteenBits) {
    setUp("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
    const i32 value = freshValue();
    board->psqScore = 32767;
    EXPECT_EQ(freshValue(), i32{wrap16(value + 32767)});
    EXPECT_EQ(i32{board->psqScore}, 32767);
}

TEST(Evaluate, IsZeroInADeadDrawWhateverTheKeptScore) {
    setUp("8/8/8/8/4k3/8/8/KN6 w - - 0 1");
    board->psqScore = 500;
    EXPECT_EQ(i32{evaluate()}, 0);
}

TEST(Evaluate, DoesNotWriteTheBreakdownForTheConsole) {
    setUp("r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2QK2R w KQ - 4 8");
    evalTerms.fill(7);
    (void)evaluate();
    for (const i32 term : evalTerms) {
        EXPECT_EQ(term, 7);
    }
    evalTerms.fill(0);
}

// Boards that only text from outside can set up: a value comes out, nothing is read or written out of place.
constexpr const char* hostileBoards[] = {
    "8/8/8/8/8/8/8/8 w - - 0 1",
    "8/8/8/3q4/8/8/8/R7 w - - 0 1",
    "8/8/8/3q4/8/8/8/R3K3 w - - 0 1",
    "4k3/8/8/3q4/8/8/8/R7 b - - 0 1",
    "kkk5/8/8/3q4/8/8/5Q2/RKKK4 w - - 0 1",
    "QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ w - - 0 1",
    "QQQQQQQQ/qqqqqqqq/QQQQQQQQ/qqqqqqqq/KQQQQQQk/qqqqqqqq/QQQQQQQQ/qqqqqqqq b - - 0 1",
    "PPPPPPPP/PPPPPPPP/PPPPPPPP/PPPPPPPP/PPPPPPPP/PPPPPPPP/PPPPPPPP/PPPPPPPP w - - 0 1",
    "PPPPPPPP/pppppppp/PPPPPPPP/pppppppp/KPPPRPNk/pppppppp/PPPPBPPP/pppppppp b - - 0 1",
    "kkkkkkkk/kkkkkkkk/kkkkkkkk/kkkkkkkk/KKKKKKKK/KKKKKKKK/KKKKKKKK/KKKKKKKK w - - 0 1",
    "rrrrrrrr/rrrrrrrr/rrrrrrrr/NNNNNNNN/BBBBBBBB/RRRRRRRR/RRRRRRRR/RRRRRRRR w - - 0 1",
};

TEST(Evaluate, AnswersOnBoardsOfAnyKind) {
    for (const char* fen : hostileBoards) {
        setUp(fen);
        const Scacchiera before = *board;
        const i32 value = freshValue();
        EXPECT_EQ(i32{evaluate()}, value) << fen;  // a warm pawn hash says the same
        EXPECT_TRUE(sameRecord(*board, before)) << fen;
        (void)sufficientMaterial();
        buildAttackMaps();
    }
}
