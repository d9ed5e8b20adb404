// Reading positions, and the text of moves and of the board.
#include "board_support.h"
#include "frontend/session.h"

TEST(Fen, ReadsTheStartPosition) {
    newGame();
    board->psqScore = 0;
    const Scacchiera start = *board;
    EXPECT_EQ(start.side, 0x000000000000FFFFU);
    EXPECT_EQ(start.pbq, 0x2CFF00000000FF2CU);
    EXPECT_EQ(start.nbk, 0x7600000000000076U);
    EXPECT_EQ(start.rqk, 0x9900000000000099U);
    ASSERT_EQ(fenToBoard("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"), 1);
    EXPECT_TRUE(sameRecord(*board, start));
    EXPECT_EQ(board->psqScore, 0);
}

struct FenCase {
    const char* name;
    const char* fen;
    i32 accepted;
};
static const FenCase fenCases[] = {
    {"an empty board", "8/8/8/8/8/8/8/8 w - -", 1},
    {"four fields", "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - -", 1},
    {"runs of blanks", "  8/k7/8/8/8/8/8/K7   w   -   -   5   1", 1},
    {"anything behind the sixth field", "8/k7/8/8/8/8/8/K7 w - - 5 x y z", 1},
    {"runs of slashes", "/8//k7/8/8/8/8/8/K7/ w - -", 1},
    {"more than eight groups", "8/k7/8/8/8/8/8/K7/9x w - -", 1},
    {"a ninth character", "PPPPPPPPX/k7/8/8/8/8/8/K7 w - -", 1},
    {"half-move clock -1", "8/k7/8/8/8/8/8/K7 w - - -1 1", 0},
    {"letters for the clock read as 0", "8/k7/8/8/8/8/8/K7 w - - x 1", 1},
    {"en passant on rank 3 with White to move", "8/k7/8/8/8/8/8/K7 w - e3 0 1", 0},
    {"en passant on rank 6 with Black to move", "8/k7/8/8/8/8/8/K7 b - e6 0 1", 0},
    {"en passant on rank 6 with White to move", "8/k7/8/8/8/8/8/K7 w - e6 0 1", 1},
    {"en passant file i", "8/k7/8/8/8/8/8/K7 w - i6 0 1", 0},
    {"en passant of one letter", "8/k7/8/8/8/8/8/K7 w - e 0 1", 0},
    {"three pawns alone in a rank", "PPP/k7/8/8/8/8/8/K7 w - -", 0},
    {"a 9 in a rank", "9/k7/8/8/8/8/8/K7 w - -", 0},
    {"a 0 in a rank", "0PPPPPPPP/k7/8/8/8/8/8/K7 w - -", 0},
    {"a strange letter", "ppppxppp/k7/8/8/8/8/8/K7 w - -", 0},
    {"seven groups", "8/k7/8/8/8/8/K7 w - -", 0},
    {"no side", "8/k7/8/8/8/8/8/K7", 0},
    {"a side of two letters", "8/k7/8/8/8/8/8/K7 ww - -", 0},
    {"a capital side", "8/k7/8/8/8/8/8/K7 W - -", 0},
    {"no castling field", "8/k7/8/8/8/8/8/K7 w", 0},
    {"no en passant field", "8/k7/8/8/8/8/8/K7 w -", 0},
    {"rights repeated in any order", "8/k7/8/8/8/8/8/K7 w qqKKQk - 0 1", 1},
    {"a strange right", "8/k7/8/8/8/8/8/K7 w KX - 0 1", 0},
    {"a dash behind a right", "8/k7/8/8/8/8/8/K7 w K- - 0 1", 0},
    {"empty text", "", 0},
    {"one blank", " ", 0},
};
TEST(Fen, AcceptsAndRejects) {
    for (const FenCase& c : fenCases) {
        SCOPED_TRACE(c.name);
        newGame();
        EXPECT_EQ(fenToBoard(c.fen), c.accepted);
        EXPECT_EQ(board, boardStack.data());
    }
}

TEST(Fen, ABadSideLeavesTheRecordAsItWas) {
    newGame();
    const Scacchiera before = *board;
    EXPECT_EQ(fenToBoard("8/8/8/8/8/8/8/8 x - - 0 1"), 0);
    EXPECT_TRUE(sameRecord(*board, before));
}

TEST(Fen, ABadClockIsSeenWhenTheMenStand) {
    newGame();
    EXPECT_EQ(fenToBoard("8/k7/8/8/8/8/8/K7 w - - -1 1"), 0);
    EXPECT_EQ(popCount(occupied(*board)), 2);
}

TEST(Fen, AFieldThatIsRefusedLeavesItsOwnPartOfTheRecord) {
    newGame();
    EXPECT_EQ(fenToBoard("8/k7/8/8/8/8/8/K7 w"), 0);
    EXPECT_EQ(board->castleRights, OWN_LONG | OWN_SHORT | OPPONENT_LONG | OPPONENT_SHORT);
    board->rule50 = 7;
    EXPECT_EQ(fenToBoard("8/k7/8/8/8/8/8/K7 w - - -1 1"), 0);
    EXPECT_EQ(board->rule50, 7);
    board->epFile = 3;
    EXPECT_EQ(fenToBoard("8/k7/8/8/8/8/8/K7 w - e3 0 1"), 0);
    EXPECT_EQ(board->epFile, 3);
}

TEST(Fen, TheClockIsCutToAByte) {
    newGame();
    ASSERT_EQ(fenToBoard("8/k7/8/8/8/8/8/K7 w - - 300 1"), 1);
    EXPECT_EQ(board->rule50, 300 - 256);
    ASSERT_EQ(fenToBoard("8/k7/8/8/8/8/8/K7 w - - 12abc 1"), 1);
    EXPECT_EQ(board->rule50, 12);
    ASSERT_EQ(fenToBoard("8/k7/8/8/8/8/8/K7 w - - 99999999999 1"), 1);
    EXPECT_EQ(board->rule50, 255) << "saturated at 32 bits";
}

TEST(Fen, ADigitThatOverrunsARankEmptiesTheRankBefore) {
    newGame();
    ASSERT_EQ(fenToBoard("PPPPPPPP/N8/8/8/8/8/8/K6k w - - 0 1"), 1);
    // The 8 behind the knight of rank 7 runs over a8.
    EXPECT_EQ(pieceCode(*board, 56), EMPTY);
    EXPECT_EQ(board->side >> 56 & 1, 1U) << "deliberate: the side bit stays";
    EXPECT_EQ(pieceCode(*board, 57), PAWN);
    ASSERT_EQ(fenToBoard("P8/8/8/8/8/8/8/K6k w - - 0 1"), 1) << "the eighth rank overruns the board";
    EXPECT_EQ(pieceCode(*board, 56), PAWN);
}

TEST(Fen, BlackToMoveStandsInBlacksFrame) {
    newGame();
    ASSERT_EQ(fenToBoard("r3k3/8/8/8/8/8/8/4K2R b Kq - 3 1"), 1);
    EXPECT_EQ(board->side, squareBit(0) | squareBit(4));
    EXPECT_EQ(board->castleRights, OWN_LONG | OPPONENT_SHORT);
    EXPECT_EQ(board->stateFlags, blackToMoveFlag);
    EXPECT_EQ(board->rule50, 3);
}

TEST(Fen, ATextTooLongIsRejectedBeforeAnythingIsWritten) {
    newGame();
    const Scacchiera before = *board;
    const std::string fen = "8/k7/8/8/8/8/8/K7 w - - 5 1";
    EXPECT_EQ(fenToBoard((fen + std::string(215 - fen.size(), ' ')).c_str()), 1);
    newGame();
    EXPECT_EQ(fenToBoard((fen + std::string(216 - fen.size(), ' ')).c_str()), 0);
    EXPECT_EQ(fenToBoard(std::string(4000, 'p').c_str()), 0);
    EXPECT_TRUE(sameRecord(*board, before));
}

TEST(MoveText, IsInRealCoordinatesWithABlankOrALetter) {
    char text[6];
    newGame();
    moveToText(text, makeMossa(MOVE_PAWN, 12, 28), *board);
    EXPECT_STREQ(text, "e2e4 ");
    board->stateFlags = blackToMoveFlag;
    moveToText(text, makeMossa(MOVE_PAWN, 12, 28), *board);
    EXPECT_STREQ(text, "e7e5 ");
    moveToText(text, makeMossa(PROMO, 48, 56, KNIGHT), *board);
    EXPECT_STREQ(text, "a2a1n");
    board->stateFlags = 0;
    moveToText(text, makeMossa(PROMO_CAPT, 48, 57, QUEEN), *board);
    EXPECT_STREQ(text, "a7b8q");
    moveToText(text, makeMossa(PROMO, 48, 56, ROOK), *board);
    EXPECT_STREQ(text, "a7a8r");
    moveToText(text, makeMossa(PROMO, 48, 56, BISHOP), *board);
    EXPECT_STREQ(text, "a7a8b");
    moveToText(text, makeMossa(CASTLE_SHORT, 4, 6), *board);
    EXPECT_STREQ(text, "e1g1 ");
}

static std::string printed() {
    testing::internal::CaptureStdout();
    printBoard();
    return testing::internal::GetCapturedStdout();
}

static const char* afterE4 = R"(

  +---+---+---+---+---+---+---+---+
8 | t | c | a | d | r | a | c | t |
  +---+---+---+---+---+---+---+---+
7 | p | p | p | p | p | p | p | p |
  +---+---+---+---+---+---+---+---+
6 |   |   |   |   |   |   |   |   |
  +---+---+---+---+---+---+---+---+
5 |   |   |   |   |   |   |   |   |
  +---+---+---+---+---+---+---+---+
4 |   |   |   |   | P |   |   |   |
  +---+---+---+---+---+---+---+---+
3 |   |   |   |   |   |   |   |   |
  +---+---+---+---+---+---+---+---+
2 | P | P | P | P |   | P | P | P |
  +---+---+---+---+---+---+---+---+
1 | T | C | A | D | R | A | C | T |
  +---+---+---+---+---+---+---+---+

    A   B   C   D   E   F   G   H

)";

TEST(BoardPrint, HasWhiteAtTheBottomWhoeverIsToMove) {
    setUpPosition("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
    play("e2e4");
    const Scacchiera before = *board;
    EXPECT_EQ(printed(), afterE4);
    EXPECT_TRUE(sameRecord(*board, before));
}
