// The comparison of each record made with its key and score from scratch: what it finds, and what it leaves alone.
#include "board/make_move.h"

#include "board_support.h"

namespace {

class CheckRecord : public testing::Test {
  protected:
    void SetUp() override {
        if (!recordsAreChecked) {
            GTEST_SKIP() << "built without TARVELMON_CHECK_RECORDS";
        }
    }
};

constexpr Mossa pawnStep = makeMossa(MOVE_PAWN, 12, 20);
constexpr const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

TEST_F(CheckRecord, AWrongKeyEndsTheProcess) {
    setUp(startFen);
    NodeMoves moves = nodeMoves();
    moves.keyBase ^= 1;
    EXPECT_DEATH(static_cast<void>(tryMove(moves, pawnStep)), "mayDiffer");
}

TEST_F(CheckRecord, AWrongScoreEndsTheProcess) {
    setUp("4k3/8/8/8/8/3p4/4P3/4K3 w - - 0 1");
    NodeMoves moves = nodeMoves();
    moves.captureKings += 1;
    EXPECT_DEATH(static_cast<void>(tryMove(moves, makeMossa(CAPT_PAWN, 12, 19))), "mayDiffer");
}

TEST_F(CheckRecord, ARecordWithAKeptScoreMayGoOnWithIt) {
    setUp(startFen);
    board->psqScore = 77;
    EXPECT_TRUE(tryMove(nodeMoves(), pawnStep));
    EXPECT_EQ(board->psqScore, easyVal() - 77);
}

TEST_F(CheckRecord, AMoveOfAnotherPositionMayDiffer) {
    setUp(startFen);
    makeMove(makeMossa(CAPT_QUEEN, 12, 52));
    EXPECT_NE(board->psqScore, 0);
}

}  // namespace
