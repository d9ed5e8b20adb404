// The budget of a move. The numbers were worked by hand from the rule.
#include "frontend/time_allocation.h"
#include "frontend_support.h"
#include "platform/platform.h"

#include <limits>

struct BudgetCase {
    const char* name;
    i32 engineClock;
    i32 opponentClock;
    i32 increment;
    i32 moveNumber;
    i32 divisor;
    i32 budget;
};

constexpr i32 highest = std::numeric_limits<i32>::max();
constexpr i32 lowest = std::numeric_limits<i32>::min();

constexpr BudgetCase budgetCases[] = {
    {"console with all defaults", 720000, 0, 0, 0, 120, 6000},
    {"first move of five minutes", 30000, 30000, 0, 0, 125, 240},
    {"move 12 is still the opening", 30000, 30000, 0, 12, 125, 240},
    {"move 13 is not", 30000, 30000, 0, 13, 20, 1500},
    {"behind on the clock", 25000, 26000, 0, 13, 25, 1000},
    {"ahead on the clock", 26000, 25000, 0, 13, 15, 1733},
    {"short of time", 5000, 5000, 0, 20, 25, 200},
    {"exactly a minute is short", 6000, 6000, 0, 20, 25, 240},
    {"a hundredth more is not", 6001, 6001, 0, 20, 20, 300},
    {"short, but three seconds a move", 6000, 6000, 300, 20, 20, 600},
    {"short, and a hundredth less than three seconds a move", 6000, 6000, 299, 20, 25, 539},
    {"the increment is added", 30000, 30000, 1200, 20, 20, 2700},
    {"the increment leaves exactly five seconds and is not spent", 1026, 1026, 500, 20, 20, 51},
    {"the increment leaves a hundredth more and is spent", 1054, 1054, 500, 20, 20, 552},
    {"no time at all", 0, 0, 0, 20, 25, 0},
    {"a negative clock, truncated towards zero", -26, 0, 0, 20, 30, 0},
    // 2^31 / 15 in single precision is a multiple of 16.
    {"the highest clock", highest, 0, 0, 20, 15, 143165584},
    {"the lowest clock", lowest, highest, 0, 20, 30, -71582792},
};

class TimeAllocation : public testing::Test {
  protected:
    void SetUp() override { setDefaults(); }
};

static void setClocks(const BudgetCase& c) {
    TimeControl.engineClock = c.engineClock;
    TimeControl.opponentClock = c.opponentClock;
    TimeControl.increment = c.increment;
    TimeControl.moveNumber = c.moveNumber;
}

TEST_F(TimeAllocation, DividesTheClockAndSaysSo) {
    for (const BudgetCase& c : budgetCases) {
        SCOPED_TRACE(c.name);
        setClocks(c);
        const std::string expected = "#DEBUG moves: " + std::to_string(c.moveNumber) +
                                     " move speed: " + std::to_string(c.divisor) +
                                     "  allocated time: " + std::to_string(c.budget) + "\n";
        EXPECT_EQ(outputOf(allocateTime), expected);
        EXPECT_EQ(TimeControl.allocatedTime, c.budget);
    }
}

TEST_F(TimeAllocation, AHugeIncrementOnAHugeClockStaysInRange) {
    TimeControl.engineClock = highest;
    TimeControl.opponentClock = highest;
    TimeControl.increment = 2000000000;
    TimeControl.moveNumber = 20;
    outputOf(allocateTime);
    // The share is 107374184 in single precision; 40109463 would stay, so the increment is spent.
    EXPECT_EQ(TimeControl.allocatedTime, 2107374184);
}

TEST_F(TimeAllocation, MovesPerSessionHaveNoSay) {
    setClocks(budgetCases[1]);
    TimeControl.movesPerSession = 40;
    outputOf(allocateTime);
    EXPECT_EQ(TimeControl.allocatedTime, 240);
}

TEST_F(TimeAllocation, TheSettingsAreTheTermsOfTheDivisor) {
    TimeControl.suddenDeath = 40;
    TimeControl.moreTime = 15;
    TimeControl.lessTime = 14;
    TimeControl.fastGame = 13;
    TimeControl.fastOpening = 35;
    TimeControl.moveNumber = 0;
    TimeControl.engineClock = 6000;
    TimeControl.opponentClock = 5000;
    EXPECT_NE(outputOf(allocateTime).find("move speed: 73 "), std::string::npos);
    TimeControl.opponentClock = 7000;
    EXPECT_NE(outputOf(allocateTime).find("move speed: 102 "), std::string::npos);
}

struct PressureCase {
    const char* name;
    i32 engineClock;
    i32 opponentClock;
    i32 increment;
    i32 ponder;    // afterwards, from 1
    i32 minDepth;  // afterwards, from 3
};

constexpr PressureCase pressureCases[] = {
    {"both clocks long", 6001, 6001, 0, 1, 3},
    {"the opponent is short", 6001, 6000, 299, 0, 3},
    {"the opponent is short with an increment", 6001, 6000, 300, 1, 3},
    {"the engine is short", 6000, 9000, 299, 0, 1},
    {"the engine is short with an increment", 6000, 9000, 300, 1, 3},
};

TEST_F(TimeAllocation, PressureSwitchesPonderingOffAndDropsTheMinimumDepth) {
    for (const PressureCase& c : pressureCases) {
        SCOPED_TRACE(c.name);
        EngineOptions.ponder = 1;
        EngineOptions.minDepth = 3;
        TimeControl.engineClock = c.engineClock;
        TimeControl.opponentClock = c.opponentClock;
        TimeControl.increment = c.increment;
        outputOf(allocateTime);
        EXPECT_EQ(EngineOptions.ponder, c.ponder);
        EXPECT_EQ(EngineOptions.minDepth, c.minDepth);
    }
}

TEST_F(TimeAllocation, TheBudgetStartsNowAndTheSearchMayRun) {
    EngineOptions.stopSearch = 1;
    EngineOptions.searchStartMs = 5;
    outputOf(allocateTime);
    EXPECT_EQ(EngineOptions.stopSearch, 0);
    EXPECT_EQ(EngineOptions.searchStartMs, ManualClock.ms);
}

TEST_F(TimeAllocation, ARunningSearchGetsABudgetButAStoppedOneStaysStopped) {
    setClocks(budgetCases[1]);
    EngineOptions.stopSearch = 1;
    EngineOptions.searchStartMs = 5;
    outputOf(allocateTimeForRunningSearch);
    EXPECT_EQ(EngineOptions.stopSearch, 1);
    EXPECT_EQ(TimeControl.allocatedTime, 240);
    EXPECT_EQ(EngineOptions.searchStartMs, ManualClock.ms);
}
