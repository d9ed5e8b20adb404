// The comparison of each record made with its key and score from scratch: what it finds, and what it leaves alone.
#include "board/make_move.h"

#include "board_support.h"

namespace {

constexpr Mossa pawnStep = makeMossa(MOVE_PAWN, 12, 20);

TEST(CheckRecord, FindsAWrongKeyAndAWrongScore) {
    setUpPosition(startFen);
    makeMove(pawnStep);
    EXPECT_TRUE(madeRecordIsTrue(partsOf(pawnStep)));
    board->hashKey ^= 1;
    EXPECT_FALSE(madeRecordIsTrue(partsOf(pawnStep)));
    board->hashKey ^= 1;
    board->psqScore = wrap16(board->psqScore + 1);
    EXPECT_FALSE(madeRecordIsTrue(partsOf(pawnStep)));
}

TEST(CheckRecord, EndsTheProcessOnlyWhereItIsBuiltIn) {
    setUpPosition(startFen);
    NodeMoves moves = nodeMoves();
    moves.keyBase ^= 1;
    if (recordsAreChecked) {
        EXPECT_DEATH(static_cast<void>(tryMove(moves, pawnStep)), "madeRecordIsTrue");
    } else {
        EXPECT_TRUE(tryMove(moves, pawnStep));
    }
}

TEST(CheckRecord, ARecordWithAKeptScoreMayGoOnWithIt) {
    setUpPosition(startFen);
    board->psqScore = 77;
    EXPECT_TRUE(tryMove(nodeMoves(), pawnStep));
    EXPECT_EQ(board->psqScore, easyVal() - 77);
    EXPECT_TRUE(madeRecordIsTrue(partsOf(pawnStep)));
}

TEST(CheckRecord, AMoveOfAnotherPositionMayDiffer) {
    constexpr Mossa stray = makeMossa(CAPT_QUEEN, 12, 52);
    setUpPosition(startFen);
    makeMove(stray);
    EXPECT_NE(board->psqScore, easyVal());
    EXPECT_TRUE(madeRecordIsTrue(partsOf(stray)));
}

// Castling with a right and no rook makes men from nothing.
TEST(CheckRecord, ABoardThatNoGameReachesMayDiffer) {
    setUpPosition("4k3/8/8/8/8/8/8/4K3 w K - 0 1");
    makeMove(castleShort);
    EXPECT_NE(board->psqScore, easyVal());
    EXPECT_TRUE(madeRecordIsTrue(partsOf(castleShort)));
}

}  // namespace
