// Terms of the pieces and hanging pieces. Numbers worked by hand.
#include "eval_support.h"

// ---- knights --------------------------------------------------------------------------------------------------

constexpr TermCase knightCases[] = {
    {"none", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", 0},
    {"one in the centre, no pawns", "4k3/8/8/8/3N4/8/8/4K3 w - - 0 1", -20},
    {"eight pawns", "4k3/8/8/1N6/8/8/PPPPPPPP/4K3 w - - 0 1", 12},
    {"nine pawns count as eight", "4k3/8/8/1N6/8/P7/PPPPPPPP/4K3 w - - 0 1", 12},
    {"an outpost counts in each step until it is passed", "4k3/8/8/3N4/8/2N5/4P3/4K3 w - - 0 1",
     2 * -16 + 2 * 15 - 10},
    {"the outpost is the lower one: once", "4k3/8/6N1/3N4/8/8/4P3/4K3 w - - 0 1", 2 * -16 + 15},
    {"an enemy pawn that may drive it off", "4k3/2p5/8/3N4/8/2N5/4P3/4K3 w - - 0 1", 2 * -16 - 10},
    {"an enemy pawn that has passed by does not", "4k3/8/8/3N4/2p5/2N5/4P3/4K3 w - - 0 1",
     2 * -16 + 2 * 15 - 10},
    {"no own pawn that could guard it", "4k3/8/8/3N4/8/8/3P4/4K3 w - - 0 1", -16},
    {"c4 is no outpost square", "4k3/8/8/8/2N5/8/3P4/4K3 w - - 0 1", -16},
    {"c5 is", "4k3/8/8/2N5/8/8/3P4/4K3 w - - 0 1", -16 + 15},
    {"c6 is", "4k3/8/2N5/8/8/8/3P4/4K3 w - - 0 1", -16 + 15},
    {"e4 is", "4k3/8/8/8/4N3/8/3P4/4K3 w - - 0 1", -16 + 15},
    {"three squares are few", "4k3/8/8/8/8/8/8/1N2K3 w - - 0 1", -20 - 10},
    {"four are not", "4k3/8/8/8/8/N7/8/4K3 w - - 0 1", -20},
    {"own men take squares away", "4k3/8/8/1B6/8/N7/8/4K3 w - - 0 1", -20 - 10},
    {"enemy men do not", "4k3/8/8/1b6/8/N7/8/4K3 w - - 0 1", -20},
    {"a pair that guards each other pays once", "4k3/8/8/4N3/8/3N4/8/4K3 w - - 0 1", -40 - 10},
    {"a pair that does not", "4k3/8/8/4N3/3N4/8/8/4K3 w - - 0 1", -40},
    {"trapped on a8 by c7, few squares", "N3k3/2p5/8/8/8/8/8/4K3 w - - 0 1", -20 - 20 - 10},
    {"a second knight below pays for it too", "N3k3/2p5/8/8/8/8/8/1N2K3 w - - 0 1", 2 * (-20 - 20 - 10)},
    {"a second knight above does not", "N3k3/1Np5/8/8/8/8/8/4K3 w - - 0 1", -20 - 20 - 20 - 20 - 10},
    {"two traps in a step pay once", "N3k3/p1p5/8/8/8/8/8/4K3 w - - 0 1", -20 - 20 - 10},
    {"Black's knight in Black's frame", "4k3/8/8/8/8/8/2P5/n3K3 b - - 0 1", -20 - 20 - 10},
};

TEST(KnightTerms, AreAsWorkedByHand) {
    for (const TermCase& c : knightCases) {
        Pass pass = passOf(c.fen);
        EXPECT_EQ(knightTerms(pass), c.score) << c.name;
    }
}

struct TrapCase {
    const char* knight;
    const char* enemyPawn;
};

constexpr TrapCase trapCases[] = {
    {"4k3/N7/8/8/8/8/8/4K3 w - - 0 1", "4k3/N7/p7/8/8/8/8/4K3 w - - 0 1"},
    {"4k3/N7/8/8/8/8/8/4K3 w - - 0 1", "4k3/Np6/8/8/8/8/8/4K3 w - - 0 1"},
    {"N3k3/8/8/8/8/8/8/4K3 w - - 0 1", "N3k3/p7/8/8/8/8/8/4K3 w - - 0 1"},
    {"N3k3/8/8/8/8/8/8/4K3 w - - 0 1", "N3k3/2p5/8/8/8/8/8/4K3 w - - 0 1"},
    {"4k3/7N/8/8/8/8/8/4K3 w - - 0 1", "4k3/7N/7p/8/8/8/8/4K3 w - - 0 1"},
    {"4k3/7N/8/8/8/8/8/4K3 w - - 0 1", "4k3/6pN/8/8/8/8/8/4K3 w - - 0 1"},
    {"4k2N/8/8/8/8/8/8/4K3 w - - 0 1", "4k2N/5p2/8/8/8/8/8/4K3 w - - 0 1"},
    {"4k2N/8/8/8/8/8/8/4K3 w - - 0 1", "4k2N/7p/8/8/8/8/8/4K3 w - - 0 1"},
};

TEST(KnightTerms, EachEnemyPawnThatShutsAKnightInCosts20) {
    for (const TrapCase& c : trapCases) {
        Pass without = passOf(c.knight);
        const i32 free = knightTerms(without);
        Pass with = passOf(c.enemyPawn);
        EXPECT_EQ(knightTerms(with), free - 20) << c.enemyPawn;
    }
    Pass own = passOf("4k3/N7/P7/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(knightTerms(own), -16 - 10) << "an own pawn does not";
}

// ---- bishops --------------------------------------------------------------------------------------------------

constexpr TermCase bishopCases[] = {
    {"none", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", 0},
    {"trapped on a7 by b6, few squares", "4k3/B7/1p6/8/8/8/8/4K3 w - - 0 1", -100 - 10},
    {"two bishops both pay for the one on a7", "4k3/B7/1p6/8/8/8/8/2B1K3 w - - 0 1", -200 - 10 + 30},
    {"trapped on h7 by g6", "4k3/7B/6p1/8/8/8/8/4K3 w - - 0 1", -100 - 10},
    {"one trap at most in a step", "4k3/B6B/1p4p1/8/8/8/8/4K3 w - - 0 1", -200 - 20 + 30},
    {"pair", "4k3/8/8/8/8/3B4/8/2B1K3 w - - 0 1", 30},
    {"pair of one colour", "4k3/8/8/8/8/2B1B3/8/4K3 w - - 0 1", 30 + 10},
    {"three have neither pair nor colour term, the long diagonal counts along each bishop's own line",
     "4k3/8/8/8/8/BBB5/P7/4K3 w - - 0 1", 20},
    {"lone bishop, one pawn on its colour, two off it", "4k3/8/8/8/8/8/PPP5/2B1K3 w - - 0 1", 3 * (2 - 1)},
    {"lone bishop, pawns on its colour", "4k3/8/8/8/1P1P4/8/8/2B1K3 w - - 0 1", -3 * 2},
    {"five squares are few, own men count as squares", "4k3/8/8/8/8/4P3/1P6/2B1K3 w - - 0 1", -10 - 3 * 2},
    {"six are not", "4k3/8/8/8/5P2/8/1P6/2B1K3 w - - 0 1", -10 - 3 * 2},
    {"rising long diagonal without pawns", "4k3/8/8/8/8/8/1B6/4K3 w - - 0 1", 10},
    {"falling long diagonal without pawns", "4k3/8/8/8/8/8/6B1/4K3 w - - 0 1", 10},
    {"an enemy pawn closes it", "4k3/6p1/8/8/8/8/1B6/4K3 w - - 0 1", 0},
    {"a pawn behind the bishop closes it too", "4k3/8/8/8/8/2B5/1P6/4K3 w - - 0 1", -3},
    {"a piece does not close it", "4k3/8/8/8/3n4/8/1B6/4K3 w - - 0 1", -10 + 10},
    {"a lower bishop off the diagonal looks along its own line", "4k3/8/8/8/8/2B5/8/5B1K w - - 0 1",
     30 + 10 + 10},
    {"a higher one does not", "4k3/8/8/2B5/8/2B5/8/7K w - - 0 1", 30 + 10},
    {"outpost", "4k3/8/8/3B4/8/8/4P3/4K3 w - - 0 1", 15 + 10 - 3},
};

TEST(BishopTerms, AreAsWorkedByHand) {
    for (const TermCase& c : bishopCases) {
        Pass pass = passOf(c.fen);
        EXPECT_EQ(bishopTerms(pass), c.score) << c.name;
    }
}

// ---- rooks ----------------------------------------------------------------------------------------------------

constexpr TermCase rookCases[] = {
    {"none", "4k3/8/8/8/8/8/P7/4K3 w - - 0 1", 0},
    {"without any pawn only its adjustment, no seventh rank", "4k3/7R/8/8/8/8/8/4K3 w - - 0 1", 15},
    {"without any pawn mobility counts", "8/8/8/8/4k3/8/RN6/BK6 w - - 0 1", 15},
    {"file a, no pawn there", "4k3/8/8/8/8/8/1P6/R3K3 w - - 0 1", 12 + 10},
    {"file a, an own pawn there, seven squares are few", "4k3/8/8/8/P7/8/8/R3K3 w - - 0 1", 12 - 10 + 15},
    {"file a, an enemy pawn there", "4k3/p7/8/8/8/8/1P6/R3K3 w - - 0 1", 12 + 5},
    {"file h with its own pawn, file c open", "4k3/pp1ppppp/8/8/8/8/PP1PPPPP/4K2R w - - 0 1", -6 - 10 + 10},
    {"file h has both when another file is half-open", "4k3/pp1ppppp/8/8/8/8/PP2PPPP/4K2R w - - 0 1",
     -3 - 10 + 10 + 5},
    {"file h with no file open", "4k3/pppppppp/8/8/8/8/PPPPPPPP/4K2R w - - 0 1", -9 - 10},
    {"file g looks at itself alone", "4k3/pp1ppppp/8/8/8/8/PP1PPPPP/4K1R1 w - - 0 1", -6 - 10},
    {"eight squares are not few", "4k3/8/8/P7/8/8/8/R3K3 w - - 0 1", 12 + 15},
    {"seventh rank, king on the eighth", "4k3/7R/8/8/8/8/P7/4K3 w - - 0 1", 12 + 10 + 20},
    {"seventh rank, king elsewhere", "8/4k2R/8/8/8/8/P7/4K3 w - - 0 1", 12 + 10},
    {"shut in on h1 by the king on g1", "4k3/8/8/8/8/8/5PPP/6KR w - - 0 1", 6 - 10 + 10 - 30 + 15},
    {"shut in on h2 by the king on g1", "4k3/8/8/8/8/6P1/5PPR/6K1 w - - 0 1", 6 + 10 - 30},
    {"shut in on g1 by the king on f1", "4k3/8/8/8/8/8/4PPPP/5KR1 w - - 0 1", 3 - 10 - 30 + 15},
    {"shut in on a1 by the king on b1", "4k3/8/8/8/8/8/PPP5/RK6 w - - 0 1", 6 - 10 - 30 + 15},
    {"shut in on a2 by the king on c1", "4k3/8/8/8/8/8/RPP5/2K5 w - - 0 1", 9 + 10 - 30},
    {"a rook on h1 and the king on e1", "4k3/8/8/8/8/8/5PPP/4K2R w - - 0 1", 6 - 10 + 10 + 15},
    {"behind an own passed pawn", "7k/8/8/4P3/8/8/8/K3R3 w - - 0 1", 12 + 15},
    {"in front of it, on the seventh", "7k/4R3/8/4P3/8/8/8/K7 w - - 0 1", 12 + 20 - 15},
    {"passed pawns on other files", "7k/8/8/4P3/8/8/8/K2R4 w - - 0 1", 12 + 10},
    {"behind two passed pawns", "7k/8/4P3/4P3/8/8/8/K3R3 w - - 0 1", 9 + 15 + 15},
    {"between two passed pawns", "7k/8/4P3/8/4R3/4P3/8/K7 w - - 0 1", 9 + 15 - 15},
    {"outpost, deliberate", "7k/8/8/3R4/8/8/4P3/K7 w - - 0 1", 12 + 15 + 10},
    {"the lower rook counts the higher one's outpost too", "7k/8/8/3R4/8/8/4P3/K1R5 w - - 0 1",
     24 + 2 * 15 + 20},
};

TEST(RookTerms, AreAsWorkedByHand) {
    for (const TermCase& c : rookCases) {
        Pass pass = passOf(c.fen);
        (void)pawnTerms(pass, ownPlace(pass));
        EXPECT_EQ(rookTerms(pass), c.score) << c.name;
    }
}

TEST(RookTerms, APassedPawnOfAStrangeEntryUnderTheRookCountsNeitherWay) {
    Pass pass = passOf("7k/8/8/4P3/8/8/8/K3R3 w - - 0 1");
    pass.passedPawns = pass.ownRooks;
    EXPECT_EQ(rookTerms(pass), 12);
}

// ---- queens ---------------------------------------------------------------------------------------------------

constexpr TermCase queenCases[] = {
    {"none", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", 0},
    {"free", "4k3/8/8/8/8/8/8/Q3K3 w - - 0 1", 0},
    {"seven squares are few", "4k3/8/P7/8/8/8/1P6/QN2K3 w - - 0 1", -10},
    {"eight are not", "4k3/P7/8/8/8/8/1P6/QN2K3 w - - 0 1", 0},
    {"two shut in", "QN2k3/PP6/8/8/8/8/PP6/QN2K3 w - - 0 1", -20},
};

TEST(QueenTerms, AreAsWorkedByHand) {
    for (const TermCase& c : queenCases) {
        Pass pass = passOf(c.fen);
        EXPECT_EQ(queenTerms(pass), c.score) << c.name;
    }
}

// ---- hanging pieces -------------------------------------------------------------------------------------------

constexpr TermCase hangingCases[] = {
    {"a knight attacked and not defended", "3qk3/8/8/3N4/8/8/8/Q3K3 w - - 0 1", -20},
    {"a bishop", "3qk3/8/8/3B4/8/8/8/Q3K3 w - - 0 1", -20},
    {"a rook", "3qk3/8/8/3R4/8/8/8/Q3K3 w - - 0 1", -10},
    {"a queen", "3qk3/8/8/3Q4/8/8/8/4K3 w - - 0 1", -10},
    {"a pawn never hangs", "3qk3/8/8/3P4/8/8/8/Q3K3 w - - 0 1", 0},
    {"defended once is not hanging", "3qk3/8/8/3N4/8/8/8/3QK3 w - - 0 1", 0},
    {"attacked by a pawn, defended once: not hanging", "3qk3/8/4p3/3N4/8/8/8/3QK3 w - - 0 1", 0},
    {"defended by a pawn", "3qk3/8/8/3N4/4P3/8/8/Q3K3 w - - 0 1", 0},
    {"neither attacked nor defended", "1q2k3/8/8/3N4/8/8/8/Q3K3 w - - 0 1", 0},
    {"Black's knight in Black's frame", "q3k3/8/8/8/3n4/8/8/3QK3 b - - 0 1", -20},
};

TEST(HangingPieces, AreThoseAttackedAndDefendedByNobody) {
    for (const TermCase& c : hangingCases) {
        const BothPasses both = bothPasses(c.fen);
        EXPECT_EQ(hangingTerms(both.own, both.enemy), c.score) << c.name;
    }
}

TEST(HangingPieces, CountOnlyWithAQueenOnTheBoard) {
    const BothPasses both = bothPasses("3rk3/8/8/3N4/8/8/8/4K3 w - - 0 1");
    ASSERT_EQ(hangingTerms(both.own, both.enemy), -20);
    EXPECT_EQ(freshValue(), board->psqScore + both.ownTerms - both.enemyTerms);
}

TEST(HangingPieces, CountOnlyWithAnotherPieceBesideQueens) {
    const BothPasses both = bothPasses("3qk3/8/8/3Q4/8/8/8/4K3 w - - 0 1");
    ASSERT_EQ(hangingTerms(both.own, both.enemy), -10);
    EXPECT_EQ(freshValue(), board->psqScore + both.ownTerms - both.enemyTerms);
}
