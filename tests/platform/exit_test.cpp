// The end of the process from any place.
#include "platform/platform.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

class ExitNowDeathTest : public testing::Test {
  protected:
    // Other tests of this program run threads.
    void SetUp() override { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_F(ExitNowDeathTest, EndsTheProcessWithoutWhatIsRegisteredForItsEnd) {
    EXPECT_EXIT(
        {
            std::atexit([] { _exit(7); });
            exitNow(1);
        },
        testing::ExitedWithCode(1), "");
}

TEST_F(ExitNowDeathTest, WritesOutWhatIsPending) {
    EXPECT_EXIT(
        {
            dup2(STDERR_FILENO, STDOUT_FILENO);  // whose text is looked at
            std::setvbuf(stdout, nullptr, _IOFBF, 4096);
            std::printf("the last words");
            exitNow(0);
        },
        testing::ExitedWithCode(0), "the last words");
}
