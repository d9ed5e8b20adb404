// From a position to a move: iterations, windows, the clock between them, and what think prints and leaves behind.
#include "search/search.h"

#include "search/internal.h"
#include "search/search_fixture.h"

#include <sstream>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

constexpr const char* mateInOneFen = "6k1/5ppp/8/8/8/8/8/K3R3 w - - 0 1";
constexpr const char* onlyMoveFen = "6k1/8/8/2B5/8/8/6PP/r6K w - - 0 1";
constexpr const char* stalemateFen = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1";

struct Thought {
    Mossa move = 0;
    Lines lines;
};

Thought thinkHere(i32 ponderSearch = 0) {
    testing::internal::CaptureStdout();
    Thought thought;
    thought.move = think(ponderSearch);
    std::istringstream output(testing::internal::GetCapturedStdout());
    for (std::string line; std::getline(output, line);) {
        thought.lines.push_back(line);
    }
    return thought;
}

i32 number(const std::string& line, i32 field) {
    std::istringstream input(line);
    i32 value = 0;
    for (i32 i = 0; i <= field; ++i) {
        input >> value;
    }
    return value;
}

bool isMateLine(const std::string& line) {
    return line.starts_with("Mate");
}

std::vector<i32> depths(const Lines& lines) {
    std::vector<i32> result;
    for (const std::string& line : lines) {
        if (!isMateLine(line)) {
            result.push_back(number(line, 0));
        }
    }
    return result;
}

using testing::Test;

// ---- iterations -----------------------------------------------------------------------------------------------

TEST(Think, EachDepthGetsALineUpToTheLimit) {
    setUpFreshState(middleGameFen);
    EngineOptions.maxDepth = 4;
    const Thought thought = thinkHere();
    EXPECT_EQ(depths(thought.lines), (std::vector<i32>{1, 2, 3, 4}));
    EXPECT_EQ(thought.move, gs_lineH.argmove[0]);
    EXPECT_EQ(SearchInfo.iterationDepth, 4);
    EXPECT_EQ(board, boardStack.data());
}

TEST(Think, TheFirstDepthIsTheConfiguredOneInSixteenBits) {
    setUpFreshState(middleGameFen);
    EngineOptions.minDepth = 3;
    EngineOptions.maxDepth = 4;
    EXPECT_EQ(depths(thinkHere().lines), (std::vector<i32>{3, 4}));
    setUpFreshState(middleGameFen);
    EngineOptions.minDepth = 65536 + 2;
    EngineOptions.maxDepth = 3;
    EXPECT_EQ(depths(thinkHere().lines), (std::vector<i32>{2, 3}));
}

TEST(Think, ALimitBelowTheFirstDepthGivesNoMoveAndShowsNoEarlierLine) {
    setUpFreshState(middleGameFen);
    EngineOptions.maxDepth = 1;
    thinkHere();
    setUpFreshState(mateInOneFen);
    EngineOptions.minDepth = 5;
    EngineOptions.maxDepth = 4;
    const Thought thought = thinkHere();
    EXPECT_EQ(thought.move, 0U);
    EXPECT_TRUE(thought.lines.empty());
    EXPECT_EQ(gs_lineH.count, 0);
    EXPECT_EQ(gs_lineH.argmove[0], 0U);
}

TEST(Think, ASingleLegalMoveIsPlayedAtOnceAfterOneLine) {
    setUpFreshState(onlyMoveFen);
    EngineOptions.postThinking = 0;
    EngineOptions.ponderMove = 1234;
    SearchInfo.nodes = 0;
    const Thought thought = thinkHere();
    EXPECT_EQ(moveText(thought.move), "c5g1");
    ASSERT_EQ(thought.lines.size(), 1U);
    EXPECT_EQ(number(thought.lines[0], 0), 0);
    EXPECT_EQ(number(thought.lines[0], 1), 0);
    EXPECT_GT(number(thought.lines[0], 3), 0) << "the counter as the root list left it";
    EXPECT_TRUE(thought.lines[0].ends_with(" c5g1  "));
    EXPECT_EQ(EngineOptions.ponderMove, 1234U);
    EXPECT_EQ(gs_lineH.count, 1);
}

TEST(Think, AFailedIterationIsRepeatedWithTheOpenWindow) {
    setUpFreshState("8/6k1/3pP3/pP6/8/2K5/8/n7 w - - 2 42");
    EngineOptions.maxDepth = 12;
    const Lines lines = thinkHere().lines;
    i32 repetitions = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        if (isMateLine(lines[i]) || isMateLine(lines[i - 1]) ||
            number(lines[i], 0) != number(lines[i - 1], 0)) {
            continue;
        }
        ++repetitions;
        ASSERT_GE(i, 2U);
        const i32 failed = number(lines[i - 1], 1);
        const i32 centre = number(lines[i - 2], 1);
        EXPECT_EQ(std::abs(failed - centre), 50) << "a bound of the window is what a failed iteration shows";
    }
    EXPECT_GT(repetitions, 0);
}

TEST(Think, TheSameThoughtTwiceGivesTheSameLines) {
    Lines first;
    for (const i32 round : {0, 1}) {
        setUpFreshState(middleGameFen);
        EngineOptions.maxDepth = 6;
        Lines lines = thinkHere().lines;
        for (std::string& line : lines) {
            line.erase(9, 7);  // the time
        }
        if (round == 0) {
            first = lines;
        } else {
            EXPECT_EQ(lines, first);
        }
    }
}

TEST(Think, NothingOfAnEarlierThinkDecides) {
    setUpFreshState(middleGameFen);
    EngineOptions.maxDepth = 6;
    thinkHere();
    const u32 nodes = SearchInfo.nodes;
    pawnHashClear();
    thinkHere();
    EXPECT_EQ(SearchInfo.nodes, nodes);
}

// ---- mates ----------------------------------------------------------------------------------------------------

TEST(Think, AMateIsAnnouncedWhateverPostThinkingSaysAndEndsPondering) {
    setUpFreshState(mateInOneFen);
    EngineOptions.maxDepth = 2;
    EngineOptions.postThinking = 0;
    EngineOptions.ponder = 1;
    const Thought thought = thinkHere();
    EXPECT_EQ(moveText(thought.move), "e1e8");
    ASSERT_FALSE(thought.lines.empty());
    EXPECT_EQ(thought.lines.back(), "Mate in 1 ");
    EXPECT_EQ(EngineOptions.ponder, 0);
}

TEST(Think, BeingMatedIsAnnouncedToo) {
    setUpFreshState("k7/8/8/8/8/r7/1r6/4K3 w - - 0 1");  // both moves allow a mate on the first rank
    EngineOptions.maxDepth = 4;
    EngineOptions.ponder = 1;
    const Lines lines = thinkHere().lines;
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "Mated to 1 ");
    EXPECT_EQ(EngineOptions.ponder, 0);
}

TEST(Think, WithoutAMateInSightPonderingStaysOn) {
    setUpFreshState(middleGameFen);
    EngineOptions.maxDepth = 3;
    EngineOptions.ponder = 1;
    for (const std::string& line : thinkHere().lines) {
        EXPECT_FALSE(isMateLine(line));
    }
    EXPECT_EQ(EngineOptions.ponder, 1);
}

// ---- what others read -----------------------------------------------------------------------------------------

TEST(Think, AnOrdinarySearchLeavesTheExpectedReplyAPonderSearchItsBestMove) {
    setUpFreshState(middleGameFen);
    EngineOptions.maxDepth = 4;
    EngineOptions.ponderMove = 0;
    EngineOptions.ponderBest = 77;
    thinkHere(0);
    EXPECT_NE(EngineOptions.ponderMove, 0U);
    EXPECT_EQ(EngineOptions.ponderMove, gs_lineH.argmove[1]);
    EXPECT_EQ(EngineOptions.ponderBest, 77U);

    EngineOptions.ponderMove = 88;
    const Thought thought = thinkHere(1);
    EXPECT_EQ(EngineOptions.ponderBest, thought.move);
    EXPECT_EQ(EngineOptions.ponderMove, 88U);
}

TEST(Think, WithoutPostThinkingNothingIsShown) {
    setUpFreshState(middleGameFen);
    EngineOptions.maxDepth = 3;
    EngineOptions.postThinking = 0;
    EXPECT_TRUE(thinkHere().lines.empty());
    EngineOptions.postThinking = 2;
    EXPECT_TRUE(thinkHere().lines.empty()) << "only a value of 1 shows";
}

TEST(Think, WithoutALegalMoveEachDepthReturnsAtOnceAndNoFormerMoveIsPlayed) {
    for (const char* fen : {stalemateFen, foolsMateFen}) {
        SCOPED_TRACE(fen);
        setUpFreshState(middleGameFen);
        EngineOptions.maxDepth = 3;
        ASSERT_NE(thinkHere().move, 0U);
        setUpFreshState(fen);
        EngineOptions.maxDepth = 6;
        const Thought thought = thinkHere();
        EXPECT_EQ(thought.move, 0U);
        EXPECT_EQ(depths(thought.lines).size(), 6U);
    }
}

// ---- time -----------------------------------------------------------------------------------------------------

// The deepest iteration of a search that began `elapsed` centiseconds ago with a budget of 1000.
i32 depthReached(i32 elapsed, i32 allocatedTime) {
    setUpFreshState(
        "8/8/8/3k4/8/3P4/3K4/8 w - - 0 1");  // a thousand nodes at most: the search itself polls nothing
    EngineOptions.maxDepth = 3;
    TimeControl.allocatedTime = allocatedTime;
    EngineOptions.searchStartMs = ManualClock.ms - elapsed * 10;
    thinkHere();
    return SearchInfo.iterationDepth;
}

TEST(Think, NoDepthBeginsInTheSecondHalfOfTheBudget) {
    EXPECT_EQ(depthReached(501, 1000), 1) << "the first has an open window";
    EXPECT_EQ(EngineOptions.stopSearch, 1);
    EXPECT_EQ(depthReached(1000, 1000), 1) << "the last hundredth";
    EXPECT_EQ(EngineOptions.stopSearch, 1);
    EXPECT_EQ(depthReached(500, 1000), 3) << "half is not more than half";
    EXPECT_EQ(EngineOptions.stopSearch, 0);
}

TEST(Think, InTheFirstSecondEveryDepthBegins) {
    EXPECT_EQ(depthReached(100, 110), 3);
    EXPECT_EQ(depthReached(101, 110), 1);
}

TEST(Think, BeyondTheBudgetThisTestIsSilent) {
    EXPECT_EQ(depthReached(1001, 1000), 3)
        << "the quotient is 0; the search's own clock test ends such a search";
}

TEST(Think, LongElapsedTimesAreNotCutTo16Bits) {
    EXPECT_EQ(depthReached(70000, 100000), 1);
}

TEST(Think, TheClockEndsASearchThatHasADepthToItself) {
    setUpFreshState(middleGameFen);
    TimeControl.allocatedTime = 20;
    const LooksTakeTime slowly(1);
    const Thought thought = thinkHere();
    EXPECT_NE(thought.move, 0U);
    EXPECT_EQ(EngineOptions.stopSearch, 1);
    EXPECT_EQ(elapsedMs(EngineOptions.searchStartMs), 211)
        << "the look that found 21 hundredths was the last";
    ASSERT_FALSE(thought.lines.empty());
    EXPECT_LT(number(thought.lines.back(), 0), SearchInfo.iterationDepth) << "the aborted depth is not shown";
}

TEST(Think, AStopDuringTheFirstDepthGivesNoMove) {
    setUpFreshState(middleGameFen);
    EngineOptions.stopSearch = 1;
    const Thought thought = thinkHere();
    EXPECT_EQ(thought.move, 0U);
    EXPECT_TRUE(thought.lines.empty());
}

// ---- boards that no game reaches ------------------------------------------------------------------------------

TEST(Think, EndsOnBoardsWhoseScoresPassTheOpenWindow) {
    const char* const fens[] = {
        "kqqn4/qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqq/8/5PPP/5P1K w - - 0 1",  // every move scores below -32000
        "8/8/8/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/kQQQQQQK w - - 0 1",
        "qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqq4/8/8/K6k w - - 0 1",
        "qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqq w - - 0 1",
        "8/8/8/8/8/8/8/8 w - - 0 1",
        "8/8/8/3P4/8/8/8/8 b - - 0 1",
        "kkkkkkkk/8/8/8/8/8/8/KKKKKKKK w - - 0 1",
    };
    for (const char* fen : fens) {
        SCOPED_TRACE(fen);
        setUpFreshState(fen);
        EngineOptions.maxDepth = 3;
        TimeControl.allocatedTime = 300;
        const LooksTakeTime slowly(10);
        thinkHere();
        EXPECT_LE(elapsedMs(EngineOptions.searchStartMs), 3020);
        EXPECT_EQ(board, boardStack.data());
    }
}

TEST(Think, ExtremeDepthLimitsEndByTheClock) {
    for (const i32 minDepth : {1, -70000, 32767, 40000, 2147483647}) {
        SCOPED_TRACE(minDepth);
        setUpFreshState(middleGameFen);
        EngineOptions.minDepth = minDepth;
        EngineOptions.maxDepth = 2147483647;
        TimeControl.allocatedTime = 15;
        const LooksTakeTime slowly(10);
        thinkHere();
        EXPECT_EQ(EngineOptions.stopSearch, 1);
        // The depths below 1 are too short for the search's own look: a few looks each, ahead of it and for its line.
        const i32 depths = SearchInfo.iterationDepth - wrap16(minDepth) + 1;
        EXPECT_LE(ManualClock.looks, 4 * depths + 20);
        EXPECT_LT(depths, minDepth == 40000 ? 25560 : minDepth == -70000 ? 4490 : 20);
    }
}

TEST(Think, WithoutALegalMoveTheDeepestLimitEndsToo) {
    setUpFreshState(stalemateFen);
    EngineOptions.maxDepth = 2147483647;
    EngineOptions.minDepth = 32700;
    EXPECT_EQ(thinkHere().lines.size(), 68U);
}

}  // namespace
