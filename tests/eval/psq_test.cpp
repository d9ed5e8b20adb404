// Piece-square tables and material from scratch.
#include "eval_support.h"

struct PlacementCase {
    const char* name;
    i32 row;
    const char* square;
    i32 value;
};

constexpr PlacementCase placementCases[] = {
    {"a pawn about to promote", PAWN, "e7", 30},
    {"pawns c6 and f6 differ, left", PAWN, "c6", 25},
    {"pawns c6 and f6 differ, right", PAWN, "f6", 15},
    {"a centre pawn at home costs", PAWN, "d2", -2},
    {"rank 5, e file", PAWN, "e5", 16},
    {"rank 3, h file", PAWN, "h3", 1},
    {"a knight in the corner", KNIGHT, "a8", -20},
    {"a knight in the centre", KNIGHT, "e4", 20},
    {"a knight at home", KNIGHT, "g1", -5},
    {"a bishop on the rim", BISHOP, "h5", -5},
    {"a bishop at home", BISHOP, "f1", 0},
    {"a rook on b1 costs", ROOK, "b1", -5},
    {"a rook on f1 does not", ROOK, "f1", 0},
    {"a rook on g1 costs", ROOK, "g1", -5},
    {"a rook on the seventh", ROOK, "c7", 10},
    {"a queen at home", QUEEN, "d1", 4},
    {"a queen on e1", QUEEN, "e1", 0},
    {"a queen on g2", QUEEN, "g2", 0},
    {"a castled king in the opening", 6, "g1", 30},
    {"a king castled long in the opening", 6, "c1", 20},
    {"a king on d1 in the opening", 6, "d1", -10},
    {"a king up the board in the opening", 6, "e4", -5},
    {"a central king in the ending", 7, "d5", 15},
    {"a king on g1 in the ending", 7, "g1", -5},
    {"a king on b7 in the ending", 7, "b7", 5},
    {"no piece", EMPTY, "e4", 0},
};

static u32 squareNumber(const char* name) {
    return static_cast<u32>((name[1] - '1') * 8 + name[0] - 'a');
}

TEST(PsqTable, StandsAsTheOwnerSeesTheBoard) {
    for (const PlacementCase& c : placementCases) {
        EXPECT_EQ(psqTable[static_cast<u32>(c.row)][squareNumber(c.square)], c.value) << c.name;
    }
}

TEST(PsqTable, SumsOfRowsAreAsPrinted) {
    // Added up apart from this code: a slip in any entry shows.
    constexpr std::array<i32, 8> sums = {0, 554, 300, 320, 185, -12, -265, 270};
    for (u32 row = 0; row < 8; ++row) {
        i32 sum = 0;
        for (const i32 value : psqTable[row]) {
            sum += value;
        }
        EXPECT_EQ(sum, sums[row]) << row;
    }
}

TEST(KingTerm, WithAllMenIsTheOpeningTable) {
    for (i32 square = 0; square < 64; ++square) {
        EXPECT_EQ(kingTerm(32, square), psqTable[6][static_cast<u32>(square)]);
    }
}

TEST(KingTerm, WithTwoMenIsNearlyTheEndingTableRoundedDown) {
    EXPECT_EQ(kingTerm(2, static_cast<i32>(squareNumber("e4"))), 13);  // (-10 + 450) / 32 = 13.75
    EXPECT_EQ(kingTerm(2, static_cast<i32>(squareNumber("a1"))), -1);  // -10 / 32 = -0.3
    EXPECT_EQ(kingTerm(2, static_cast<i32>(squareNumber("g1"))), -3);  // (60 - 150) / 32 = -2.8
}

struct EasyValCase {
    const char* name;
    const char* fen;
    i32 value;
};

constexpr EasyValCase easyValCases[] = {
    {"the start is even", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0},
    {"bare kings by their place", "8/8/8/8/4k3/8/8/K7 w - - 0 1", -14},
    {"the same for the other side", "8/8/8/8/4k3/8/8/K7 b - - 0 1", 14},
    {"a pawn more, on e2", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", 98},
    {"a knight on e4 against a rook on a8", "r3k3/8/8/8/4N3/8/8/4K3 w - - 0 1", -155},
    {"a queen more, Black's frame", "3qk3/8/8/8/8/8/8/4K3 b - - 0 1", 954},
    {"no kings, no king term", "8/8/8/8/8/8/4P3/8 w - - 0 1", 98},
    {"an empty board", "8/8/8/8/8/8/8/8 w - - 0 1", 0},
    {"of two own kings the lowest counts", "8/8/4K3/8/8/8/8/K7 w - - 0 1", -1},
    {"of two enemy kings the lowest in his frame", "k7/8/8/4k3/8/8/8/8 w - - 0 1", 1},
    {"64 queens wrap in 16 bits",
     "QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ w - - 0 1",
     64 * 950 - 12 - 65536},
};

TEST(EasyVal, CountsMaterialAndPlacement) {
    for (const EasyValCase& c : easyValCases) {
        SCOPED_TRACE(c.name);
        setUp(c.fen);
        const Scacchiera before = *board;
        EXPECT_EQ(i32{easyVal()}, c.value);
        EXPECT_TRUE(sameRecord(*board, before));
    }
}
