// What holds of every position: equal to the plain evaluation, symmetry, and an untouched record.
#include "plain_eval.h"
#include "random_positions.h"

constexpr i32 gamePositions = 60000;
constexpr i32 besiegedPositions = 30000;
constexpr i32 thrownPositions = 12000;  // of each of five kinds

// Values are taken with an empty pawn hash, hundreds of thousands of times.
struct EveryPosition : testing::Test {
    void SetUp() override { usePawnHash(onePawnRecord); }
};

static void expectPlainValue() {
    const PlainValue plain = plainEvaluate();
    ASSERT_EQ(i32{freshValue()}, plain.value) << recordText(*board);
    ASSERT_EQ(EngineOptions.kingDanger, plain.kingDanger) << recordText(*board);
}

TEST_F(EveryPosition, ValueEqualsThePlainEvaluationInRandomGames) {
    RandomNumbers random{1};
    visitRandomGames(random, gamePositions, expectPlainValue);
}

TEST_F(EveryPosition, ValueEqualsThePlainEvaluationOnThrownBoards) {
    RandomNumbers random{2};
    visitThrownBoards(random, thrownPositions, expectPlainValue);
}

TEST_F(EveryPosition, ValueEqualsThePlainEvaluationWhereAKingIsBesieged) {
    RandomNumbers random{8};
    for (i32 i = 0; i < besiegedPositions && !HasFailure(); ++i) {
        throwSiege(random);
        expectPlainValue();
    }
}

// The pawn hash does not know whose view an entry is. A placement whose two views share a key has no symmetry.
static bool viewsShareAKey() {
    const Pass own = gatherSets(*board);
    const PawnHashKeys keys = pawnHashKeys(own.ownPawns, own.enemyPawns, own.black);
    return keys.own == keys.other;
}

static void expectSymmetry() {
    const bool shared = viewsShareAKey();
    const bool noPawns = pawns(*board) == 0;
    if (shared && !noPawns) {
        return;
    }
    const i32 value = freshValue();
    const i32 danger = EngineOptions.kingDanger;
    mirrorColours();
    ASSERT_EQ(freshValue(), value) << recordText(*board);
    ASSERT_EQ(EngineOptions.kingDanger, danger) << recordText(*board);
    mirrorColours();
    passTheTurn();
    ASSERT_EQ(freshValue(), -value) << recordText(*board);
    ASSERT_EQ(EngineOptions.kingDanger, danger) << recordText(*board);
    passTheTurn();
}

TEST_F(EveryPosition, ValueIsSymmetricInRandomGames) {
    RandomNumbers random{3};
    visitRandomGames(random, gamePositions, expectSymmetry);
}

TEST_F(EveryPosition, ValueIsSymmetricOnThrownBoards) {
    RandomNumbers random{4};
    visitThrownBoards(random, thrownPositions, expectSymmetry);
}

static void expectUntouchedRecord() {
    const Scacchiera before = *board;
    const Scacchiera* const place = board;
    (void)evaluate();
    (void)easyVal();
    (void)sufficientMaterial();
    buildAttackMaps();
    ASSERT_EQ(board, place);
    ASSERT_TRUE(sameRecord(*board, before)) << recordText(before);
}

TEST_F(EveryPosition, EvaluationLeavesTheRecordAsItWas) {
    RandomNumbers random{5};
    visitRandomGames(random, 5000, expectUntouchedRecord);
    visitThrownBoards(random, 2000, expectUntouchedRecord);
}

TEST_F(EveryPosition, EasyValEqualsTheKeptScoreAfterEveryMove) {
    RandomNumbers random{6};
    visitRandomGames(random, 20000, [] { ASSERT_EQ(easyVal(), board->psqScore) << recordText(*board); });
}

TEST_F(EveryPosition, EasyValIsNegatedByGivingTheMoveAway) {
    RandomNumbers random{7};
    visitThrownBoards(random, 2000, [] {
        const i16 value = easyVal();
        passTheTurn();
        ASSERT_EQ(easyVal(), -value);
    });
}
