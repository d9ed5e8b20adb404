#include "san.h"
#include "board/board.h"
#include "frontend/session.h"
#include "move_reader.h"
#include "rules.h"

#include <gtest/gtest.h>

namespace {

struct SanCase {
    const char* name;
    const char* fen;
    const char* move;
    const char* san;
};

constexpr SanCase sanCases[] = {
    {"a pawn", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "e2e4", "e4"},
    {"a pawn that captures", "4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1", "e4d5", "exd5"},
    {"en passant", "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", "exd6"},
    {"a promotion", "8/P6k/8/8/8/8/8/4K3 w - - 0 1", "a7a8n", "a8=N"},
    {"a promotion of Black's that captures and checks", "8/k7/8/8/8/8/1p6/R3K3 b - - 0 1", "b2a1q",
     "bxa1=Q+"},
    {"a piece", "4k3/8/8/8/8/8/8/4K1N1 w - - 0 1", "g1f3", "Nf3"},
    {"the file tells two apart", "4k3/8/8/8/8/8/8/RN2K2R w - - 0 1", "h1g1", "Rg1"},
    {"the file", "4k3/8/8/8/8/8/4K3/R6R w - - 0 1", "h1d1", "Rhd1"},
    {"the rank", "4k3/R7/8/8/8/8/8/R3K3 w - - 0 1", "a1a4", "R1a4"},
    {"the file goes before the rank", "4k3/8/8/8/1N3N2/8/8/4K3 w - - 0 1", "b4d5", "Nbd5"},
    {"both", "7k/8/8/Q1Q5/8/Q7/7K/8 w - - 0 1", "a5b4", "Qa5b4"},
    {"a man that is pinned does not count", "4k3/8/8/8/1b6/2N5/8/4K1N1 w - - 0 1", "g1e2", "Ne2"},
    {"castling short", "4k3/8/8/8/8/8/8/4K2R w K - 0 1", "e1g1", "O-O"},
    {"castling long with check", "3k4/8/8/8/8/8/8/R3K3 w Q - 0 1", "e1c1", "O-O-O+"},
    {"castling of Black's", "r3k3/8/8/8/8/8/8/4K3 b q - 0 1", "e8c8", "O-O-O"},
    {"mate", "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1", "d1d8", "Rd8#"},
};

void setUpFen(const char* fen) {
    newGame();
    ASSERT_EQ(fenToBoard(fen), 1);
}

}  // namespace

TEST(San, SaysWhatIsNeededAndNoMore) {
    for (const SanCase& c : sanCases) {
        SCOPED_TRACE(c.name);
        setUpFen(c.fen);
        const Standing standing = standingHere();
        const LegalMove* const legal = findLegal(standing, std::string_view(c.move));
        ASSERT_NE(legal, nullptr);
        const Scacchiera* const before = board;
        EXPECT_EQ(sanOf(legal->move), c.san);
        EXPECT_EQ(board, before);
    }
}

TEST(San, WhatIsWrittenIsReadAsTheSameMove) {
    for (const SanCase& c : sanCases) {
        setUpFen(c.fen);
        for (const LegalMove& legal : standingHere().legal) {
            EXPECT_EQ(readMoveText(sanOf(legal.move)).move, legal.move) << c.fen << " " << legal.text;
        }
    }
}

TEST(San, ALineIsToldMoveByMove) {
    newGame();
    std::vector<Mossa> moves;
    for (const char* text : {"f2f3", "e7e5", "g2g4", "d8h4"}) {
        const Standing standing = standingHere();
        moves.push_back(findLegal(standing, std::string_view(text))->move);
        makeMove(moves.back());
    }
    newGame();
    EXPECT_EQ(sanLine(moves), (std::vector<std::string>{"f3", "e5", "g4", "Qh4#"}));
    EXPECT_EQ(board, boardStack.data());
}
