// Pawn terms. Numbers worked by hand: islands and pawn count, file edges, backward pawns, then pawn by pawn.
#include "eval_support.h"

#include "eval/masks.h"

struct StructureCase {
    const char* name;
    TBB own;
    TBB enemy;
    i32 score;
    i32 healthy;
    TBB passed;
};

constexpr TBB rank2 = rank1 << 8;
constexpr TBB rank7 = rank8 >> 8;

constexpr StructureCase structureCases[] = {
    {"no own pawns", 0, squares("e5"), 0, 0, 0},
    {"the start: 5 for one island, the h-pawn pays 10", rank2, rank7, -15, 8, 0},
    {"a2 and a3: a2 pays 20 and 10, a3 pays 10", squares("a2", "a3"), 0, -29, 1, squares("a2", "a3")},
    {"a2 and b2: only b2 is called isolated", squares("a2", "b2"), 0, -3, 2, squares("a2", "b2")},
    {"a2 and b3: only b3, though its neighbour stands behind", squares("a2", "b3"), 0, 0, 2,
     squares("a2", "b3")},
    {"three on a file pay 30, 20 and nothing", squares("a2", "a3", "a4"), 0, -49, 1,
     squares("a2", "a3", "a4")},
    {"a stack with a neighbour still to come is healthy", squares("b2", "b3", "c4"), 0, -3, 3,
     squares("b2", "b3", "c4")},
    {"rank 7 is passed, whatever stands beside", squares("e7"), squares("d7", "f7", "e8"), 74, 1,
     squares("e7")},
    {"an enemy on a neighbouring file ahead stops it", squares("e5"), squares("f7"), -22, 1, 0},
    {"an enemy level with it does not", squares("e5"), squares("f5"), 13, 1, squares("e5")},
    {"two islands", squares("a2", "c2"), 0, -26, 2, squares("a2", "c2")},
    {"e2 backward: attacked in front, d3 is ahead", squares("e2", "d3"), squares("f4"), -17, 2,
     squares("d3")},
    {"e3 backward on the third rank", squares("e3", "d4"), squares("f5"), -9, 2, squares("d4")},
    {"e2 not backward with a neighbour level", squares("d2", "e2"), squares("f4"), -10, 2, squares("d2")},
    {"e2 not backward with an enemy ahead on its file", squares("e2", "d3"), squares("f4", "e6"), -17, 2, 0},
    {"e4 not backward: too far up", squares("e4", "d5"), squares("f6"), 14, 2, squares("d5")},
    {"file a and file h are no neighbours", squares("a2", "h3"), 0, -20, 2, squares("a2", "h3")},
    {"an enemy on file h does not look at file a", squares("a3"), squares("h5"), -5, 1, squares("a3")},
    {"a pawn on rank 1 counts as passed, without bonus", squares("a1"), squares("a5"), -13, 1, squares("a1")},
    {"a pawn on rank 8 has the last bonus", squares("a8"), 0, 180, 1, squares("a8")},
};

TEST(PawnStructure, IsAsWorkedByHand) {
    for (const StructureCase& c : structureCases) {
        SCOPED_TRACE(c.name);
        const PawnStructure structure = pawnStructure(c.own, c.enemy);
        EXPECT_EQ(i32{structure.pawnScore}, c.score);
        EXPECT_EQ(i32{structure.healthyPawns}, c.healthy);
        EXPECT_EQ(structure.passedPawns, c.passed);
    }
}

TEST(PawnStructure, WithoutOwnPawnsIsStoredToo) {
    setUp("4k3/4p3/8/8/8/8/8/4K2R w - - 0 1");
    hashPawn copy{};
    ASSERT_EQ(pawnHashProbe(copy), PAWN_HASH_MISS);
    (void)evaluate();
    EXPECT_EQ(pawnHashProbe(copy), 0);
    EXPECT_EQ(copy.passedPawns, 0U);
    EXPECT_EQ(i32{copy.healthyPawns}, 0);
    EXPECT_NE(copy.pawnKey, 0U);
}

TEST(PawnTerms, EachViewHasItsEntry) {
    setUp("4k3/4p3/8/8/8/8/4P3/4K2R w - - 0 1");
    (void)evaluate();
    EXPECT_EQ(pawnHashFilled(), 2U);
}

TEST(PawnTerms, BlacksViewMeetsWhitesViewOfTheMirroredPlacement) {
    // White e4 e5 reads upside down as itself, so Black's pass finds White's entry and takes its score for his own.
    setUp("4k3/8/8/4P3/4P3/8/8/4K2R w - - 0 1");
    Scacchiera view = *board;
    flipBoard(view);
    Pass own = gatherSets(*board);
    Pass other = gatherSets(view);
    const i32 ownScore = pawnTerms(own, ownPlace(own));
    EXPECT_NE(ownScore, 0);
    EXPECT_EQ(pawnTerms(other, ownPlace(other)), ownScore);
    EXPECT_EQ(other.passedPawns, squares("e4", "e5"));
    pawnHashClear();
    EXPECT_EQ(pawnTerms(other, ownPlace(other)), 0);
}

constexpr TermCase endingCases[] = {
    {"no pawn", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", 0},
    {"one pawn", "4k3/8/8/8/8/8/P7/4K3 w - - 0 1", 0},
    {"two healthy pawns", "4k3/8/8/8/8/8/P6P/4K3 w - - 0 1", 100},
    {"three healthy pawns against one", "4k3/4p3/8/8/8/8/P2P3P/4K3 w - - 0 1", 200},
    {"a stacked pawn is not healthy", "4k3/8/8/8/8/P7/P7/4K3 w - - 0 1", 0},
    {"four", "4k3/8/8/8/8/8/PPPP4/4K3 w - - 0 1", 300},
    {"five", "4k3/8/8/8/8/8/PPPPP3/4K3 w - - 0 1", 400},
    {"six", "4k3/8/8/8/8/8/PPPPPP2/4K3 w - - 0 1", 500},
    {"seven", "4k3/8/8/8/8/8/PPPPPPP1/4K3 w - - 0 1", 600},
    {"eight", "4k3/8/8/8/8/8/PPPPPPPP/4K3 w - - 0 1", 700},
    {"more than eight count as eight", "4k3/8/8/8/8/PPPPPPPP/PPPPPPPP/4K3 w - - 0 1", 700},
    {"an own knight ends it", "4k3/8/8/8/8/8/P6P/4KN2 w - - 0 1", 0},
    {"an enemy rook ends it", "3rk3/8/8/8/8/8/P6P/4K3 w - - 0 1", 0},
};

TEST(PawnEnding, RewardsHealthyPawnsWhereThereIsNothingElse) {
    for (const TermCase& c : endingCases) {
        Pass pass = passOf(c.fen);
        (void)pawnTerms(pass, ownPlace(pass));
        EXPECT_EQ(pawnEndingTerm(pass), c.score) << c.name;
    }
}

TEST(PawnEnding, AHitInThePawnHashGivesItToo) {
    setUp("4k3/8/8/8/8/8/P6P/4K3 w - - 0 1");
    const i16 first = evaluate();
    EXPECT_EQ(evaluate(), first);
    EXPECT_GT(i32{first}, 250);
}

constexpr TermCase kingCases[] = {
    {"own king beside a passed pawn, the enemy's three away", "4k3/8/8/4P3/4K3/8/8/8 w - - 0 1", 15 + 3 * 10},
    {"beside two passed pawns it is one bonus", "4k3/8/8/3PP3/4K3/8/8/8 w - - 0 1", 15 + 3 * 10 + 3 * 10},
    {"own king away", "4k3/8/8/4P3/8/8/8/4K3 w - - 0 1", 3 * 10},
    {"rank 2 weighs 2", "8/8/8/8/4k3/8/P7/6K1 w - - 0 1", 4 * 2},
    {"rank 3 weighs 3", "8/8/8/8/4k3/P7/8/6K1 w - - 0 1", 4 * 3},
    {"rank 4 weighs 5", "8/8/8/8/P3k3/8/8/6K1 w - - 0 1", 4 * 5},
    {"rank 6 weighs 15", "8/8/P7/8/4k3/8/8/6K1 w - - 0 1", 4 * 15},
    {"rank 7 weighs 20", "8/P7/8/8/4k3/8/8/6K1 w - - 0 1", 4 * 20},
    {"with queens only the own king counts", "q3k3/8/8/4P3/4K3/8/8/Q7 w - - 0 1", 15},
    {"an enemy queen is enough for that", "q3k3/8/8/4P3/4K3/8/8/8 w - - 0 1", 15},
    {"sixteen men are few", "nnnnk3/nnn5/8/4P3/4K3/8/NNN5/NNN5 w - - 0 1", 15 + 3 * 10},
    {"seventeen are not", "nnnnk3/nnn5/8/4P3/4K3/8/NNNN4/NNN5 w - - 0 1", 0},
    {"a pawn that is not passed", "4k3/5p2/8/4P3/4K3/8/8/8 w - - 0 1", 0},
    {"no enemy king, no distance", "8/8/8/4P3/4K3/8/8/8 w - - 0 1", 15},
    {"no own king", "4k3/8/8/4P3/8/8/8/8 w - - 0 1", 3 * 10},
    {"Black's pawns in Black's frame", "8/8/8/4k3/4p3/8/8/4K3 b - - 0 1", 15 + 3 * 10},
};

TEST(PassedPawns, TheKingsDistanceCountsWithFewMen) {
    for (const TermCase& c : kingCases) {
        Pass pass = passOf(c.fen);
        (void)pawnTerms(pass, ownPlace(pass));
        EXPECT_EQ(passedPawnKingTerms(pass), c.score) << c.name;
    }
}
