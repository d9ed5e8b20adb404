#include "messages.h"

#include <gtest/gtest.h>

TEST(Messages, APositionArrivesAsItWasSent) {
    const Position sent{"8/8/8/8/8/8/8/8 w - - 0 1", {makeMossa(MOVE_PAWN, 12, 28), 7}};
    Position got;
    ASSERT_TRUE(readMessage(messageOf(sent), got));
    EXPECT_EQ(got.fen, sent.fen);
    EXPECT_EQ(got.moves, sent.moves);
}

TEST(Messages, AnAnalysisArrivesAsItWasSent) {
    const Analysis sent{"a \"fault\"", Standstill::stalemate, 8, -35, u64{1} << 40, 77,
                        {"e4", "e5"},  {{3, 5, "e2e4"}}};
    Analysis got;
    ASSERT_TRUE(readMessage(messageOf(sent), got));
    EXPECT_EQ(got.fault, sent.fault);
    EXPECT_EQ(got.standstill, sent.standstill);
    EXPECT_EQ(got.depth, sent.depth);
    EXPECT_EQ(got.score, sent.score);
    EXPECT_EQ(got.nodes, sent.nodes);
    EXPECT_EQ(got.milliseconds, sent.milliseconds);
    EXPECT_EQ(got.line, sent.line);
    ASSERT_EQ(got.choices.size(), 1U);
    EXPECT_EQ(got.choices[0].depth, 3);
    EXPECT_EQ(got.choices[0].move, "e2e4");
}

TEST(Messages, OtherTextIsNone) {
    Position position;
    Analysis analysis;
    for (const char* text : {"", "{", "[]", "3", "{\"fen\":3}", "{\"fen\":\"x\"}", "{\"depth\":1}"}) {
        EXPECT_FALSE(readMessage(text, position)) << text;
        EXPECT_FALSE(readMessage(text, analysis)) << text;
    }
}
