// Moves that come as text.
#include "board_support.h"
#include "frontend/session.h"

struct UserMoveCase {
    const char* name;
    const char* fen;
    const char* text;
    i32 result;
    i32 kind;  // of lastUserMove, 0 if it must not be set
};
static const UserMoveCase userMoveCases[] = {
    {"a plain move", startFen, "e2e4", 1, MOVE_PAWN},
    {"a blank behind it", startFen, "e2e4 ", 1, MOVE_PAWN},
    {"a strange letter behind it", startFen, "e2e4x", 0, 0},
    {"a capital letter", "4k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8Q", 0, 0},
    {"an empty square", startFen, "e4e5", 0, 0},
    {"an enemy's man", startFen, "e7e5", 0, 0},
    {"no such target", startFen, "g1g3", 0, 0},
    {"castling", "4k3/8/8/8/8/8/8/4K2R w K - 0 1", "e1g1", 1, CASTLE_SHORT},
    {"castling without the right", "4k3/8/8/8/8/8/8/4K2R w - - 0 1", "e1g1", 0, 0},
    {"castling through an attack", "4kr2/8/8/8/8/8/8/4K2R w K - 0 1", "e1g1", 0, 0},
    {"long castling", "4k3/8/8/8/8/8/8/R3K3 w Q - 0 1", "e1c1", 1, CASTLE_LONG},
    {"a pawn reaches rank 8 without a letter", "k7/4P3/8/8/8/8/8/4K3 w - - 0 1", "e7e8", 1, MOVE_PAWN},
    {"promotion by capture", "k2r4/4P3/8/8/8/8/8/4K3 w - - 0 1", "e7d8n", 1, PROMO_CAPT},
    {"a letter promotes anywhere", startFen, "e2e4q", 1, PROMO},
    {"pushes are those of all own pawns", "4k3/8/8/8/8/8/P6P/4K3 w - - 0 1", "a2h3", 1, MOVE_PAWN},
    {"two steps of another pawn, from rank 2", "4k3/8/8/8/8/8/P6P/4K3 w - - 0 1", "a2h4", 1, MOVE_PAWN},
    {"two steps of any pawn from rank 2", "4k3/8/8/8/7P/8/P7/4K3 w - - 0 1", "a2h6", 1, MOVE_PAWN},
    {"no two steps from rank 3", "4k3/8/8/8/8/P7/7P/4K3 w - - 0 1", "a3h4", 0, 0},
    {"captures run round the edge to the own rank", "4k3/8/8/8/P6p/8/8/4K3 w - - 0 1", "a4h4", 1, CAPT_PAWN},
    {"and from the h-file two ranks up", "4k3/8/p7/8/7P/8/8/4K3 w - - 0 1", "h4a6", 1, CAPT_PAWN},
    {"en passant", "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", 1, EN_PASSANT},
    {"a pinned man", "4r1k1/8/8/8/8/8/4N3/4K3 w - - 0 1", "e2c3", 0, MOVE_KNIGHT},
    {"a king next to a king", "8/8/8/8/8/4k3/8/4K3 w - - 0 1", "e1e2", 0, MOVE_KING},
    {"squares off the board", startFen, "z9z9", 0, 0},
    {"two bytes: the missing ones name h3, where a pawn can go", startFen, "e2", 1, MOVE_PAWN},
    {"three bytes", startFen, "e2e", 0, 0},
    {"nothing", startFen, "", 0, 0},
    {"bytes above 127", startFen, "\xFF\xFE\xFD\xFC", 0, 0},
};

TEST(UserMove, IsPlayedOrRefused) {
    for (const UserMoveCase& c : userMoveCases) {
        SCOPED_TRACE(c.name);
        setUpPosition(c.fen);
        const Scacchiera before = *board;
        EngineOptions.lastUserMove = 0;
        EXPECT_EQ(parseUserMove(c.text), c.result);
        EXPECT_EQ(moveKind(EngineOptions.lastUserMove), c.kind);
        EXPECT_EQ(board, boardStack.data() + c.result);
        EXPECT_TRUE(sameRecord(boardStack[0], before));
    }
}

TEST(UserMove, BlacksMovesAreMirrored) {
    setUpPosition("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1");
    ASSERT_EQ(parseUserMove("e7e5"), 1);
    EXPECT_EQ(EngineOptions.lastUserMove, makeMossa(MOVE_PAWN, 12, 28));
}

TEST(UserMove, AManOnRankEightWithoutLetterStaysAPawn) {
    setUpPosition("k7/4P3/8/8/8/8/8/4K3 w - - 0 1");
    ASSERT_EQ(parseUserMove("e7e8"), 1);
    EXPECT_EQ(pieceCode(*board, 60 ^ 56), PAWN);
    EXPECT_EQ(board->hashKey, computeKey());
}

TEST(UserMove, ALetterOnAnotherMansMoveSpoilsTheKeyAlone) {
    setUpPosition(startFen);
    ASSERT_EQ(parseUserMove("g1f3q"), 1);
    EXPECT_EQ(movePromo(EngineOptions.lastUserMove), QUEEN);
    EXPECT_EQ(pieceCode(*board, 21 ^ 56), KNIGHT);
    EXPECT_NE(board->hashKey, computeKey()) << "deliberate";
    EXPECT_EQ(board->psqScore, easyVal());
}

TEST(UserMove, AGameOfFullLengthIsRefusedFurtherMoves) {
    setUpPosition(startFen);
    const char* cycle[] = {"g1f3", "g8f6", "f3g1", "f6g8"};
    for (i32 ply = 0; ply < gameRecordsMax; ++ply) {
        ASSERT_EQ(parseUserMove(cycle[ply % 4]), 1) << ply;
    }
    EXPECT_EQ(parseUserMove("g1f3"), 0);
    EXPECT_EQ(board - boardStack.data(), gameRecordsMax);
}

TEST(UserMove, NoPairOfSquaresOnAnyBoardBreaksAnything) {
    for (const char* fen : {startFen, "8/8/8/8/8/8/8/8 w KQkq e6 0 1",
                            "QQQQQQQQ/8/pppppppp/8/8/PPPPPPPP/8/qqqqqqqq w KQkq a6 0 1",
                            "kkkkkkkk/PPPPPPPP/8/8/8/8/pppppppp/KKKKKKKK b KQkq h3 0 1"}) {
        for (char a = 'a'; a <= 'h'; ++a) {
            for (char b = '1'; b <= '8'; ++b) {
                for (i32 to = 0; to < 64; ++to) {
                    newGame();
                    ASSERT_EQ(fenToBoard(fen), 1);
                    const char text[] = {
                        a, b, static_cast<char>('a' + to % 8), static_cast<char>('1' + to / 8), 'q', 0};
                    parseUserMove(text);
                    ASSERT_LE(board - boardStack.data(), 1);
                }
            }
        }
    }
}
