// When the clock ends a search.
#include "search/internal.h"
#include "search/search_fixture.h"

namespace {

struct ClockCase {
    const char* name;
    u32 nodes;
    i32 elapsed;  // centiseconds
    i32 moveTime;
    i32 allocatedTime;
    bool isUp;
};

constexpr ClockCase clockCases[] = {
    {"both far", 1024, 50, 720000, 720000, false},
    {"at both", 1024, 100, 100, 100, false},
    {"past the budget", 1024, 101, 720000, 100, true},
    {"past the hard bound", 1024, 101, 100, 720000, true},
    {"past both, but not polled", 1025, 200, 100, 100, false},
    {"not polled in between", 1536, 200, 100, 100, false},
    {"polled at 0", 0, 200, 100, 100, true},
    {"polled at 2048", 2048, 200, 100, 100, true},
    {"a budget of 0 and no time gone", 1024, 0, 720000, 0, false},
    {"a budget of 0 with time gone", 1024, 1, 720000, 0, true},
    {"a negative budget", 1024, 0, 720000, -1, true},
};

TEST(TimeIsUp, IsAskedOnceIn1024NodesAndStopsTheSearch) {
    for (const ClockCase& c : clockCases) {
        SCOPED_TRACE(c.name);
        setUpFreshState("4k3/8/8/8/8/8/8/Q3K3 w - - 0 1");
        SearchInfo.nodes = c.nodes;
        TimeControl.moveTime = c.moveTime;
        TimeControl.allocatedTime = c.allocatedTime;
        EngineOptions.searchStartMs = ManualClock.ms - c.elapsed * 10;
        EXPECT_EQ(timeIsUp(), c.isUp);
        EXPECT_EQ(EngineOptions.stopSearch, c.isUp ? 1 : 0);
    }
}

}  // namespace
