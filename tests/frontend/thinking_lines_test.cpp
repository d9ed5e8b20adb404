// The thinking lines, to the byte.
#include "frontend/thinking_lines.h"
#include "frontend/session.h"
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

// The time shown `ms` milliseconds after the start.
static void letTimePass(i32 ms) {
    resetManualClock();
    EngineOptions.searchStartMs = static_cast<i32>(static_cast<u32>(nowMs()) - static_cast<u32>(ms));
}

TEST(ThinkingOutput, TheHeadHasDepthScoreTimeAndNodes) {
    letTimePass(1059);
    SearchInfo.nodes = 1234567;
    const std::string head = outputOf([] { printThinkingHead(7, 23); });
    EXPECT_EQ(head, " 7     23    105    1234567 ");
    EXPECT_EQ(SearchInfo.elapsedCs, 105);
}

TEST(ThinkingOutput, NodesAreUnsignedAndScoresMayBeNegative) {
    letTimePass(9);
    SearchInfo.nodes = 4294967295u;
    EXPECT_EQ(outputOf([] { printThinkingHead(64, -19998); }), "64 -19998      0 4294967295 ");
}

TEST(ThinkingOutput, TheElapsedTimeIsRightAcrossTheWrapOfTheClock) {
    letTimePass(2147000009);
    outputOf([] { printThinkingHead(1, 0); });
    EXPECT_EQ(SearchInfo.elapsedCs, 214700000);
}

TEST(ThinkingOutput, MovesStandTwoBlanksApartAndChangeColour) {
    newGame();
    EXPECT_EQ(outputOf([] {
                  printLine(lineOf({kingPawnTwo, kingPawnTwo, kingKnight}));
              }),
              "e2e4  e7e5  g1f3  \n");
}

TEST(ThinkingOutput, ABlackRootShowsBlacksMoveFirst) {
    setUpPosition("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1");
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
    letTimePass(0);
    SearchInfo.nodes = 20;
    const std::string text = outputOf([] {
        printThinkingHead(1, 30);
        printLine(lineOf({kingPawnTwo}));
    });
    EXPECT_EQ(text, " 1     30      0         20 e2e4  \n");
}
