// The byte maps of attackers.
#include "eval_support.h"

static i32 mapAt(const std::array<u8, 64>& map, const char* name) {
    return map[static_cast<u32>((name[1] - '1') * 8 + name[0] - 'a')];
}

TEST(AttackMaps, CountAttackersAndNameTheirKinds) {
    setUp("rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2");
    buildAttackMaps();
    EXPECT_EQ(mapAt(attackMapOwn, "f3"), 3 | 8 | 16 | 64);  // pawn g2, knight g1, queen d1
    EXPECT_EQ(mapAt(attackMapOwn, "e2"),
              4 | 16 | 64 | 128);                  // bishop f1, knight g1, queen, king: own men count
    EXPECT_EQ(mapAt(attackMapOwn, "a2"), 1 | 32);  // rook a1
    EXPECT_EQ(mapAt(attackMapOwn, "e5"), 0);
    EXPECT_EQ(mapAt(attackMapEnemy, "f6"), 3 | 8 | 16 | 64);  // the same for Black, on real squares
    EXPECT_EQ(mapAt(attackMapEnemy, "d4"), 1 | 8);
}

TEST(AttackMaps, IndexIsTheRealSquareWithBlackToMoveToo) {
    setUp("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1");
    buildAttackMaps();
    EXPECT_EQ(mapAt(attackMapOwn, "f6"), 3 | 8 | 16);  // pawns e7 and g7, knight g8
    EXPECT_EQ(mapAt(attackMapEnemy, "d5"), 1 | 8);     // White's pawn e4
    EXPECT_EQ(mapAt(attackMapEnemy, "a6"), 1 | 16);    // White's bishop f1
}

TEST(AttackMaps, AKingAloneGives129) {
    setUp("4k3/8/8/8/8/8/8/4K3 w - - 0 1");
    buildAttackMaps();
    EXPECT_EQ(mapAt(attackMapOwn, "d2"), 129);
    EXPECT_EQ(mapAt(attackMapEnemy, "f7"), 129);
    EXPECT_EQ(mapAt(attackMapOwn, "e1"), 0);
}

TEST(AttackMaps, AQueenIsOneAttackerAndNobodySeesThroughAnotherSlider) {
    setUp("4k3/8/8/8/8/8/Q7/R3K3 w - - 0 1");
    buildAttackMaps();
    EXPECT_EQ(mapAt(attackMapOwn, "a5"), 1 | 64);  // the rook on a1 stops at a2
    EXPECT_EQ(mapAt(attackMapOwn, "a2"), 1 | 32);
}

TEST(AttackMaps, AnEighthAttackerCarriesIntoTheFlags) {
    setUp("3k4/2q1q1q1/8/q6q/4q3/2q1K1q1/8/N7 w - - 0 1");
    buildAttackMaps();
    EXPECT_EQ(mapAt(attackMapEnemy, "e5"), 64 | 8);  // eight queens read as none, with a pawn's flag
}

TEST(AttackMaps, PawnsOnTheFirstAndLastRankAttackNothing) {
    setUp("P3k3/8/8/8/8/8/8/P3K3 w - - 0 1");
    buildAttackMaps();
    EXPECT_EQ(mapAt(attackMapOwn, "b2"), 0);
}

TEST(AttackMaps, AreBuiltOnBoardsWithoutKings) {
    setUp("8/8/8/3q4/8/8/8/R7 w - - 0 1");
    buildAttackMaps();
    EXPECT_EQ(mapAt(attackMapOwn, "a8"), 1 | 32);
    EXPECT_EQ(mapAt(attackMapEnemy, "d1"), 1 | 64);
}

TEST(AttackMaps, SwapExchangesTheContents) {
    setUp("4k3/8/8/8/8/8/8/R3K3 w - - 0 1");
    buildAttackMaps();
    const std::array<u8, 64> own = attackMapOwn;
    const std::array<u8, 64> enemy = attackMapEnemy;
    ASSERT_NE(own, enemy);
    swapAttackMaps();
    EXPECT_EQ(attackMapOwn, enemy);
    EXPECT_EQ(attackMapEnemy, own);
}
