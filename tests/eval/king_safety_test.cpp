// Term King Safety. Numbers worked by hand.
#include "eval_support.h"
#include "plain_eval.h"

struct SafetyCase {
    const char* name;
    const char* fen;
    i32 score;
    i32 kingDanger;
};

constexpr SafetyCase safetyCases[] = {
    {"three pawns in front, none further", "4k3/8/8/q7/8/8/5PPP/6K1 w - - 0 1", -6, 0},
    {"g3 in place of g2", "4k3/8/8/q7/8/6P1/5P1P/6K1 w - - 0 1", -8, 0},
    {"a king in the corner has two squares a row", "4k3/8/8/q7/8/8/6PP/7K w - - 0 1", -4 - 6, 0},
    {"a king on rank 8 has no shield", "K7/8/8/8/8/k6q/8/8 w - - 0 1", -18, 0},
    {"Black's king in Black's frame", "6k1/5ppp/8/8/Q7/8/8/4K3 b - - 0 1", -6, 0},
    {"four start units with two enemy knights are 12 and no alarm", "K7/8/8/8/8/k6q/8/6nn w - - 0 1",
     -18 - 12, 0},
    {"with one knight none", "K7/8/8/8/8/k6q/8/6n1 w - - 0 1", -18, 0},
    {"enemy queens and pawns do not count for the start", "K7/8/8/8/8/k5qq/6p1/6n1 w - - 0 1", -18 - 3, 0},
    {"a fifth unit gives 18 and raises the flag", "K7/8/8/8/8/k7/7q/1R4nn w - - 0 1", -18 - 18, 1},
    {"a square held by the king alone is two units", "k4q2/8/8/8/8/5N2/6K1/8 w - - 0 1", -18 - 3, 0},
    {"held by king and pawn one", "k4q2/8/8/8/8/5N2/4P1K1/8 w - - 0 1", -18 - 2, 0},
    {"no own king, no term", "4k2q/8/8/8/8/8/8/6N1 w - - 0 1", 0, 0},
};

TEST(KingSafety, IsAsWorkedByHand) {
    for (const SafetyCase& c : safetyCases) {
        SCOPED_TRACE(c.name);
        const BothPasses both = bothPasses(c.fen);
        EXPECT_EQ(kingSafetyTerm(both.own, both.enemy), c.score);
        EXPECT_EQ(EngineOptions.kingDanger, c.kingDanger);
    }
}

TEST(KingSafety, WithoutAnEnemyQueenNothingIsChargedAndTheFlagStays) {
    // A bare king in the middle of Black's pieces; White alone has a queen.
    const BothPasses both = bothPasses("4k3/8/8/2r1r3/2bn4/3K4/8/7Q w - - 0 1");
    const i32 hanging = hangingTerms(both.own, both.enemy) - hangingTerms(both.enemy, both.own);
    const i32 enemySafety = kingSafetyTerm(both.enemy, both.own);
    EngineOptions.kingDanger = 0;
    EXPECT_EQ(freshValue(), board->psqScore + both.ownTerms - both.enemyTerms + hanging - enemySafety);
    EXPECT_EQ(EngineOptions.kingDanger, 0);
}

TEST(KingSafety, WithoutAPieceBesideQueensNothingIsCharged) {
    const BothPasses both = bothPasses("4k3/8/8/8/8/3K4/2q1q3/7Q w - - 0 1");
    EXPECT_EQ(freshValue(), board->psqScore + both.ownTerms - both.enemyTerms);
    EXPECT_EQ(EngineOptions.kingDanger, 0);
}

TEST(KingSafety, EvaluateNeverClearsTheFlag) {
    setUp("4k3/8/8/8/8/8/4P3/4K3 w - - 0 1");
    EngineOptions.kingDanger = 1;
    (void)evaluate();
    EXPECT_EQ(EngineOptions.kingDanger, 1);
}

TEST(KingSafety, TheFlagIsRaisedForEitherSide) {
    for (const char* fen : {"K7/8/8/8/8/k7/7q/1R4nn w - - 0 1", "K7/8/8/8/8/k7/7q/1R4nn b - - 0 1"}) {
        setUp(fen);
        (void)evaluate();
        EXPECT_EQ(EngineOptions.kingDanger, 1) << fen;
    }
}

TEST(KingSafety, EightAttackersOfASquareReadAsAPawn) {
    // Eight queens attack e5, two squares before the king: the carry of the byte map shows a pawn, worth one unit more.
    const BothPasses both = bothPasses("3k4/2q1q1q1/8/q6q/4q3/2q1K1q1/8/N7 w - - 0 1");
    const i32 carried = kingSafetyTerm(both.own, both.enemy);
    BothPasses bySets = both;
    bySets.enemy.zoneAttackers = 0;
    EXPECT_EQ(kingSafetyTerm(bySets.own, bySets.enemy) - carried, 25);
    const PlainValue plain = plainEvaluate();
    EXPECT_EQ(freshValue(), plain.value);
}
