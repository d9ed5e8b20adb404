// Dead draws by material.
#include "eval_support.h"

struct MaterialCase {
    const char* name;
    const char* fen;
    bool enough;
};

constexpr MaterialCase materialCases[] = {
    {"kings alone", "8/8/8/8/4k3/8/8/K7 w - - 0 1", false},
    {"kings alone on the rim", "k7/8/8/8/8/8/8/K7 w - - 0 1", false},
    {"a lone knight, the bare king in the centre", "8/8/8/8/4k3/8/8/KN6 w - - 0 1", false},
    {"a lone knight, the bare king in the corner, the knight's side to move", "8/8/8/8/4K3/8/8/kN6 w - - 0 1",
     true},
    {"a lone knight, the bare king in the corner and to move", "8/8/8/8/4K3/8/8/kN6 b - - 0 1", true},
    {"a lone bishop, the bare king in the centre", "8/8/8/8/4k3/8/8/KB6 b - - 0 1", false},
    {"a lone bishop, the bare king on file h", "8/8/8/7k/8/8/8/KB6 b - - 0 1", true},
    {"the piece's own king on the rim does not count", "8/8/8/4k3/8/8/8/BK6 w - - 0 1", false},
    {"minor piece against minor piece in the centre", "8/2n5/8/4k3/8/3K4/5B2/8 w - - 0 1", false},
    {"minor piece against minor piece, one king on the rim", "8/2n5/8/4k3/8/8/5B2/3K4 w - - 0 1", true},
    {"two knights", "8/8/8/8/4k3/8/3NN3/3K4 w - - 0 1", true},
    {"a rook against a knight", "8/8/4n3/8/4k3/8/3R4/3K4 w - - 0 1", true},
    {"a queen", "8/8/8/8/4k3/3K4/8/3Q4 b - - 0 1", true},
    {"an own pawn", "8/8/8/8/4k3/3K4/4P3/8 w - - 0 1", true},
    {"an enemy pawn", "8/4p3/8/8/4k3/3K4/8/8 w - - 0 1", true},
    {"an empty board", "8/8/8/8/8/8/8/8 w - - 0 1", false},
    {"a knight and no kings", "8/8/8/8/8/8/8/N7 w - - 0 1", false},
};

TEST(SufficientMaterial, TellsDeadDraws) {
    for (const MaterialCase& c : materialCases) {
        SCOPED_TRACE(c.name);
        setUp(c.fen);
        EXPECT_EQ(sufficientMaterial() != 0, c.enough);
        if (!c.enough) {
            EXPECT_EQ(i32{evaluate()}, 0);
        }
    }
}

TEST(SufficientMaterial, ALoneKnightAgainstAKingOnTheRimIsValued) {
    setUp("8/8/8/8/4K3/8/8/kN6 w - - 0 1");
    EXPECT_GT(i32{evaluate()}, 200);
}
