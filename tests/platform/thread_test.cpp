// Threads with room for a search, and the main thread's own room.
#include "platform/thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>

constexpr std::size_t megabyte = std::size_t{1} << 20;

TEST(Threads, HaveASixteenMegabyteStackWhateverTheDefault) {
    std::size_t size = 0;
    Thread thread{};
    ASSERT_TRUE(startThread(
        thread,
        [](void* result) {
            pthread_attr_t attributes;
            pthread_getattr_np(pthread_self(), &attributes);
            pthread_attr_getstacksize(&attributes, static_cast<std::size_t*>(result));
            pthread_attr_destroy(&attributes);
        },
        &size));
    joinThread(thread);
    EXPECT_GE(size, 16 * megabyte);
    EXPECT_LT(size, 17 * megabyte);
}

struct StackCase {
    const char* name;
    rlim_t soft;
    rlim_t hard;
    rlim_t raised;
};

TEST(MainStackLimitDeathTest, IsRaisedAsFarAsAllowedAndNeverLowered) {
    const StackCase cases[] = {
        {"a low limit", 1 * megabyte, 64 * megabyte, 16 * megabyte},
        {"a low limit that may be raised a little", 1 * megabyte, 2 * megabyte, 2 * megabyte},
        {"a limit beyond what is needed", 32 * megabyte, 64 * megabyte, 32 * megabyte},
    };
    testing::FLAGS_gtest_death_test_style = "threadsafe";  // other tests of this program run threads
    for (const StackCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EXIT(
            {
                rlimit limit{};
                limit.rlim_cur = c.soft;
                limit.rlim_max = c.hard;
                setrlimit(RLIMIT_STACK, &limit);
                raiseMainStackLimit();
                getrlimit(RLIMIT_STACK, &limit);
                _exit(limit.rlim_cur == c.raised ? 0 : 1);
            },
            testing::ExitedWithCode(0), "");
    }
}
