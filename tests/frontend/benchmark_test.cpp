// The console's benchmark.
#include "frontend/internal.h"
#include "frontend_support.h"

TEST(Benchmark, ARateIsAWholeNumberOf32BitsWhateverTheTime) {
    EXPECT_EQ(nodesPerSecond(1000, 2.0), 500);
    EXPECT_EQ(nodesPerSecond(5, 3.0), 1);
    EXPECT_EQ(nodesPerSecond(5, 0.0), 0);
    EXPECT_EQ(nodesPerSecond(1'000'000'000'000, 1e-6), INT32_MAX);
}

// The six positions at full depth; the counts are the published ones.
TEST(Benchmark, CountsItsSixPositionsRightAtFullDepth) {
    testing::internal::CaptureStdout();
    runBenchmark();
    const std::string output = testing::internal::GetCapturedStdout();
    std::string expected = "Running benchmark. . .\n";
    for (const char* leaves :
         {" 119060324", " 193690690", " 178633661", " 706045033", "     53392", " 164075551"}) {
        expected +=
            std::string("Expected value:         ") + leaves + "\nCalculated value:       " + leaves + "\n\n";
    }
    expected += "\nTotal nodes:            1361558651 \nRaw nodes per second:   ";
    EXPECT_EQ(output.substr(0, expected.size()), expected);
    EXPECT_NE(output.find("\nTotal elapsed time:     "), std::string::npos);
    EXPECT_EQ(pieceCode(*board, 6), KING) << "the last position stays on the board";
}
