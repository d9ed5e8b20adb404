// The search at the horizon: its exits, which moves it tries, and the clock test.
#include "eval/eval.h"
#include "search/internal.h"
#include "search/search_fixture.h"
#include "support/position.h"

#include <algorithm>

namespace {

constexpr i16 wide = INFINITE;

// In every position below the first level tries no move unless the test says so.
i16 settle(i16 qDepth, i32 alpha, i32 beta) {
    return quiescence(qDepth, wrap16(alpha), wrap16(beta), MATE, 0);
}

// A king's danger is high here: an evaluation sets kingDanger.
constexpr const char* dangerFen = "5rk1/2p4p/2p4r/3P4/4p1b1/1Q2NqPp/PP3P1K/R4R2 b - - 0 1";

bool evaluated() {
    return EngineOptions.kingDanger != 0;
}

// ---- exits ----------------------------------------------------------------------------------------------------

struct LazyCase {
    const char* name;
    i32 alphaOverBalance;
    i32 betaOverBalance;
    bool leaves;
};

constexpr LazyCase lazyCases[] = {
    {"balance 500 above beta", -10000, -500, true},  {"balance 499 above beta", -10000, -499, false},
    {"balance 500 below alpha", 500, 10000, true},   {"balance 499 below alpha", 499, 10000, false},
    {"balance 1000 above beta", -2000, -1000, true},
};

TEST(Quiescence, TheLazyExitReturnsTheBalanceUnclippedAndDoesNotEvaluate) {
    for (const LazyCase& c : lazyCases) {
        SCOPED_TRACE(c.name);
        setUpFreshState(dangerFen);
        const i32 balance = board->psqScore;
        const i16 value = settle(-9, balance + c.alphaOverBalance, balance + c.betaOverBalance);
        EXPECT_EQ(evaluated(), !c.leaves);
        if (c.leaves) {
            EXPECT_EQ(value, balance);
        }
    }
}

TEST(Quiescence, InCheckThereIsNoLazyExit) {
    setUpFreshState("4k3/8/8/8/8/8/1Q2Q3/4K2r w - - 0 1");
    ASSERT_NE(inCheck(), 0U);
    const i32 balance = board->psqScore;
    const i32 standPat = evaluate();
    ASSERT_NE(standPat, balance);
    EXPECT_EQ(settle(0, balance - 2000, balance - 1000), standPat);
    EXPECT_GT(SearchInfo.nodes, 0U);
}

TEST(Quiescence, AStandPatAtBetaReturnsBeta) {
    setUpFreshState("4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1");
    const i32 standPat = evaluate();
    EXPECT_EQ(settle(0, -wide, standPat), standPat);
    EXPECT_EQ(settle(0, -wide, standPat - 10), standPat - 10);
    EXPECT_EQ(SearchInfo.nodes, 0U);
    settle(0, -wide, standPat + 1);
    EXPECT_GT(SearchInfo.nodes, 0U);
}

// The evaluation lies far below the balance here, so that the test of the whole board is reached at all.
TEST(Quiescence, BeyondAThousandBelowAlphaNoCaptureIsTried) {
    constexpr const char* fen = "7K/k7/8/3p4/2P5/1p6/2ppppp1/8 w - - 0 1";
    setUpFreshState(fen);
    const i32 standPat = evaluate();
    ASSERT_GT(board->psqScore + 499, standPat + 1001);
    EXPECT_EQ(settle(-2, standPat + 1001, wide), standPat + 1001);
    EXPECT_EQ(SearchInfo.nodes, 0U);
    EXPECT_EQ(settle(-2, standPat + 1000, wide), standPat + 1000);
    EXPECT_GT(SearchInfo.nodes, 0U);
}

TEST(Quiescence, AMateGivesNoMateScore) {
    setUpFreshState(foolsMateFen);
    const i32 standPat = evaluate();
    EXPECT_EQ(settle(0, -wide, wide), standPat);
    EXPECT_EQ(settle(0, standPat + 30, wide), standPat + 30);
}

TEST(Quiescence, TheSideInCheckMayStandPat) {
    setUpFreshState("6k1/8/8/8/8/5n2/PPP5/6K1 w - - 0 1");  // whatever it does, the pawns are lost one by one
    ASSERT_NE(inCheck(), 0U);
    const i32 standPat = evaluate();
    EXPECT_GE(settle(-2, -wide, wide), standPat);
    EXPECT_EQ(settle(-2, -wide, standPat), standPat) << "no move is above it";
}

// ---- which moves are tried ------------------------------------------------------------------------------------

// The record above the present one is that of the last move tried; an exchange leaves a record with the old key there.
bool lastWasMade() {
    return board[1].hashKey != board->hashKey;
}

TEST(Quiescence, ALosingCaptureIsSkippedUnlessInCheck) {
    setUpFreshState("4k3/8/2p5/3p4/8/4N3/8/4K3 w - - 0 1");
    ASSERT_NE(seeIsLosing(findMove("e3d5")), 0);
    SearchInfo.nodes = 0;
    settle(0, -wide, wide);
    EXPECT_EQ(SearchInfo.nodes, 1U) << "the exchange alone";

    setUpFreshState("6k1/8/8/8/6p1/5n2/8/3Q2K1 w - - 0 1");
    ASSERT_NE(inCheck(), 0U);
    ASSERT_NE(seeIsLosing(findMove("d1f3")), 0);
    settle(-2, -wide, wide);
    EXPECT_TRUE(lastWasMade());
    EXPECT_EQ(knights(board[1]), 0U) << "the knight was taken last";
}

TEST(Quiescence, APoorPromotionMeetsTheExchangeTestAlone) {
    setUpFreshState("3rk3/P7/8/8/8/8/3PPP2/4K3 w - - 0 1");
    ASSERT_NE(seeIsLosing(findMove("a7a8q")), 0);
    SearchInfo.nodes = 0;
    board[1] = *board;
    settle(-3, -wide, wide);
    EXPECT_EQ(SearchInfo.nodes, 4U) << "one exchange for each piece, and no other";
    EXPECT_FALSE(lastWasMade());

    // In check there is no exchange test, so the promotion between rook and king is tried: it passes the delta test.
    setUpFreshState("1r5K/3P4/8/8/8/8/3PPP2/k7 w - - 0 1");
    ASSERT_NE(inCheck(), 0U);
    ASSERT_LT(see(findMove("d7d8q")), -50);
    settle(-3, -wide, wide);
    EXPECT_EQ(popCount(pawns(board[1])), 3) << "the pawn of the last move tried is gone";
}

TEST(Quiescence, TheDeltaTestNeedsMoreThanFourMen) {
    const struct {
        const char* name;
        const char* fen;
        i16 qDepth;
        bool tried;
    } cases[] = {
        {"five men", "4k3/8/8/3p4/4P3/8/PPP5/4K3 w - - 0 1", -1, false},
        {"five men at the first level", "4k3/8/8/3p4/4P3/8/PPP5/4K3 w - - 0 1", 0, true},
        {"four men", "4k3/8/8/3p4/4P3/8/PP6/4K3 w - - 0 1", -1, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        setUpFreshState(c.fen);
        const i32 standPat = evaluate();
        const i32 alpha = std::min(standPat + 400, board->psqScore + 499);  // a pawn and 50 do not reach it
        ASSERT_GT(alpha, standPat + 150);
        board[1] = *board;
        settle(c.qDepth, alpha, wide);
        EXPECT_EQ(lastWasMade(), c.tried);
    }
}

TEST(Quiescence, TheDeltaTestIsStrict) {
    setUpFreshState("4k3/8/8/3p4/4P3/8/PPP5/4K3 w - - 0 1");
    const i32 standPat = evaluate();
    const i32 reach = standPat + see(findMove("e4d5")) + 50;
    board[1] = *board;
    settle(-2, reach, wide);
    EXPECT_TRUE(lastWasMade());
    board[1] = *board;
    settle(-2, reach + 1, wide);
    EXPECT_FALSE(lastWasMade());
}

TEST(Quiescence, QuietChecksAreTriedOnTheFirstTwoLevels) {
    for (const i16 qDepth : {i16{0}, i16{-1}, i16{-2}, i16{-3}}) {
        SCOPED_TRACE(qDepth);
        setUpFreshState("4k3/8/8/8/8/8/8/R5K1 w - - 0 1");
        board[1] = *board;
        settle(qDepth, -wide, wide);
        EXPECT_EQ(lastWasMade(), qDepth >= -1);
    }
}

// ---- the way in -----------------------------------------------------------------------------------------------

i16 enter() {
    return quiescenceGuard(0, -wide, wide, MATE, 0);
}

constexpr const char* aheadFen = "4k3/8/8/8/8/8/PPPP4/4K3 w - - 0 1";
constexpr const char* checkedFen = "4k3/8/8/8/8/8/PPPPQ3/4K2r w - - 0 1";

TEST(QuiescenceGuard, TheThirdOccurrenceIsADraw) {
    for (const u8 count : {u8{0}, u8{1}, u8{2}, u8{3}}) {
        SCOPED_TRACE(count);
        setUpFreshState(aheadFen);
        board->stateFlags = static_cast<u8>(board->stateFlags | count);
        EXPECT_EQ(enter() == 0, count == 2);
    }
}

// White is a queen down and has one move in each position: the king comes to g1 for the third time.
TEST(QuiescenceGuard, AChildThatRepeatsForTheThirdTimeScoresNothingForItsParent) {
    setUpFreshState("6k1/8/8/8/7q/8/6P1/6K1 b - - 0 1");
    for (const char* move : {"h4e1", "g1h2", "e1h4"}) {
        play(move);
    }
    EXPECT_LT(settle(-2, -wide, wide), -500);
    for (const char* move : {"h2g1", "h4e1", "g1h2", "e1h4"}) {
        play(move);
    }
    EXPECT_EQ(settle(-2, -wide, wide), 0);
}

TEST(QuiescenceGuard, TheFiftyMoveRuleSparesACheckAtTheHundredthPly) {
    const struct {
        const char* name;
        const char* fen;
        u8 rule50;
        bool drawn;
    } cases[] = {
        {"99", aheadFen, 99, false},
        {"100", aheadFen, 100, true},
        {"100 in check", checkedFen, 100, false},
        {"101 in check", checkedFen, 101, true},
        {"101", aheadFen, 101, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        setUpFreshState(c.fen);
        board->rule50 = c.rule50;
        EXPECT_EQ(enter() == 0, c.drawn);
    }
}

TEST(QuiescenceGuard, AStopReturnsOneButADrawComesFirst) {
    setUpFreshState(aheadFen);
    EngineOptions.stopSearch = 1;
    EXPECT_EQ(enter(), 1);
    board->rule50 = 101;
    EXPECT_EQ(enter(), 0);
}

TEST(QuiescenceGuard, WithTheStackUsedUpTheStaticValueIsReturned) {
    setUpFreshState("4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1");
    const Scacchiera* const ceiling = searchCeiling;
    searchCeiling = board;
    EXPECT_EQ(enter(), evaluate());
    EXPECT_EQ(SearchInfo.nodes, 0U);
    searchCeiling = ceiling;
}

// ---- the clock ------------------------------------------------------------------------------------------------

}  // namespace
