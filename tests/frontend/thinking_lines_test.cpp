// The thinking lines, to the byte.
#include "frontend/session.h"
#include "frontend/thinking_lines.h"
#include "frontend_support.h"
#include "platform/platform.h"

#include <algorithm>

static PvLine lineOf(std::initializer_list<Mossa> moves) {
    PvLine line{static_cast<i32>(moves.size()), {}};
    std::copy(moves.begin(), moves.end(), line.argmove.begin());
    return line;
}

constexpr Mossa kingPawnTwo = makeMossa(MOVE_PAWN, 12, 28);    // e2e4, or e7e5 for Black
constexpr Mossa kingKnight = makeMossa(MOVE_KNIGHT, 6, 21);    // g1f3, or g8f6
constexpr Mossa promotion = makeMossa(PROMO, 48, 56, KNIGHT);  // a7a8n, or a2a1n

TEST(ThinkingOutput, TheHeadHasDepthScoreTimeAndNodes) {
    EngineOptions.searchStartMs = nowMs() - 1050;
    SearchInfo.nodes = 1234567;
    const std::string head = outputOf([] { printThinkingHead(7, 23); });
    ASSERT_EQ(head.size(), 28u);
    EXPECT_EQ(head.substr(0, 10), " 7     23 ");
    EXPECT_EQ(head.substr(16), "    1234567 ");
    EXPECT_GE(SearchInfo.elapsedCs, 105);
    EXPECT_EQ(std::stoi(head.substr(10, 6)), SearchInfo.elapsedCs);
}

TEST(ThinkingOutput, NodesAreUnsignedAndScoresMayBeNegative) {
    EngineOptions.searchStartMs = nowMs();
    SearchInfo.nodes = 4294967295u;
    const std::string head = outputOf([] { printThinkingHead(64, -19998); });
    EXPECT_EQ(head.substr(0, 10), "64 -19998 ");
    EXPECT_EQ(head.substr(head.size() - 12), " 4294967295 ");
}

TEST(ThinkingOutput, TheElapsedTimeIsRightAcrossTheWrapOfTheClock) {
    EngineOptions.searchStartMs = static_cast<i32>(static_cast<u32>(nowMs()) - 2147000000u);
    outputOf([] { printThinkingHead(1, 0); });
    EXPECT_GT(SearchInfo.elapsedCs, 214699999);
}

TEST(ThinkingOutput, MovesStandTwoBlanksApartAndChangeColour) {
    newGame();
    EXPECT_EQ(outputOf([] {
                  printLine(lineOf({kingPawnTwo, kingPawnTwo, kingKnight}));
              }),
              "e2e4  e7e5  g1f3  \n");
}

TEST(ThinkingOutput, ABlackRootShowsBlacksMoveFirst) {
    setUp("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1");
    EXPECT_EQ(outputOf([] { printLine(lineOf({kingPawnTwo, kingKnight})); }), "e7e5  g1f3  \n");
}

TEST(ThinkingOutput, APromotionHasItsLetterForTheBlank) {
    newGame();
    EXPECT_EQ(outputOf([] { printLine(lineOf({promotion, promotion})); }), "a7a8n a2a1n \n");
}

TEST(ThinkingOutput, AWordOfZeroIsSkippedAndKeepsTheColour) {
    newGame();
    EXPECT_EQ(outputOf([] { printLine(lineOf({kingPawnTwo, 0, kingKnight})); }), "e2e4  g8f6  \n");
}

TEST(ThinkingOutput, AnEmptyLineIsALineEnd) {
    newGame();
    EXPECT_EQ(outputOf([] { printLine(PvLine{0, {}}); }), "\n");
    EXPECT_EQ(outputOf([] { printLine(PvLine{-1, {}}); }), "\n");
}

TEST(ThinkingOutput, ACountBeyondTheRoomPrintsWhatThereIs) {
    newGame();
    PvLine line{90, {}};
    line.argmove.fill(kingKnight);
    EXPECT_EQ(outputOf([&line] { printLine(line); }).size(), 64 * 6 + 1u);
}

TEST(ThinkingOutput, HeadAndLineMakeOneLine) {
    newGame();
    EngineOptions.searchStartMs = nowMs();
    SearchInfo.nodes = 20;
    const std::string text = outputOf([] {
        printThinkingHead(1, 30);
        printLine(lineOf({kingPawnTwo}));
    });
    EXPECT_EQ(text, " 1     30      0         20 e2e4  \n");
}
