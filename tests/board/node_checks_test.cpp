// What is said of a move before it is made must agree with what is found after it.
#include "board/node_checks.h"

#include "board/board.h"
#include "frontend/session.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr const char* fens[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
    "4k3/8/8/K2pP2r/8/8/8/8 w - d6 0 1",
    "3k4/3p4/8/K1P4r/8/8/8/8 b - - 0 1",
    "r3k3/8/8/8/8/8/8/R3K2R w KQq - 0 1",
    "5k2/8/8/8/8/8/8/4K2R w K - 0 1",
    "3k4/8/8/8/8/8/8/R3K3 w Q - 0 1",
    "8/P1k5/K7/8/8/8/8/8 w - - 0 1",
    "2K2r2/4P3/8/8/8/8/8/3k4 w - - 0 1",
};

// Positions that only a typed FEN brings: no king, several, a king that could be taken, impossible rights.
constexpr const char* oddFens[] = {
    "8/8/8/3q4/8/8/8/8 w - - 0 1",       "4k3/8/8/8/8/8/8/8 w KQkq - 0 1",
    "k6k/8/8/3R4/8/5N2/8/K6K w - - 0 1", "4k3/8/8/8/4R3/8/8/4K3 w - - 0 1",
    "3kK3/8/8/8/8/8/8/8 w - - 0 1",      "k1k1k3/1Q6/8/8/2B5/8/8/K3R2R w KQ - 0 1",
    "8/8/8/8/8/8/8/R3K2R w KQkq a6 0 1",
};

struct Tally {
    i64 moves = 0;
    i64 doubted = 0;  // said that they may check, though they don't
    i64 checks = 0;
};

void expectAgreement(Tally& tally) {
    const NodeMoves shared = nodeMoves();
    const CheckSets sets = checkSets(shared);
    MoveArray moves;
    i32 count = 0;
    orderedMoves(moves, count);
    for (i32 i = 0; i < count; ++i) {
        const Mossa move = moves[i];
        const bool mayCheck = mayGiveCheck(sets, move);
        const u64 key = keyAfter(shared, move);
        makeMove(move);
        const bool checks = inCheck() != 0;
        EXPECT_EQ(key, board->hashKey);
        --board;
        ASSERT_TRUE(mayCheck || !checks) << std::hex << move;
        ++tally.moves;
        tally.checks += checks ? 1 : 0;
        tally.doubted += mayCheck && !checks ? 1 : 0;
    }
}

// Plays random legal moves from the position at `board`, looking at each position on the way.
void walk(std::mt19937& random, Tally& tally) {
    for (i32 ply = 0; ply < 80; ++ply) {
        expectAgreement(tally);
        MoveArray moves;
        i32 count = 0;
        legalMoves(moves, count);
        if (count == 0 || testing::Test::HasFatalFailure()) {
            return;
        }
        makeMove(moves[random() % static_cast<u32>(count)]);
    }
}

TEST(NodeChecks, AMoveSaidToGiveNoCheckGivesNone) {
    std::mt19937 random(11);
    Tally tally;
    for (const char* fen : fens) {
        SCOPED_TRACE(fen);
        for (i32 game = 0; game < 40; ++game) {
            newGame();
            ASSERT_EQ(fenToBoard(fen), 1);
            walk(random, tally);
        }
    }
    EXPECT_GT(tally.checks, 10000);
    EXPECT_LT(tally.doubted * 20, tally.moves) << "few moves are tested in vain";
}

TEST(NodeChecks, PositionsThatNoGameReachesAreNoException) {
    std::mt19937 random(12);
    Tally tally;
    for (const char* fen : oddFens) {
        SCOPED_TRACE(fen);
        for (i32 game = 0; game < 40; ++game) {
            newGame();
            ASSERT_EQ(fenToBoard(fen), 1);
            walk(random, tally);
        }
    }
    EXPECT_GT(tally.moves, 10000);
}

}  // namespace
