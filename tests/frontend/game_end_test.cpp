// Results: which positions end the game, and with which lines.
#include "frontend/game_end.h"
#include "frontend/session.h"
#include "frontend_support.h"

struct EndCase {
    const char* name;
    const char* fen;
    i32 result;
    const char* lines;
};

constexpr const char* blackMates = "0-1 {Black mates}\n";
constexpr const char* whiteMates = "1-0 {White mates}\n";
constexpr const char* stalemate = "1/2-1/2 {Stalemate}\n";
constexpr const char* fiftyMoves = "1/2-1/2 {Draw by 50 move rule}\n";

constexpr EndCase endCases[] = {
    {"start", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0, ""},
    {"fool's mate", "rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3", 1, blackMates},
    {"back rank", "R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1", 1, whiteMates},
    {"check, but a way out", "R5k1/5pp1/8/8/8/8/8/6K1 b - - 0 1", 0, ""},
    {"Black has no move", "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", 1, stalemate},
    {"White has no move", "8/8/8/8/8/6k1/5q2/7K w - - 0 1", 1, stalemate},
    {"only kings", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", 0, ""},
    {"99 plies", "4k3/8/8/8/8/8/8/R3K3 w - - 99 80", 0, ""},
    {"100 plies", "4k3/8/8/8/8/8/8/R3K3 w - - 100 80", 1, fiftyMoves},
    {"255 plies", "4k3/8/8/8/8/8/8/R3K3 b - - 255 80", 1, fiftyMoves},
    {"stalemate on the hundredth ply", "7k/5Q2/6K1/8/8/8/8/8 b - - 100 1", 1,
     "1/2-1/2 {Stalemate}\n1/2-1/2 {Draw by 50 move rule}\n"},
    {"mate on the hundredth ply", "R5k1/5ppp/8/8/8/8/8/6K1 b - - 100 80", 1,
     "1-0 {White mates}\n1/2-1/2 {Draw by 50 move rule}\n"},
    {"no men at all", "8/8/8/8/8/8/8/8 w - - 0 1", 1, stalemate},
};

TEST(GameEnd, IsToldByTheRulesAndSaysTheResult) {
    for (const EndCase& c : endCases) {
        SCOPED_TRACE(c.name);
        setUpPosition(c.fen);
        const Scacchiera before = *board;
        i32 result = -1;
        EXPECT_EQ(outputOf([&result] { result = checkGameEnd(); }), c.lines);
        EXPECT_EQ(result, c.result);
        EXPECT_EQ(board, boardStack.data());
        EXPECT_EQ(board->hashKey, before.hashKey);
    }
}

constexpr const char* knightsOutAndHome = "g1f3 g8f6 f3g1 f6g8 ";

TEST(GameEnd, TheThirdOccurrenceDrawsAndTheFourthIsSilent) {
    newGame();
    constexpr const char* expected[] = {"", "1/2-1/2 {Draw by repetition}\n", ""};
    for (const char* lines : expected) {
        play(knightsOutAndHome);
        EXPECT_EQ(outputOf(checkGameEnd), lines);
    }
    EXPECT_EQ(repetitionCount(*board), 3);
}

TEST(GameEnd, AThirdRepetitionThatIsAlsoStalemateGivesTwoLines) {
    setUpPosition("7k/5Q2/6K1/8/8/8/8/8 b - - 8 10");
    board->stateFlags = static_cast<u8>(board->stateFlags | 2);
    EXPECT_EQ(outputOf(checkGameEnd), "1/2-1/2 {Draw by repetition}\n1/2-1/2 {Stalemate}\n");
}
