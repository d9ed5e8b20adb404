// Move trees against known counts of leaves.
#include "board_support.h"

struct PerftCase {
    const char* name;
    const char* fen;
    i32 depth;
    u64 leaves;
};

// Counts of positions that single out one rule each, as other programs give them.
static const PerftCase ruleCases[] = {
    {"start position, depth 1", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 1, 20},
    {"illegal en passant, pinned along a diagonal", "3k4/3p4/8/K1P4r/8/8/8/8 b - - 0 1", 6, 1134888},
    {"illegal en passant, bishop's line", "8/8/4k3/8/2p5/8/B2P1K2/8 w - - 0 1", 6, 1038514},
    {"en passant gives check", "8/8/1k6/2b5/2pP4/8/5K2/8 b - d3 0 1", 6, 1440467},
    {"short castling gives check", "5k2/8/8/8/8/8/8/4K2R w K - 0 1", 6, 661072},
    {"long castling gives check", "3k4/8/8/8/8/8/8/R3K3 w Q - 0 1", 6, 803711},
    {"rights lost by capture", "r3k2r/1b4bq/8/8/8/8/7B/R3K2R w KQkq - 0 1", 4, 1274206},
    {"castling prevented", "r3k2r/8/3Q4/8/8/5q2/8/R3K2R b KQkq - 0 1", 4, 1720476},
    {"promotion out of check", "2K2r2/4P3/8/8/8/8/8/3k4 w - - 0 1", 6, 3821001},
    {"discovered check", "8/8/1P2K3/8/2n5/1q6/8/5k2 b - - 0 1", 5, 1004658},
    {"promotion gives check", "4k3/1P6/8/8/8/8/K7/8 w - - 0 1", 6, 217342},
    {"many promotions", "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1", 5, 3605103},
    {"rooks and rights", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", 5, 7594526},
    {"rights of one rook", "r3k2r/8/8/8/8/8/8/1R2K2R b Kkq - 0 1", 4, 334705},
    {"knights only", "8/1n4N1/2k5/8/8/5K2/4N1n1/8 w - - 0 1", 4, 42270},
    {"bishops only", "B6b/8/8/8/2K5/5k2/8/b6B b - - 0 1", 5, 530585},
    {"pawns only", "8/2k1p3/3pP3/3P2K1/8/8/8/8 w - - 0 1", 6, 34834},
    {"pawns with promotions", "8/Pk6/8/8/8/8/6Kp/8 w - - 0 1", 5, 90606},
    {"black to move in the start position", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1", 4,
     197281},
    {"rooks against rooks", "R6r/8/8/2K5/5k2/8/8/r6R w - - 0 1", 4, 771461},
};

// Standard counts of trees that hold stalemates above the leaves: each adds one here.
struct StalemateCase {
    PerftCase standard;
    u64 stalemates;
};
static const StalemateCase stalemateCases[] = {
    {{"underpromotion gives check", "8/P1k5/K7/8/8/8/8/8 w - - 0 1", 6, 92683}, 8},
    {{"double check", "8/5k2/8/5N2/5Q2/2K5/8/8 w - - 0 1", 4, 23527}, 13},
};

static void expectLeaves(const PerftCase& c, i32 depth, u64 leaves) {
    SCOPED_TRACE(c.name);
    setUpPosition(c.fen);
    const Scacchiera before = *board;
    EXPECT_EQ(perftOrOne(depth), leaves);
    EXPECT_EQ(board, boardStack.data());
    EXPECT_TRUE(sameRecord(*board, before));
}

TEST(Perft, PositionsOfOneRuleHaveTheKnownCounts) {
    for (const PerftCase& c : ruleCases) {
        expectLeaves(c, c.depth, c.leaves);
    }
}

TEST(Perft, DepthZeroIsOneLeaf) {
    setUpPosition("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
    EXPECT_EQ(perftOrOne(0), 1U);
    EXPECT_EQ(SearchInfo.nodes, 0U);
}

TEST(Perft, CountsNothingForMateAndOneForStalemate) {
    setUpPosition("rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3");
    EXPECT_EQ(perft(1), 0U);
    EXPECT_EQ(perft(3), 0U);
    setUpPosition("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1");
    EXPECT_EQ(perft(1), 1U);
    EXPECT_EQ(perft(3), 1U);
}

TEST(Perft, AStalemateAboveTheLeavesAddsOne) {
    for (const StalemateCase& c : stalemateCases) {
        expectLeaves(c.standard, c.standard.depth, c.standard.leaves + c.stalemates);
    }
}

TEST(Perft, CountsOneWhereAllSubtreesCameToNothing) {
    // White's two moves, a6xb7 and c6xb7, both mate.
    setUpPosition("kn6/ppn5/P1P3r1/8/6r1/8/4r3/7K w - - 0 1");
    EXPECT_EQ(perft(1), 2U);
    EXPECT_EQ(perft(2), 1U);
}
