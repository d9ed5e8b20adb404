// Pages of memory, and the clock.
#include "platform/platform.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <thread>
#include <vector>

constexpr std::size_t bytes = std::size_t{3} << 20;

static bool isZero(const void* memory) {
    const u8* begin = static_cast<const u8*>(memory);
    return std::all_of(begin, begin + bytes, [](u8 byte) { return byte == 0; });
}

TEST(Pages, AreZeroAtFirstAndAgainAfterZeroing) {
    for (const bool large : {false, true}) {
        void* memory = allocatePages(bytes, large);
        ASSERT_NE(memory, nullptr);
        EXPECT_TRUE(isZero(memory));
        std::fill_n(static_cast<u8*>(memory), bytes, u8{0xAB});
        zeroPages(memory, bytes);
        EXPECT_TRUE(isZero(memory));
        freePages(memory, bytes);
    }
}

TEST(Pages, ThatCannotBeHadAreRefused) {
    EXPECT_EQ(allocatePages(0, false), nullptr);
    EXPECT_EQ(allocatePages(std::numeric_limits<std::size_t>::max(), false), nullptr);
    EXPECT_EQ(allocatePages(std::numeric_limits<std::size_t>::max() / 16 * 15, true), nullptr);
}

// -1 where the pages are not mapped.
static i64 residentPages(void* memory) {
    std::vector<unsigned char> states((bytes + 4095) / 4096);
    return mincore(memory, bytes, states.data()) == 0
               ? std::count_if(states.begin(), states.end(),
                               [](unsigned char state) { return (state & 1) != 0; })
               : -1;
}

TEST(Pages, AreGivenBackByZeroingAndFreeing) {
    void* memory = allocatePages(bytes, false);
    ASSERT_NE(memory, nullptr);
    std::fill_n(static_cast<u8*>(memory), bytes, u8{0xAB});
    EXPECT_GT(residentPages(memory), 0);
    zeroPages(memory, bytes);
    EXPECT_EQ(residentPages(memory), 0);
    freePages(memory, bytes);
    EXPECT_EQ(residentPages(memory), -1);
}

TEST(Pages, ThatCannotBeGivenBackAreZeroedToo) {
    void* memory = allocatePages(bytes, false);
    ASSERT_NE(memory, nullptr);
    if (mlock(memory, bytes) != 0) {
        GTEST_SKIP() << "no memory may be locked";
    }
    std::fill_n(static_cast<u8*>(memory), bytes, u8{0xAB});
    zeroPages(memory, bytes);
    EXPECT_TRUE(isZero(memory));
    freePages(memory, bytes);
}

TEST(Pages, FreeingNothingIsAllowed) {
    freePages(nullptr, bytes);
}

TEST(Clock, CountsMillisecondsForward) {
    const auto begun = std::chrono::steady_clock::now();  // ahead of the start: other work may come between
    const i32 start = nowMs();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const i32 counted = elapsedMs(start);
    const auto passed =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begun);
    EXPECT_GE(counted, 19);
    EXPECT_LE(counted, passed.count() + 1);
}

// Setting the time of day must not end a search or let it go on for ever.
TEST(Clock, IsTheMonotonicOne) {
    const auto monotonicMs = [] {
        timespec moment{};
        EXPECT_EQ(clock_gettime(CLOCK_MONOTONIC, &moment), 0);
        return static_cast<u32>(static_cast<u64>(moment.tv_sec) * 1000 +
                                static_cast<u64>(moment.tv_nsec) / 1'000'000);
    };
    const u32 before = monotonicMs();
    const u32 now = static_cast<u32>(nowMs());
    EXPECT_LE(now - before, monotonicMs() - before) << "it lies between two looks, across a wrap too";
}

TEST(Clock, DifferencesAreRightAcrossTheWrap) {
    // Nearly the whole range of positive numbers; four hours are left for the test.
    const i32 now = nowMs();
    const i32 start = static_cast<i32>(static_cast<u32>(now) - 0x7F000000U);
    EXPECT_GE(elapsedMs(start), 0x7F000000);
}
