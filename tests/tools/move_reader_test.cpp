// Short notation and coordinates, read on positions that make each rule matter.
#include "move_reader.h"

#include "board/board.h"
#include "book/book.h"
#include "frontend/session.h"

#include <gtest/gtest.h>

#include <string>

constexpr const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
constexpr const char* castlingFen = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
constexpr const char* blackCastlingFen = "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1";
constexpr const char* promotionFen = "3r3k/2P5/8/8/8/8/8/K7 w - - 0 1";
constexpr const char* blackPromotionFen = "7k/8/8/8/8/8/2p5/K2R4 b - - 0 1";
constexpr const char* twoKnightsFen = "4k3/8/8/8/8/8/8/N1N1K3 w - - 0 1";
constexpr const char* threeQueensFen = "4k3/8/8/Q6Q/8/8/8/Q3K3 w - - 0 1";
constexpr const char* pinFen = "4k3/8/8/8/4r3/8/4N3/2N1K3 w - - 0 1";
constexpr const char* epFen = "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1";
constexpr const char* bPawnFen = "4k3/8/8/2n5/1P6/8/8/4KB2 w - - 0 1";

// "" if the text is no legal move; coordinates otherwise.
static std::string readAs(const char* fen, const char* text) {
    newGame();
    EXPECT_EQ(fenToBoard(fen), 1);
    const ReadMove read = readMoveText(text);
    EXPECT_EQ(read.move == 0, read.fault != nullptr);
    if (read.fault != nullptr) {
        return "";
    }
    char moveText[6];
    moveToText(moveText, read.move, *board);
    return std::string(moveText).substr(0, moveText[4] == ' ' ? 4 : 5);
}

struct ReadCase {
    const char* name;
    const char* fen;
    const char* text;
    const char* move;
};

constexpr ReadCase readCases[] = {
    {"a pawn move", startFen, "e4", "e2e4"},
    {"a knight move", startFen, "Nf3", "g1f3"},
    {"coordinates", startFen, "g1f3", "g1f3"},
    {"marks behind a move", startFen, "e4!?", "e2e4"},
    {"check marks", startFen, "Nf3+#", "g1f3"},
    {"a move that is not there", startFen, "e5", ""},
    {"coordinates of the other side", startFen, "e7e5", ""},
    {"a blocked piece", startFen, "Bc4", ""},
    {"no text", startFen, "", ""},
    {"marks alone", startFen, "!?", ""},
    {"a result", startFen, "1-0", ""},
    {"a word", startFen, "hello", ""},
    {"a piece alone", startFen, "N", ""},
    {"a square that is none", startFen, "Nf9", ""},
    {"a file that is none", startFen, "Ni3", ""},
    {"a lower-case piece letter is a file", startFen, "nf3", ""},
    {"text behind the square", startFen, "e4x", ""},
    {"bytes beyond letters", startFen, "\xFF\xFE", ""},
    {"short castling", castlingFen, "O-O", "e1g1"},
    {"long castling", castlingFen, "O-O-O", "e1c1"},
    {"castling with zeros", castlingFen, "0-0-0", "e1c1"},
    {"castling with check", castlingFen, "O-O+", "e1g1"},
    {"Black castles short", blackCastlingFen, "O-O", "e8g8"},
    {"Black castles long", blackCastlingFen, "O-O-O", "e8c8"},
    {"castling by the king's squares", blackCastlingFen, "e8g8", "e8g8"},
    {"castling as a king's move", castlingFen, "Kg1", "e1g1"},
    {"castling that is not possible", startFen, "O-O", ""},
    {"a promotion", promotionFen, "c8=Q", "c7c8q"},
    {"a promotion without sign", promotionFen, "c8N", "c7c8n"},
    {"a promotion in brackets", promotionFen, "c8(R)", "c7c8r"},
    {"a promotion by capture", promotionFen, "cxd8=B", "c7d8b"},
    {"a promotion in coordinates", promotionFen, "c7d8q", "c7d8q"},
    {"a promotion in capital coordinates", promotionFen, "c7d8Q", "c7d8q"},
    {"a promotion without piece", promotionFen, "c8", ""},
    {"coordinates without piece", promotionFen, "c7c8", ""},
    {"a promotion to a king", promotionFen, "c8=K", ""},
    {"a promotion to nothing", promotionFen, "c8=", ""},
    {"Black promotes by capture", blackPromotionFen, "cxd1=Q+", "c2d1q"},
    {"two knights without a word which", twoKnightsFen, "Nb3", ""},
    {"told apart by file", twoKnightsFen, "Nab3", "a1b3"},
    {"told apart by square", twoKnightsFen, "Nc1b3", "c1b3"},
    {"a file of neither", twoKnightsFen, "Nhb3", ""},
    {"told apart by rank", threeQueensFen, "Q1e5", "a1e5"},
    {"told apart by file and rank", threeQueensFen, "Qa5e5", "a5e5"},
    {"told apart by file alone is too little", threeQueensFen, "Qae5", ""},
    {"a pinned piece needs no telling apart", pinFen, "Nd3", "c1d3"},
    {"a pinned piece may not move", pinFen, "Nec3", ""},
    {"en passant", epFen, "exd6", "e5d6"},
    {"a capture sign where nothing is taken is no matter", startFen, "Nxf3", "g1f3"},
    {"a capture without sign", bPawnFen, "bc5", "b4c5"},
    {"a pawn of the b-file is no bishop", bPawnFen, "b5", "b4b5"},
    {"a bishop", bPawnFen, "Bb5+", "f1b5"},
};

TEST(MoveReader, ReadsTheseTexts) {
    for (const ReadCase& c : readCases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(readAs(c.fen, c.text), c.move);
    }
}

TEST(MoveReader, LeavesTheBoardAlone) {
    newGame();
    const Scacchiera before = *board;
    EXPECT_EQ(readMoveText("e4").fault, nullptr);
    EXPECT_EQ(board, boardStack.data());
    EXPECT_EQ(board->hashKey, before.hashKey);
}

TEST(MoveReader, WritesBookMovesAsTheEngineReadsThem) {
    constexpr ReadCase cases[] = {
        {"", startFen, "e4", "e2e4"},
        {"", castlingFen, "O-O", "e1g1"},
        {"", castlingFen, "O-O-O", "e1c1"},
        {"", blackCastlingFen, "O-O", "e8g8"},
        {"", blackCastlingFen, "O-O-O", "e8c8"},
        {"", blackPromotionFen, "cxd1=N", "c2d1n"},
        {"", promotionFen, "c8=Q", "c7c8q"},
    };
    for (const ReadCase& c : cases) {
        SCOPED_TRACE(c.text);
        newGame();
        ASSERT_EQ(fenToBoard(c.fen), 1);
        char text[6];
        bookMoveText(text, bookMoveOf(readMoveText(c.text).move));
        EXPECT_STREQ(text, c.move);
    }
    newGame();
    ASSERT_EQ(fenToBoard(castlingFen), 1);
    EXPECT_EQ(bookMoveOf(readMoveText("O-O").move), 4 << 6 | 7) << "the king takes its rook";
}
