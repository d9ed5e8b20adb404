#include "platform/relaxed.h"

#include "platform/bits.h"

#include <gtest/gtest.h>

#include <thread>

TEST(Relaxed, ReadsAndAssignsLikeTheFieldItHolds) {
    Relaxed<i32> field;
    EXPECT_EQ(field, 0);
    field = 7;
    const Relaxed<i32> copy = field;
    EXPECT_EQ(copy, 7);
    Relaxed<i32> other{3};
    other = copy;
    EXPECT_EQ(other.load(), 7);
    EXPECT_EQ(sizeof field, sizeof(i32));
}

TEST(Relaxed, ThreadsMayWriteAndReadAtOnce) {
    Relaxed<i32> field;
    std::thread writer([&field] {
        for (i32 i = 1; i <= 10000; ++i) {
            field = i;
        }
    });
    i32 last = 0;
    while (last < 10000) {
        const i32 seen = field;
        EXPECT_GE(seen, last);
        last = seen;
    }
    writer.join();
}

// The plain field is a data race unless the published one orders it; the thread sanitizer tells.
TEST(Published, AReaderInAnotherThreadSeesWhatWasWrittenBefore) {
    i32 start = 0;
    Published<i32> budget;
    std::thread writer([&] {
        start = 5;
        budget = 7;
    });
    while (budget == 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(budget, 7);
    EXPECT_EQ(start, 5);
    writer.join();
}
