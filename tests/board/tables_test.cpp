// Lookup tables and keys.
#include "board/tables.h"

#include "board_support.h"

#include <set>

static i32 sq(const char* name) {
    return (name[0] - 'a') + 8 * (name[1] - '1');
}

TEST(Tables, StepTablesStopAtTheEdges) {
    EXPECT_EQ(PawnAttacks[sq("a2")], squareBit(sq("b3")));
    EXPECT_EQ(PawnAttacks[sq("h2")], squareBit(sq("g3")));
    EXPECT_EQ(PawnAttacks[sq("e1")], 0U);
    EXPECT_EQ(PawnAttacks[sq("e8")], 0U);
    EXPECT_EQ(PawnPushes[sq("e1")], 0U);
    EXPECT_EQ(PawnPushes[sq("e7")], squareBit(sq("e8")));
    EXPECT_EQ(PawnDoublePushes[sq("e2")], squareBit(sq("e4")));
    EXPECT_EQ(PawnDoublePushes[sq("e3")], 0U);
    EXPECT_EQ(PawnChecks[sq("e3")], squareBit(sq("d2")) | squareBit(sq("f2")));
    EXPECT_EQ(PawnChecks[sq("e2")], 0U);
    EXPECT_EQ(PawnChecks[sq("a8")], squareBit(sq("b7")));
    EXPECT_EQ(popCount(KnightAttacks[sq("a1")]), 2);
    EXPECT_EQ(popCount(KnightAttacks[sq("e4")]), 8);
    EXPECT_EQ(popCount(KingAttacks[sq("h8")]), 3);
}

TEST(Tables, BetweenHoldsTheSquaresOfALine) {
    EXPECT_EQ(popCount(Between[sq("a1")][sq("h8")]), 6);
    EXPECT_EQ(Between[sq("a1")][sq("b3")], 0U);
    EXPECT_EQ(Between[sq("a1")][sq("a2")], 0U);
    EXPECT_EQ(Between[sq("e4")][sq("e4")], 0U);
    EXPECT_EQ(Between[sq("e1")][sq("e4")], squareBit(sq("e2")) | squareBit(sq("e3")));
    for (i32 a = 0; a < 64; ++a) {
        for (i32 b = 0; b < 64; ++b) {
            EXPECT_EQ(Between[a][b], Between[b][a]);
        }
    }
}

TEST(Tables, RookOnTheCornerOfAnEmptyBoardReachesFourteenSquares) {
    EXPECT_EQ(rookAttacks(sq("a1"), 0), 0x01010101010101FEULL);
    EXPECT_EQ(rookMagic[0].mask, 0x101010101017EULL);
    EXPECT_EQ(bishopMagic[0].mask, 0x40201008040200ULL);
    EXPECT_EQ(rookMagic[1].mask, 0x202020202027CULL);
    EXPECT_EQ(rookMagic[0].shift, 52U);
    EXPECT_EQ(bishopMagic[0].shift, 58U);
    EXPECT_EQ(bishopMagic[sq("d4")].shift, 55U);
    EXPECT_EQ(rookMagic[63].attacks + 4096 - bishopMagic[0].attacks, 107648);
}

// Rays by walking, written apart from the table's own.
static TBB walk(i32 square, TBB occ, bool diagonal) {
    TBB reached = 0;
    for (i32 df = -1; df <= 1; ++df) {
        for (i32 dr = -1; dr <= 1; ++dr) {
            if ((df != 0 && dr != 0) != diagonal || (df == 0 && dr == 0)) {
                continue;
            }
            i32 f = square % 8 + df;
            i32 r = square / 8 + dr;
            for (; f >= 0 && f < 8 && r >= 0 && r < 8; f += df, r += dr) {
                reached |= TBB{1} << (r * 8 + f);
                if ((occ >> (r * 8 + f) & 1) != 0) {
                    break;
                }
            }
        }
    }
    return reached;
}

TEST(Tables, SlidersReachWhatWalkingReachesForRandomOccupancies) {
    u64 state = 1;
    for (i32 trial = 0; trial < 20000; ++trial) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        const TBB occ = (state ^ state >> 29) & (trial % 2 == 0 ? ~TBB{0} : state << 17);
        const i32 square = trial % 64;
        ASSERT_EQ(rookAttacks(square, occ), walk(square, occ, false));
        ASSERT_EQ(bishopAttacks(square, occ), walk(square, occ, true));
    }
}

TEST(Tables, KeysAreTheFixedOnes) {
    // First draws of SplitMix64 from the fixed state, worked out apart from this program.
    u64 state = 0x2545F4914F6CDD1DULL;
    const auto draw = [&state] {
        state += 0x9E3779B97F4A7C15ULL;
        u64 z = state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    };
    EXPECT_EQ(zobrist.piece[0][0], draw());
    EXPECT_EQ(zobrist.piece[0][1], draw());
    EXPECT_EQ(zobrist.ep[noEpFile], 0U);
    std::set<u64> different;
    for (const auto& row : zobrist.piece) {
        different.insert(row.begin(), row.end());
    }
    EXPECT_EQ(different.size(), 1024U);
}
