#include "uci_go.h"

#include "fen_reader.h"
#include "gui_support.h"

#include <limits>

namespace {

GoLimits read(const char* words) {
    return readGo(words, gameFromStart().standing);
}

}  // namespace

TEST(UciGo, ReadsEveryLimit) {
    const GoLimits limits = read(
        "wtime 1000 btime 2000 winc 10 binc 20 movestogo 5 movetime 30 depth 7 nodes 900 mate 3 infinite "
        "ponder");
    EXPECT_EQ(limits.whiteTime, 1000);
    EXPECT_EQ(limits.blackTime, 2000);
    EXPECT_EQ(limits.whiteIncrement, 10);
    EXPECT_EQ(limits.blackIncrement, 20);
    EXPECT_EQ(limits.movesToGo, 5);
    EXPECT_EQ(limits.moveTime, 30);
    EXPECT_EQ(limits.depth, 7);
    EXPECT_EQ(limits.nodes, 900);
    EXPECT_EQ(limits.mate, 3);
    EXPECT_TRUE(limits.infinite);
    EXPECT_TRUE(limits.ponder);
}

TEST(UciGo, KeepsNothingOfWordsThatAreNoNumbers) {
    const GoLimits limits = read("depth x nodes wtime btime 5 movetime");
    EXPECT_FALSE(limits.depth);
    EXPECT_FALSE(limits.nodes);
    EXPECT_FALSE(limits.whiteTime);
    EXPECT_EQ(limits.blackTime, 5);
    EXPECT_FALSE(limits.moveTime);
}

TEST(UciGo, HoldsNumbersToTheLimitsOfTheirType) {
    EXPECT_EQ(read("nodes 99999999999999999999999").nodes, std::numeric_limits<i64>::max());
    EXPECT_EQ(read("wtime -99999999999999999999999").whiteTime, std::numeric_limits<i64>::min());
}

TEST(UciGo, TakesLegalSearchMovesUpToTheNextWord) {
    const GoLimits limits = read("searchmoves e2e4 e2e5 d2d4 depth 3");
    EXPECT_EQ(limits.only.size(), 2U);
    EXPECT_EQ(limits.depth, 3);
    EXPECT_TRUE(read("searchmoves e7e5").only.empty());
}

TEST(UciGo, IsEndlessWithoutALimit) {
    for (const char* words : {"", "infinite", "infinite depth 5", "winc 5", "searchmoves e2e4", "ponder"}) {
        EXPECT_TRUE(isEndless(read(words))) << words;
    }
    for (const char* words : {"depth 5", "nodes 1", "mate 1", "movetime 1", "wtime 1", "btime 1"}) {
        EXPECT_FALSE(isEndless(read(words))) << words;
    }
}

TEST(UciGo, IsForPlayWithAClockAndNothingThatLooks) {
    for (const char* words :
         {"wtime 1000 btime 1000", "btime 5", "movetime 10", "wtime 5 btime 5 movestogo 3"}) {
        EXPECT_TRUE(isForPlay(read(words))) << words;
    }
    for (const char* words : {"", "infinite", "depth 3", "wtime 5 depth 3", "wtime 5 ponder",
                              "movetime 5 nodes 3", "movetime 5 searchmoves e2e4", "mate 3 movetime 5"}) {
        EXPECT_FALSE(isForPlay(read(words))) << words;
    }
}
