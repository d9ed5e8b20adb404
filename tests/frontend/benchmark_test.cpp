// The console's benchmark.
#include "frontend/internal.h"
#include "frontend_support.h"

TEST(Benchmark, ARateIsAWholeNumberOf32BitsWhateverTheTime) {
    EXPECT_EQ(nodesPerSecond(1000, 2.0), 500);
    EXPECT_EQ(nodesPerSecond(5, 3.0), 1);
    EXPECT_EQ(nodesPerSecond(5, 0.0), 0);
    EXPECT_EQ(nodesPerSecond(1'000'000'000'000, 1e-6), INT32_MAX);
}
