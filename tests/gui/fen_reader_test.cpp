#include "fen_reader.h"

#include "board/board.h"
#include "frontend/session.h"

#include <gtest/gtest.h>

namespace {

struct FenCase {
    const char* name;
    const char* given;
    const char* fen;
};

constexpr FenCase readable[] = {
    {"the start", startFen, startFen},
    {"four fields", "4k3/8/8/8/8/8/8/4K3 w - -", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
    {"the board alone", "4k3/8/8/8/8/8/8/4K3", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
    {"blanks between the fields", "  4k3/8/8/8/8/8/8/4K3   b  -\t- 3 9", "4k3/8/8/8/8/8/8/4K3 b - - 3 9"},
    {"digits that follow each other", "4k3/8/8/8/8/8/8/22K3 w - - 0 1", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
    {"rights in any order", "r3k2r/8/8/8/8/8/8/R3K2R w qkQK - 0 1", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1"},
    {"rights by the rooks' files", "r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1",
     "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1"},
    {"a right without its rook", "r3k2r/8/8/8/8/8/8/R3K3 w KQkq - 0 1", "r3k2r/8/8/8/8/8/8/R3K3 w Qkq - 0 1"},
    {"rights with the king away", "r3k2r/8/8/8/8/8/8/R2K3R w KQkq - 0 1",
     "r3k2r/8/8/8/8/8/8/R2K3R w kq - 0 1"},
    {"en passant behind a pawn", "4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1", "4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1"},
    {"en passant without a pawn", "4k3/8/8/8/8/8/8/4K3 b - e3 0 1", "4k3/8/8/8/8/8/8/4K3 b - - 0 1"},
    {"en passant of the wrong side", "4k3/8/8/8/4P3/8/8/4K3 w - e3 0 1", "4k3/8/8/8/4P3/8/8/4K3 w - - 0 1"},
    {"a negative clock", "4k3/8/8/8/8/8/8/4K3 w - - -5 -7", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
    {"a clock beyond every rule", "4k3/8/8/8/8/8/8/4K3 w - - 99999999999999999999 1",
     "4k3/8/8/8/8/8/8/4K3 w - - 120 1"},
    {"clocks that are no numbers", "4k3/8/8/8/8/8/8/4K3 w - - x y", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
};

struct FaultCase {
    const char* name;
    const char* given;
    const char* fault;
};

constexpr const char* badBoard = "the board is not eight ranks of eight squares";

constexpr FaultCase faulty[] = {
    {"nothing", "", badBoard},
    {"seven ranks", "4k3/8/8/8/8/8/4K3 w - - 0 1", badBoard},
    {"nine ranks", "4k3/8/8/8/8/8/8/8/4K3 w - - 0 1", badBoard},
    {"seven squares", "4k3/8/8/7/8/8/8/4K3 w - - 0 1", badBoard},
    {"nine squares", "4k3/8/8/81/8/8/8/4K3 w - - 0 1", badBoard},
    {"a digit of nine", "4k3/8/8/9/8/8/8/4K3 w - - 0 1", badBoard},
    {"an unknown man", "4k3/8/8/7x/8/8/8/4K3 w - - 0 1", badBoard},
    {"no king", "8/8/8/8/8/8/8/4K3 w - - 0 1", "each side needs one king"},
    {"two kings", "4k3/8/8/8/8/8/8/K3K3 w - - 0 1", "each side needs one king"},
    {"a pawn on the last rank", "4k2P/8/8/8/8/8/8/4K3 w - - 0 1", "a pawn stands on the first or last rank"},
    {"a pawn on the first rank", "4k3/8/8/8/8/8/8/p3K3 w - - 0 1", "a pawn stands on the first or last rank"},
    {"an unknown side", "4k3/8/8/8/8/8/8/4K3 x - - 0 1", "the side to move is neither w nor b"},
    {"unknown rights", "4k3/8/8/8/8/8/8/4K3 w KX - 0 1", "the castling rights are not of KQkq"},
    {"an en passant rank that cannot be", "4k3/8/8/8/8/8/8/4K3 w - e4 0 1",
     "the en passant field is no square"},
    {"a king that can be taken", "4k3/8/8/8/8/8/8/4R1K1 w - - 0 1", "the side to move can take the king"},
    {"kings side by side", "8/8/8/8/8/8/4k3/4K3 w - - 0 1", "the side to move can take the king"},
};

}  // namespace

TEST(FenReader, WritesWhatCanBePlayedInOneForm) {
    for (const FenCase& c : readable) {
        SCOPED_TRACE(c.name);
        const FenReading reading = readFen(c.given);
        EXPECT_EQ(reading.fault, "");
        EXPECT_EQ(reading.fen, c.fen);
    }
}

TEST(FenReader, TellsWhatIsWrong) {
    for (const FaultCase& c : faulty) {
        SCOPED_TRACE(c.name);
        const FenReading reading = readFen(c.given);
        EXPECT_EQ(reading.fault, c.fault);
        EXPECT_EQ(reading.fen, "");
    }
}

TEST(FenReader, LeavesTheBoardAlone) {
    newGame();
    const Scacchiera before = *board;
    (void)readFen("4k3/8/8/8/8/8/8/4K3 b - - 5 9");
    EXPECT_EQ(board, boardStack.data());
    EXPECT_EQ(before.hashKey, board->hashKey);
    EXPECT_EQ(before.side, board->side);
}
