#include "game.h"

#include "fen_reader.h"
#include "gui_support.h"

namespace {

struct ReasonCase {
    const char* name;
    const char* fen;
    const char* move;
    const char* reason;
};

constexpr ReasonCase refused[] = {
    {"no move at all", startFen, "hello", "not a move"},
    {"a square beyond the board", startFen, "e2e9", "not a move"},
    {"a pass", startFen, "0000", "a pass is not allowed"},
    {"a pass in the other dialect", startFen, "@@@@", "a pass is not allowed"},
    {"an empty square", startFen, "e4e5", "no man on e4"},
    {"the opponent's man", startFen, "e7e5", "it is White's move"},
    {"Black's turn", "4k3/8/8/8/8/8/8/4K3 b - - 0 1", "e1e2", "it is Black's move"},
    {"a capture of an own man", startFen, "a1a2", "own man on a2"},
    {"a step no knight makes", startFen, "g1g3", "the knight does not move so"},
    {"a pawn's capture of nothing", startFen, "e2d3", "the pawn does not move so"},
    {"a pinned man", "4k3/4r3/8/8/8/8/4N3/4K3 w - - 0 1", "e2c3", "leaves the king in check"},
    {"a check that stays", "4k3/4r3/8/8/8/8/7P/4K3 w - - 0 1", "h2h3", "in check"},
    {"castling over an attacked square", "4k3/8/8/8/8/5r2/8/4K2R w K - 0 1", "e1g1",
     "castling is not possible"},
    {"a promotion without a piece", "4k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8",
     "the promotion piece is missing"},
    {"a letter behind a plain move", startFen, "e2e4q", "this move does not promote"},
    {"a promotion to a king", "4k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8k", "the pawn does not move so"},
    {"an en passant capture a move too late", "4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1", "e5d6",
     "the pawn does not move so"},
    {"en passant that uncovers the king", "8/8/8/r2pP2K/8/8/8/4k3 w - d6 0 1", "e5d6",
     "leaves the king in check"},
};

struct EndCase {
    const char* name;
    const char* fen;
    const char* moves;
    const char* line;
};

constexpr const char* shuffle = "g1f3 g8f6 f3g1 f6g8 ";
constexpr EndCase ends[] = {
    {"fool's mate", startFen, "f2f3 e7e5 g2g4 d8h4", "0-1 {Black mates}"},
    {"scholar's mate", startFen, "e2e4 e7e5 d1h5 b8c6 f1c4 g8f6 h5f7", "1-0 {White mates}"},
    {"stalemate", "7k/5K2/8/8/8/8/8/6Q1 w - - 0 1", "g1g6", "1/2-1/2 {Stalemate}"},
    {"the second occurrence", startFen, "g1f3 g8f6 f3g1 f6g8", ""},
    {"the third occurrence", startFen, "g1f3 g8f6 f3g1 f6g8 g1f3 g8f6 f3g1 f6g8",
     "1/2-1/2 {Draw by repetition}"},
    {"the same men with fewer rights", "4k2r/8/8/8/8/8/8/4K2R w Kk - 0 1",
     "h1h2 h8h7 h2h1 h7h8 h1h2 h8h7 h2h1 h7h8", ""},
    {"the same men with the same rights again", "4k2r/8/8/8/8/8/8/4K2R w Kk - 0 1",
     "h1h2 h8h7 h2h1 h7h8 h1h2 h8h7 h2h1 h7h8 h1h2 h8h7", "1/2-1/2 {Draw by repetition}"},
    {"bishop moves repeat too", "4k1b1/8/8/8/8/8/8/1B2K1N1 w - - 0 1",
     "b1c2 g8f7 c2b1 f7g8 b1c2 g8f7 c2b1 f7g8", "1/2-1/2 {Draw by repetition}"},
    {"an en passant square that nobody can use", "4k3/4p3/8/8/8/8/8/N3K3 b - - 0 1",
     "e7e5 a1b3 e8e7 b3a1 e7e8 a1b3 e8e7 b3a1 e7e8", "1/2-1/2 {Draw by repetition}"},
    {"the hundredth ply", "4k2r/8/8/8/8/8/8/4K2R w - - 98 80", "h1h2 h8h7", "1/2-1/2 {Draw by 50 move rule}"},
    {"the ninety-ninth ply", "4k2r/8/8/8/8/8/8/4K2R w - - 97 80", "h1h2 h8h7", ""},
    {"mate on the hundredth ply", "7k/5K2/8/8/8/8/8/6R1 w - - 99 80", "g1h1", "1-0 {White mates}"},
    {"bare kings", "4k3/8/8/8/8/8/3p4/4K3 w - - 0 1", "e1d2", "1/2-1/2 {Draw by insufficient material}"},
    {"a king and a knight", "4k3/8/8/8/8/8/3p4/3NK3 w - - 0 1", "e1d2",
     "1/2-1/2 {Draw by insufficient material}"},
    {"bishops of one colour of squares", "4k3/5b2/8/8/8/8/3p2B1/4K3 w - - 0 1", "e1d2",
     "1/2-1/2 {Draw by insufficient material}"},
    {"bishops of both colours of squares", "4k3/5b2/8/8/8/8/3p3B/4K3 w - - 0 1", "e1d2", ""},
    {"two knights", "4k3/8/8/8/8/8/3p4/3NKN2 w - - 0 1", "e1d2", ""},
};

}  // namespace

TEST(Game, RefusesWithTheReason) {
    for (const ReasonCase& c : refused) {
        SCOPED_TRACE(c.name);
        Game game = gameFrom(c.fen);
        const Scacchiera* const before = board;
        EXPECT_EQ(playMove(game, c.move, false), c.reason);
        EXPECT_EQ(board, before);
        EXPECT_TRUE(game.plies.empty());
    }
}

TEST(Game, EndsByTheLaws) {
    for (const EndCase& c : ends) {
        SCOPED_TRACE(c.name);
        const Game game = gameFrom(c.fen, c.moves);
        EXPECT_EQ(resultLine(game, endOf(game)), c.line);
    }
}

TEST(Game, GoesOnAfterThePositionHasLeftItsRepetition) {
    Game game = gameFromStart(std::string(shuffle) + shuffle);
    EXPECT_EQ(endOf(game), GameEnd::repetition);
    playAll(game, "e2e4");
    EXPECT_EQ(endOf(game), GameEnd::none);
    EXPECT_TRUE(takeBack(game));
    EXPECT_EQ(endOf(game), GameEnd::repetition);
}

TEST(Game, TakesMovesBackToTheFirstPositionAndNoFurther) {
    Game game = gameFromStart("e2e4 e7e5");
    EXPECT_TRUE(takeBack(game));
    EXPECT_NE(findLegal(game.standing, "e7e5"), nullptr);
    EXPECT_TRUE(takeBack(game));
    EXPECT_NE(findLegal(game.standing, "e2e4"), nullptr);
    EXPECT_FALSE(takeBack(game));
    EXPECT_EQ(board, boardStack.data());
}

TEST(Game, KeepsTheFormerPositionWhenOneIsRefused) {
    Game game = gameFromStart("e2e4");
    EXPECT_NE(setUpGame(game, "8/8/8/8/8/8/8/8 w - - 0 1"), "");
    EXPECT_EQ(game.plies.size(), 1U);
    EXPECT_NE(findLegal(game.standing, "e7e5"), nullptr);
}

TEST(Game, StartsWithAWholeRecordAfterAnyPosition) {
    gameFrom("4k3/8/8/8/8/8/QQQQ4/4K3 w - - 0 1");
    gameFromStart();
    EXPECT_EQ(board->psqScore, 0);
    EXPECT_EQ(board->hashKey, computeKey());
}

TEST(Game, CountsTheMovesOfTheEngineAlone) {
    Game game = gameFromStart("e2e4");
    EXPECT_EQ(playMove(game, "e7e5", true), "");
    playAll(game, "g1f3");
    EXPECT_EQ(engineMoves(game), 1);
    takeBack(game);
    takeBack(game);
    EXPECT_EQ(engineMoves(game), 0);
}

TEST(Game, TakesCapitalsAsPromotionLetters) {
    Game game = gameFrom("4k3/P7/8/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(playMove(game, "a7a8Q", false), "");
    EXPECT_EQ(game.plies.back().text, "a7a8q");
}

TEST(Game, EndsBeforeTheStackDoes) {
    Game game = gameFromStart();
    const std::string cycle[] = {"g1f3", "g8f6", "f3g1", "f6g8"};
    std::string refusal;
    for (u32 i = 0; refusal.empty(); ++i) {
        refusal = playMove(game, cycle[i % 4], false);
        ASSERT_LT(i, u32{gameRecordsMax});
    }
    EXPECT_EQ(refusal, "the game is too long");
    EXPECT_LT(board - boardStack.data(), gameRecordsMax);
}
