// Sets and tables by rule.
#include "eval/masks.h"

#include <gtest/gtest.h>

constexpr u32 at(const char* name) {
    return static_cast<u32>((name[1] - '1') * 8 + name[0] - 'a');
}

TEST(Masks, PassedMaskStopsBelowRank8) {
    EXPECT_EQ(passedMask[at("e2")] & rank8, 0U);
    EXPECT_EQ(passedMask[at("e7")], 0U);
    EXPECT_EQ(passedMask[at("e6")], squares("d7", "e7", "f7"));
    EXPECT_EQ(passedMask[at("a5")], squares("a6", "b6", "a7", "b7"));
    EXPECT_EQ(passedMask[at("h6")], squares("g7", "h7"));
    EXPECT_EQ(passedMask[at("d1")], 0U);
    EXPECT_EQ(passedMask[at("d8")], 0U);
    EXPECT_EQ(popCount(passedMask[at("b2")]), 15);
}

TEST(Masks, FilesAndTheirNeighbours) {
    EXPECT_EQ(fileMask[0], 0x0101010101010101U);
    EXPECT_EQ(adjacentFiles[0], fileMask[1]);
    EXPECT_EQ(adjacentFiles[3], fileMask[2] | fileMask[4]);
    EXPECT_EQ(adjacentFiles[7], fileMask[6]);
}

TEST(Masks, KingZonesAreClippedAtTheRimAndLeaveTheKingOut) {
    EXPECT_EQ(kingZoneFront1[at("g1")], squares("f2", "g2", "h2"));
    EXPECT_EQ(kingZoneFront2[at("g1")], squares("f3", "g3", "h3"));
    EXPECT_EQ(kingZoneSides[at("g1")], squares("f1", "h1"));
    EXPECT_EQ(kingZoneFront1[at("a4")], squares("a5", "b5"));
    EXPECT_EQ(kingZoneSides[at("e4")], squares("d4", "f4", "d3", "e3", "f3"));
    EXPECT_EQ(kingZoneSides[at("h8")], squares("g8", "g7", "h7"));
    EXPECT_EQ(kingZoneFront1[at("e8")], 0U);
    EXPECT_EQ(kingZoneFront2[at("e7")], 0U);
    EXPECT_EQ(kingZoneFront2[at("e8")], 0U);
}

TEST(Masks, DiagonalsLeaveTheirSquareOut) {
    EXPECT_EQ(diagonalThrough[at("a1")] | TBB{1}, 0x8040201008040201U);
    EXPECT_EQ(antiDiagonalThrough[at("h1")] | TBB{0x80}, 0x0102040810204080U);
    EXPECT_EQ(diagonalThrough[at("b1")], squares("c2", "d3", "e4", "f5", "g6", "h7"));
    EXPECT_EQ(antiDiagonalThrough[at("b1")], squares("a2"));
    EXPECT_EQ(antiDiagonalThrough[at("a1")], 0U);
}

TEST(Masks, DistanceIsTheKings) {
    EXPECT_EQ(squareDistance[at("a1")][at("h8")], 7);
    EXPECT_EQ(squareDistance[at("a1")][at("a1")], 0);
    EXPECT_EQ(squareDistance[at("e4")][at("d5")], 1);
    EXPECT_EQ(squareDistance[at("b7")][at("c2")], 5);
    EXPECT_EQ(squareDistance[at("g3")][at("a4")], 6);
}

TEST(Masks, FillsGoToTheEdge) {
    EXPECT_EQ(southFill(squares("c4")), squares("c4", "c3", "c2", "c1"));
    EXPECT_EQ(northFill(squares("c4")), squares("c4", "c5", "c6", "c7", "c8"));
    EXPECT_EQ(southFill(rank8), ~TBB{0});
    EXPECT_EQ(northFill(rank1), ~TBB{0});
    EXPECT_EQ(sideways(squares("a3", "h6")), squares("b3", "g6"));
    EXPECT_EQ(filesOf(squares("a8", "c1", "h4")), 0x85U);
}
