// What one who looks on while a search runs gets to see, and may change.
#include "search/search_watch.h"

#include "search/search.h"
#include "search/search_fixture.h"

#include <algorithm>

namespace {

class SearchWatched : public testing::Test {
  protected:
    void SetUp() override {
        setUpFreshState(middleGameFen);
        EngineOptions.postThinking = 0;
    }
    void TearDown() override { SearchWatch = {}; }
};

i32 calls = 0;

// Searches; nodes of the last attempt.
u32 nodesOfDepth(i32 depth) {
    setUpFreshState(middleGameFen);
    EngineOptions.postThinking = 0;
    EngineOptions.maxDepth = depth;
    think(0);
    return SearchInfo.nodes;
}

}  // namespace

TEST_F(SearchWatched, SeesTheClockBeingReadAndChangesNothing) {
    const u32 unwatched = nodesOfDepth(7);
    calls = 0;
    SearchWatch.clockRead = [] { ++calls; };
    SearchWatch.rootListMade = [](RootList&, i32&) {};
    EXPECT_EQ(nodesOfDepth(7), unwatched);
    EXPECT_GT(calls, 0);
}

TEST_F(SearchWatched, CanBeStoppedWhenTheClockIsRead) {
    SearchWatch.clockRead = [] { EngineOptions.stopSearch = 1; };
    EXPECT_LT(nodesOfDepth(12), 20000U);
}

TEST_F(SearchWatched, SearchesOnlyTheMovesThatAreLeftInTheList) {
    SearchWatch.rootListMade = [](RootList& list, i32& count) {
        const auto end = std::remove_if(list.begin(), list.begin() + count, [](const RootMove& entry) {
            return entry.move != makeMossa(MOVE_PAWN, 8, 16);
        });
        count = static_cast<i32>(end - list.begin());
    };
    EngineOptions.maxDepth = 4;
    EXPECT_EQ(moveText(think(0)), "a2a3");
    EXPECT_EQ(SearchInfo.iterationDepth, 4);
}

TEST_F(SearchWatched, IsNotAskedAboutASingleMove) {
    setUpFreshState("6k1/8/8/2B5/8/8/6PP/r6K w - - 0 1");
    EngineOptions.postThinking = 0;
    calls = 0;
    SearchWatch.rootListMade = [](RootList&, i32&) { ++calls; };
    testing::internal::CaptureStdout();
    think(0);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(calls, 0);
}
