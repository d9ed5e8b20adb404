// Records after moves: flip, clocks, rights, repetition, key and score.
#include "board_support.h"

#include "board/tables.h"

struct EpCase {
    const char* name;
    const char* fen;
    const char* move;
    i32 epFile;
};
static const EpCase epCases[] = {
    {"a double push sets the file although no pawn can capture", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "e2e4 ",
     4},
    {"Black's double push gives the same file number", "4k3/4p3/8/8/8/8/8/4K3 b - - 0 1", "e7e5 ", 4},
    {"a single push leaves none", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "e2e3 ", 8},
    {"a knight's move of two ranks leaves none", "4k3/8/8/8/8/8/8/4K1N1 w - - 0 1", "g1f3", 8},
    {"a capture leaves none", "4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1", "e4d5", 8},
};
TEST(MakeMove, OnlyADoublePushSetsTheEpFile) {
    for (const EpCase& c : epCases) {
        SCOPED_TRACE(c.name);
        setUpPosition(c.fen);
        play(c.move);
        EXPECT_EQ(i32{board->epFile}, c.epFile);
        EXPECT_EQ(i32{board->rule50}, std::strcmp(c.move, "g1f3") == 0 ? 1 : 0);
    }
}

TEST(MakeMove, TheRecordIsSeenFromTheOtherSide) {
    setUpPosition(startFen);
    play("e2e4");
    EXPECT_EQ(board, boardStack.data() + 1);
    EXPECT_EQ(board->side, 0xFFFFU);
    EXPECT_EQ(pieceCode(*board, 36), PAWN) << "the pawn on e4 in Black's frame";
    EXPECT_EQ(board->side >> 36 & 1, 0U);
    EXPECT_EQ(board->castleRights, 0x33);
    EXPECT_EQ(board->epFile, 4);
    EXPECT_TRUE(blackToMove(*board));
}

TEST(MakeMove, TwoFlipsGiveTheRecordBack) {
    setUpPosition("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQk - 7 1");
    const Scacchiera before = *board;
    flipBoard(*board);
    EXPECT_FALSE(sameRecord(*board, before));
    EXPECT_EQ(board->castleRights, 0x32);
    flipBoard(*board);
    EXPECT_TRUE(sameRecord(*board, before));
}

TEST(MakeMove, CountsRepetitionsOfAKnightsWalk) {
    setUpPosition(startFen);
    play("g1f3 g8f6 f3g1 f6g8");
    EXPECT_EQ(repetitionCount(*board), 1);
    play("g1f3 g8f6 f3g1 f6g8");
    EXPECT_EQ(repetitionCount(*board), 2);
    EXPECT_EQ(board->rule50, 8);
}

TEST(MakeMove, DoesNotNoticeARepetitionThatComesFromAQuietBishopMove) {
    setUpPosition("4k1b1/8/8/8/8/8/8/1B2K3 w - - 0 1");
    for (i32 round = 0; round < 3; ++round) {
        play("b1c2 g8f7 c2b1 f7g8");
        EXPECT_EQ(repetitionCount(*board), 0);
    }
}

TEST(MakeMove, ABishopMoveKeepsTheCountOfTheRecordBefore) {
    setUpPosition("4k1n1/8/8/8/8/8/8/B3K1N1 w - - 0 1");
    play("g1f3 g8f6 f3g1 f6g8");
    ASSERT_EQ(repetitionCount(*board), 1);
    play("a1b2");
    EXPECT_EQ(repetitionCount(*board), 1) << "a new position that counts as repeated";
    play("g8f6");
    EXPECT_EQ(repetitionCount(*board), 0);
}

TEST(MakeMove, RepetitionLooksAtTheMenAlone) {
    setUpPosition("4k2r/8/8/8/8/8/8/4K2R w Kk - 0 1");
    play("e1e2 e8e7 e2e1 e7e8");
    EXPECT_EQ(board->castleRights, 0);
    EXPECT_EQ(repetitionCount(*board), 1) << "the first record had rights";
}

TEST(MakeMove, TheRepetitionScanStopsAtTheFirstRecord) {
    setUpPosition("4k3/8/8/8/8/8/8/4K1N1 w - - 90 1");
    play("g1f3");
    EXPECT_EQ(repetitionCount(*board), 0);
    play("e8e7 f3g1 e7e8");
    EXPECT_EQ(repetitionCount(*board), 1);
    EXPECT_EQ(board->rule50, 94);
}

TEST(MakeMove, TheRepetitionScanStopsAtAnIrreversibleMove) {
    setUpPosition("4k1n1/8/8/8/8/8/4P3/4K1N1 w - - 0 1");
    play("g1f3 g8f6 f3g1 f6g8 e2e3");
    EXPECT_EQ(repetitionCount(*board), 0);
    EXPECT_EQ(board->rule50, 0);
}

TEST(MakeMove, Rule50Wraps) {
    setUpPosition("4k3/8/8/8/8/8/8/4K1N1 w - - 255 1");
    EXPECT_EQ(board->rule50, 255);
    play("g1f3");
    EXPECT_EQ(board->rule50, 0);
}

struct RightsCase {
    const char* name;
    const char* fen;
    const char* move;
    i32 rights;  // of the new record, in its own frame
};
static const RightsCase rightsCases[] = {
    {"rook leaves h1", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "h1g1", 0x13},
    {"rook leaves a1", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "a1b1", 0x23},
    {"rook captures on h8: both sides lose short", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "h1h8", 0x11},
    {"king moves", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "e1e2", 0x03},
    {"short castling", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "e1g1", 0x03},
    {"long castling of Black", "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "e8c8", 0x03},
    {"bishop captures on a8", "r3k2r/8/8/8/8/5B2/8/R3K2R w KQkq - 0 1", "f3a8", 0x32},
    {"bishop captures something else on a8", "b3k2r/8/8/8/8/5B2/8/R3K2R w KQkq - 0 1", "f3a8", 0x32},
    {"pawn promotes with capture on h8", "r3k2r/6P1/8/8/8/8/8/R3K2R w KQkq - 0 1", "g7h8q", 0x31},
    {"a rook's move to the empty corner changes nothing", "4k2r/8/8/8/8/8/8/4K2R w k - 0 1", "h1h2", 0x02},
    {"a knight from h1 keeps the right", "4k3/8/8/8/8/8/8/4K2N w K - 0 1", "h1g3", 0x20},
};
TEST(MakeMove, RightsGoWithKingsRooksAndCorners) {
    for (const RightsCase& c : rightsCases) {
        SCOPED_TRACE(c.name);
        setUpPosition(c.fen);
        play(c.move);
        EXPECT_EQ(i32{board->castleRights}, c.rights);
        EXPECT_EQ(board->hashKey, computeKey());
        EXPECT_EQ(board->psqScore, easyVal());
    }
}

TEST(MakeMove, CastlingCountsAsAQuietMove) {
    setUpPosition("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 10 1");
    const i32 men = popCount(occupied(*board));
    const i32 before = board->psqScore;
    play("e1g1");
    EXPECT_EQ(board->rule50, 11);
    EXPECT_EQ(repetitionCount(*board), 0);
    EXPECT_EQ(-board->psqScore - before, (30 * men - 5 * (32 - men)) >> 5);
    --board;
    play("e1c1");
    EXPECT_EQ(-board->psqScore - before, (20 * men - 5 * (32 - men)) >> 5);
}

TEST(MakeMove, AKindThatIsNoMoveLeavesAPlainCopy) {
    setUpPosition("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 10 1");
    const Scacchiera before = *board;
    for (const Mossa move : {Mossa{0}, makeMossa(7, 0, 1), makeMossa(42, 63, 63, 5), ~Mossa{0}}) {
        SCOPED_TRACE(move);
        makeMove(move);
        ASSERT_EQ(board, boardStack.data() + 1);
        Scacchiera copy = *board;
        copy.hashKey = before.hashKey;
        EXPECT_TRUE(sameRecord(copy, before));
        --board;
        makeMoveLight(move);
        EXPECT_TRUE(sameRecord(*board, before));
        --board;
    }
    EXPECT_EQ(SearchInfo.nodes, 8U);
}

TEST(MakeMove, TheNullMovePassesAndResetsTheClock) {
    setUpPosition("rnbqkbnr/pppp1ppp/8/8/3Pp3/8/PPP1PPPP/RNBQKBNR b KQkq d3 0 3");
    const Scacchiera before = *board;
    makeNullMove();
    EXPECT_EQ(board->epFile, noEpFile);
    EXPECT_EQ(board->rule50, 0);
    EXPECT_FALSE(blackToMove(*board));
    EXPECT_EQ(board->psqScore, -before.psqScore);
    EXPECT_EQ(board->hashKey, computeKey());
    EXPECT_EQ(SearchInfo.nodes, 1U);
    --board;
    EXPECT_TRUE(sameRecord(*board, before));
}

TEST(MakeMove, TheLightMoveMakesTheSameMenWithoutKeyAndScore) {
    setUpPosition("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1");
    MoveArray moves;
    i32 count = 0;
    orderedMoves(moves, count);
    ASSERT_EQ(count, 48);
    for (i32 i = 0; i < count; ++i) {
        const Scacchiera parent = *board;
        makeMove(moves[i]);
        Scacchiera full = *board;
        --board;
        makeMoveLight(moves[i]);
        EXPECT_EQ(board->hashKey, parent.hashKey);
        EXPECT_EQ(board->psqScore, -parent.psqScore);
        full.hashKey = board->hashKey;
        full.psqScore = board->psqScore;
        EXPECT_TRUE(sameRecord(*board, full)) << textOf(moves[i]);
        --board;
    }
}

// Random play from many positions: what is kept up equals what is computed, and nothing below `board` changes.
TEST(MakeMove, KeepsKeyAndScoreThroughRandomGames) {
    const char* fens[] = {
        startFen,
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
        "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
        "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1",
        "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
        "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
    };
    u64 state = 42;
    i32 plies = 0;
    std::array<i32, 64> kindsSeen{};
    for (i32 game = 0; game < 300; ++game) {
        setUpPosition(fens[game % 6]);
        std::vector<Scacchiera> shadow = {*board};
        for (i32 ply = 0; ply < 120; ++ply, ++plies) {
            MoveArray moves;
            i32 count = 0;
            legalMoves(moves, count);
            if (count == 0) {
                break;
            }
            state = state * 6364136223846793005ULL + 1442695040888963407ULL;
            const Mossa move = moves[static_cast<i32>(state >> 33) % count];
            ++kindsSeen[moveKind(move)];
            makeMove(move);
            ASSERT_EQ(leftInCheck(), 0U);
            ASSERT_EQ(board->hashKey, computeKey()) << game << " " << ply;
            ASSERT_EQ(board->psqScore, easyVal()) << game << " " << ply;
            ASSERT_EQ(board->pbq & board->nbk & board->rqk, 0U);
            ASSERT_NE(blackToMove(*board), blackToMove(shadow.back()));
            shadow.push_back(*board);
        }
        for (std::size_t i = 0; i < shadow.size(); ++i) {
            ASSERT_TRUE(sameRecord(boardStack[i], shadow[i]));
        }
    }
    EXPECT_GT(plies, 20000);
    for (const i32 kind : {1, 2, 3, 4, 5, 6, 9, 10, 11, 12, 13, 14, 17, 22, 25, 38, 41}) {
        EXPECT_GT(kindsSeen[kind], 0) << "kind " << kind;
    }
}
