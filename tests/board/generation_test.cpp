// The generators' rules one by one; the lists as a whole are in golden_test.cpp.
#include "board_support.h"
#include "frontend/session.h"
#include "search/ordering.h"

#include <algorithm>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

static std::vector<std::string> quiets() {
    QuietList list;
    genQuiets(list);
    return texts(list);
}

static std::vector<std::string> captures() {
    MoveList list;
    genCaptures(list);
    return texts(list);
}

TEST(Generation, StartPositionHasTwentyQuietMovesKnightsFirst) {
    setUpPosition("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
    EXPECT_THAT(captures(), IsEmpty());
    EXPECT_THAT(quiets(),
                ElementsAre("b1a3", "b1c3", "g1f3", "g1h3", "a2a3", "a2a4", "b2b3", "b2b4", "c2c3", "c2c4",
                            "d2d3", "d2d4", "e2e3", "e2e4", "f2f3", "f2f4", "g2g3", "g2g4", "h2h3", "h2h4"));
}

TEST(Generation, PromotionsAreCapturesInOrderQueenRookBishopKnight) {
    setUpPosition("8/4P3/8/8/8/k7/8/K7 w - - 0 1");
    MoveList list;
    genCaptures(list);
    EXPECT_THAT(texts(list), ElementsAre("e7e8q", "e7e8r", "e7e8b", "e7e8n"));
    EXPECT_EQ(list.entries[0].score, 85);
    EXPECT_EQ(list.entries[1].score, -1);
    EXPECT_EQ(list.entries[2].score, -2);
    EXPECT_EQ(list.entries[3].score, -3);
    EXPECT_THAT(quiets(), Not(Contains("e7e8")));
}

TEST(Generation, CapturesScoreVictimFirstThenCheapestAttacker) {
    setUpPosition("k7/8/8/3q4/2P1P3/1B6/8/K2R4 w - - 0 1");
    MoveList list;
    genCaptures(list);
    ASSERT_THAT(texts(list), ElementsAre("c4d5", "e4d5", "d1d5"));
    EXPECT_EQ(list.entries[0].score, 85);
    EXPECT_EQ(list.entries[2].score, 82);
    setUpPosition("k7/8/8/8/8/8/1p6/K7 w - - 0 1");
    genCaptures(list);
    ASSERT_THAT(texts(list), ElementsAre("a1b2"));
    EXPECT_EQ(list.entries[0].score, 16);
}

TEST(Generation, APromotionThatCapturesAQueenScoresAsAnyPromotion) {
    setUpPosition("3q3k/4P3/8/8/8/8/8/K7 w - - 0 1");
    MoveList list;
    genCaptures(list);
    EXPECT_EQ(textOf(list.entries[1].move), "e7d8r");
    EXPECT_EQ(list.entries[1].score, -1);
}

TEST(Generation, EnPassantComesFirstAndOnlyWithAFile) {
    setUpPosition("4k3/8/8/3pPp2/8/8/8/4K3 w - d6 0 1");
    MoveList list;
    genCaptures(list);
    ASSERT_THAT(texts(list), ElementsAre("e5d6"));
    EXPECT_EQ(list.entries[0].score, 21);
    genCapturesNoEp(list);
    EXPECT_EQ(list.count, 0);
    setUpPosition("4k3/8/8/3pPp2/8/8/8/4K3 w - - 0 1");
    genCaptures(list);
    EXPECT_EQ(list.count, 0);
    setUpPosition("4k3/8/8/P6p/8/8/8/4K3 w - h6 0 1");
    genCaptures(list);
    EXPECT_EQ(list.count, 0) << "no capture round the edge";
}

TEST(Generation, ABlockedPawnHasNoDoubleStep) {
    setUpPosition("4k3/8/8/8/8/p7/P7/4K3 w - - 0 1");
    EXPECT_THAT(quiets(), Not(Contains("a2a4")));
    setUpPosition("4k3/8/8/8/p7/8/P7/4K3 w - - 0 1");
    EXPECT_THAT(quiets(), Contains("a2a3"));
    EXPECT_THAT(quiets(), Not(Contains("a2a4")));
}

struct CastlingCase {
    const char* name;
    const char* fen;
    bool longPasses;
    bool shortPasses;
};
static const CastlingCase castlingCases[] = {
    {"free", "4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", true, true},
    {"no rights", "4k3/8/8/8/8/8/8/R3K2R w - - 0 1", false, false},
    {"rook attacks f1", "4kr2/8/8/8/8/8/8/R3K2R w KQ - 0 1", true, false},
    {"rook attacks b1", "1r2k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", true, true},
    {"a piece on b1", "4k3/8/8/8/8/8/8/RN2K2R w KQ - 0 1", false, true},
    {"in check", "4k3/4r3/8/8/8/8/8/R3K2R w KQ - 0 1", false, false},
    {"knight attacks d1", "4k3/8/8/8/8/8/1n6/R3K2R w KQ - 0 1", false, true},
    {"knight attacks g1", "4k3/8/8/8/8/7n/8/R3K2R w KQ - 0 1", true, false},
    {"pawn attacks c1", "4k3/8/8/8/8/8/1p6/R3K2R w KQ - 0 1", false, true},
    {"pawn attacks g1", "4k3/8/8/8/8/8/7p/R3K2R w KQ - 0 1", true, false},
    {"king on b2", "8/8/8/8/8/8/1k6/R3K2R w KQ - 0 1", false, true},
    {"king on g2", "8/8/8/8/8/8/6k1/R3K2R w KQ - 0 1", true, false},
    {"rights alone are the evidence", "4k3/8/8/8/8/8/8/8 w KQ - 0 1", true, true},
};
TEST(Generation, CastlingPassesItsTests) {
    for (const CastlingCase& c : castlingCases) {
        SCOPED_TRACE(c.name);
        setUpPosition(c.fen);
        QuietList list;
        genQuiets(list);
        const auto has = [&list](Mossa move) {
            return std::find(list.entries.begin(), list.entries.begin() + list.count, move) !=
                   list.entries.begin() + list.count;
        };
        EXPECT_EQ(has(132134), c.longPasses);
        EXPECT_EQ(has(394262), c.shortPasses);
    }
}

TEST(Generation, ADoubleCheckIsAnsweredByTheKingAlone) {
    setUpPosition("4k3/8/8/8/8/3n4/8/r3K2R w K - 0 1");
    ASSERT_EQ(popCount(inCheck()), 2);
    MoveList list;
    QuietList rest;
    genEvasions(inCheck(), list, rest);
    for (i32 i = 0; i < rest.count; ++i) {
        EXPECT_EQ(moveKind(rest.entries[i]), MOVE_KING);
    }
    EXPECT_EQ(list.count, 0);
    EXPECT_GT(rest.count, 0);
}

TEST(Generation, AKnightsCheckIsNotBlocked) {
    setUpPosition("4k3/8/8/3pP3/8/5n2/6P1/R2QK3 w - d6 0 1");
    MoveList list;
    QuietList rest;
    genEvasions(inCheck(), list, rest);
    EXPECT_THAT(texts(list), ElementsAre("d1f3", "e5d6", "g2f3"));
    for (i32 i = 0; i < rest.count; ++i) {
        EXPECT_EQ(moveKind(rest.entries[i]), MOVE_KING);
    }
}

TEST(Generation, PawnPushesForTheTablesCarryAKnightsPromoByte) {
    setUpPosition("4k3/1P6/8/8/8/8/P7/4K3 w - - 0 1");
    MoveList list;
    genPawnQuiets(list);
    EXPECT_THAT(texts(list), ElementsAre("b7b8q", "b7b8r", "b7b8b", "b7b8n", "a2a3n", "a2a4n"));
    EXPECT_EQ(list.entries[4].score, 0);
}

TEST(Generation, AKnightThatDiscoversAndChecksStandsTwice) {
    setUpPosition("4k3/8/8/8/4N3/8/8/4RK2 w - - 0 1");
    QuietList list;
    genChecks(list);
    const std::vector<std::string> all = texts(list);
    EXPECT_EQ(std::count(all.begin(), all.end(), "e4f6"), 2);
    EXPECT_EQ(std::count(all.begin(), all.end(), "e4c3"), 1);
}

TEST(Generation, CastlingMayGiveCheck) {
    setUpPosition("5k2/8/8/8/8/8/8/4K2R w K - 0 1");
    QuietList list;
    genChecks(list);
    EXPECT_THAT(texts(list), Contains("e1g1"));
}

TEST(Generation, QuietMovesWithoutPawnsAreTheSameStages) {
    setUpPosition("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1");
    QuietList all;
    QuietList pieces;
    genQuiets(all);
    genPieceQuiets(pieces);
    ASSERT_LT(pieces.count, all.count);
    EXPECT_TRUE(
        std::equal(pieces.entries.begin(), pieces.entries.begin() + pieces.count, all.entries.begin()));
    EXPECT_EQ(all.entries[0], 132134U) << "long castling first";
    EXPECT_EQ(all.entries[1], 394262U);
}

// Boards that no game reaches: the lists hold all moves, and room is left.
TEST(Generation, CrowdedBoardsStayInsideTheLists) {
    u64 state = 7;
    i32 mostCaptures = 0;
    i32 mostQuiets = 0;
    const std::string men = "QQQQQNNRBKPqqqnrbkp";
    for (i32 trial = 0; trial < 20000; ++trial) {
        std::string fen;
        for (i32 rank = 0; rank < 8; ++rank) {
            for (i32 file = 0; file < 8; ++file) {
                state = state * 6364136223846793005ULL + 1442695040888963407ULL;
                const u64 draw = state >> 33;
                fen += draw % 100 < static_cast<u64>(trial % 100)
                           ? men[static_cast<std::size_t>(draw / 100 % men.size())]
                           : '1';
            }
            fen += rank < 7 ? "/" : " w KQkq e6 0 1";
        }
        newGame();
        ASSERT_EQ(fenToBoard(fen.c_str()), 1);
        MoveList list;
        QuietList rest;
        genCaptures(list);
        genQuiets(rest);
        mostCaptures = std::max(mostCaptures, list.count);
        mostQuiets = std::max(mostQuiets, rest.count);
        genChecks(rest);
        mostQuiets = std::max(mostQuiets, rest.count);
        if (inCheck() != 0) {
            genEvasions(inCheck(), list, rest);
        }
        MoveArray moves;
        i32 count = 0;
        legalMoves(moves, count);
        ASSERT_EQ(board, boardStack.data());
    }
    EXPECT_LT(mostCaptures, captureCapacity);
    EXPECT_LT(mostQuiets, quietCapacity);
}

TEST(Generation, ThePositionOf218MovesGivesThemAll) {
    setUpPosition("R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - - 0 1");
    RootList list;
    i32 count = 0;
    rootMoves(list, count);
    EXPECT_EQ(count, 218);
}
