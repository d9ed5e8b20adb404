// Exchange values.
#include "board_support.h"
#include "frontend/session.h"

struct SeeCase {
    const char* name;
    const char* fen;
    Mossa move;
    i32 value;
};
static const SeeCase seeCases[] = {
    {"rook takes an undefended pawn", "4k3/8/8/3p4/8/8/8/3RK3 w - - 0 1", makeMossa(CAPT_ROOK, 3, 35), 100},
    {"queen takes a pawn defended by a pawn", "4k3/8/4p3/3p4/8/8/8/3QK3 w - - 0 1",
     makeMossa(CAPT_QUEEN, 3, 35), -850},
    {"pawn takes a queen defended by a rook", "3rk3/8/8/3q4/4P3/8/8/4K3 w - - 0 1",
     makeMossa(CAPT_PAWN, 28, 35), 850},
    {"knight takes a defended knight, a second knight behind", "4k3/8/4p3/3n4/8/2N1N3/8/4K3 w - - 0 1",
     makeMossa(CAPT_KNIGHT, 18, 35), 100},
    {"two rooks on two lines leave together", "3rk3/8/8/3p3r/8/2N1N3/8/4K3 w - - 0 1",
     makeMossa(CAPT_KNIGHT, 18, 35), 100},
    {"any move to a7 gains 100 at first", "4k3/8/8/8/8/8/8/R3K3 w - - 0 1", makeMossa(MOVE_ROOK, 0, 48), 100},
    {"a king takes a defended pawn", "4k3/8/8/8/8/3p4/3pK3/8 w - - 0 1", makeMossa(CAPT_KING, 12, 11), 100},
    {"a king takes a pawn that a rook defends", "3rk3/8/8/8/8/8/3pK3/8 w - - 0 1",
     makeMossa(CAPT_KING, 12, 11), -9900},
    {"a king that can be captured", "4k3/8/8/8/8/8/8/4RK2 w - - 0 1", makeMossa(CAPT_ROOK, 4, 60), 10000},
    {"en passant gains a pawn", "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", makeMossa(EN_PASSANT, 36, 43), 100},
    {"promotion gains 100 and risks the new queen", "r3k3/1P6/8/8/8/8/8/4K3 w - - 0 1",
     makeMossa(PROMO, 49, 57, QUEEN), -850},
    {"a rook behind a rook counts", "3rk3/3r4/8/3p4/8/3R4/3R4/3RK3 w - - 0 1", makeMossa(CAPT_ROOK, 19, 35),
     100},
};

TEST(See, HasTheValueOfTheExchange) {
    for (const SeeCase& c : seeCases) {
        SCOPED_TRACE(c.name);
        setUpPosition(c.fen);
        const Scacchiera before = *board;
        EXPECT_EQ(see(c.move), c.value);
        EXPECT_EQ(SearchInfo.nodes, c.value == 10000 ? 0U : 1U);
        EXPECT_TRUE(sameRecord(*board, before));
        EXPECT_EQ(board, boardStack.data());
    }
}

TEST(See, IsNotAskedWhenTheVictimIsWorthTheAttacker) {
    setUpPosition("4k3/8/4p3/3n4/8/2N5/8/4K3 w - - 0 1");
    EXPECT_EQ(seeIsLosing(makeMossa(CAPT_KNIGHT, 18, 35)), 0);
    EXPECT_EQ(SearchInfo.nodes, 0U);
    setUpPosition("4k3/8/4p3/3p4/8/2N5/8/4K3 w - - 0 1");
    EXPECT_EQ(seeIsLosing(makeMossa(CAPT_KNIGHT, 18, 35)), -1);
    EXPECT_EQ(SearchInfo.nodes, 1U);
    setUpPosition("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1");
    EXPECT_EQ(seeIsLosing(makeMossa(EN_PASSANT, 36, 43)), 0);
    EXPECT_EQ(SearchInfo.nodes, 1U);
}

TEST(See, HasRoomForABoardFullOfMen) {
    newGame();
    ASSERT_EQ(fenToBoard("QQQQQQQQ/qqqqqqqq/QQQQQQQQ/qqqqqqqq/QQQQQQQQ/qqqqqqqq/QQQQQQQQ/qqqqqqqq w - - 0 1"),
              1);
    MoveList list;
    genCaptures(list);
    for (i32 i = 0; i < list.count; ++i) {
        EXPECT_LT(see(list.entries[i].move), 10000);
    }
}

TEST(LegalCaptures, ComeInReverseAndLeaveAnEmptyListAlone) {
    setUpPosition("4k3/8/8/1p1p4/2P5/8/8/4K3 w - - 0 1");
    MoveList list;
    list.count = 0;
    legalCaptures(list);
    EXPECT_THAT(texts(list), testing::ElementsAre("c4d5", "c4b5"));
    setUpPosition("4k3/8/8/8/8/8/8/4K3 w - - 0 1");
    list.count = 77;
    legalCaptures(list);
    EXPECT_EQ(list.count, 77);
}

static std::string seeTestOutput(const char* fen) {
    setUpPosition(fen);
    testing::internal::CaptureStdout();
    seeTest();
    return testing::internal::GetCapturedStdout();
}

TEST(SeeTest, PrintsTheBestCaptureOrNone) {
    EXPECT_EQ(seeTestOutput("4k3/8/8/8/8/8/8/4K3 w - - 0 1"), "Nessuna cattura legale!\n");
    EXPECT_EQ(seeTestOutput("4k3/8/8/1p1q4/2P5/8/8/4K3 w - - 0 1"),
              "Tratto:         0\nMossa valutata: c4d5 \n- SEE Value:    950\n");
}
