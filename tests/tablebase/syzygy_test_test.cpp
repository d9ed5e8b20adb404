// The harness that checks probes against a file of known answers.
#include "frontend/session.h"
#include "real_tables.h"
#include "support/test_data.h"
#include "table_folder.h"

#include <gmock/gmock.h>

#include <sstream>

#include <unistd.h>

namespace {

// A working directory with the folder TestSyzygy and a case file in it, for the length of a test.
struct WorkingFolder {
    TableFolder folder;
    std::filesystem::path before = std::filesystem::current_path();

    explicit WorkingFolder(const std::string& cases) {
        tables::registerFolder(testDataPath("syzygy"));
        std::filesystem::create_directories(folder.path / "TestSyzygy");
        folder.write("TestSyzygy/TestCase_09.txt", cases);
        std::filesystem::current_path(folder.path);
    }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;
    ~WorkingFolder() { std::filesystem::current_path(before); }

    [[nodiscard]] std::string read(const char* file) const {
        std::ifstream stream(folder.path / "TestSyzygy" / file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

std::string runHarness() {
    testing::internal::CaptureStdout();
    newGame();
    syzygyTest();
    return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST(SyzygyTest, SortsTheCasesThatDisagreeFromTheBadOnes) {
    const WorkingFolder folder(
        "7k/8/6K1/8/8/8/8/R7 w - - 0 1,1,2\n"       // right
        "7k/6Q1/6K1/8/8/8/8/8 b - - 0 1,-1,-2\r\n"  // right
        "7k/8/6K1/8/8/8/8/R7 w - - 0 1,3,2\n"       // another distance
        "7k/8/6K1/8/8/8/8/R7 w - - 0 1,1,1\n"       // another result
        "8/8/3k1r2/8/8/3K4/Q7/8 b - - 0 1,1,2\n"    // no table
        "8/8/3k1r2/8/8/3K4/Q7/8 b - - 0 1,0,0\n"    // no table, and yet the value
        "not a position,1,2\n"
        "7k/8/6K1/8/8/8/8/R7 w - - 0 1\n"  // no answers
        "\n" +
        std::string(1000, 'x') + ",1,2\n" + "8/8/3k4/8/8/3K4/B7/8 w - - 0 1,99999999999999999999,0");
    EXPECT_EQ(runHarness(),
              "Syzygy Test started\n"
              "Syzygy Test ended.\n"
              "Error:               4   0.00%\n"
              "Bad FEN:             4   0.00%\n");
    EXPECT_EQ(folder.read("Error.txt"),
              "7k/8/6K1/8/8/8/8/R7 w - - 0 1,3,2\n"
              "7k/8/6K1/8/8/8/8/R7 w - - 0 1,1,1\n"
              "8/8/3k1r2/8/8/3K4/Q7/8 b - - 0 1,1,2\n"
              "8/8/3k4/8/8/3K4/B7/8 w - - 0 1,99999999999999999999,0\n");
    EXPECT_EQ(folder.read("BadFEN.txt"),
              "not a position,1,2\n7k/8/6K1/8/8/8/8/R7 w - - 0 1\n\n" + std::string(255, 'x') + "\n");
}

TEST(SyzygyTest, TheDistanceOfATableThatFailsCountsWhereItAgrees) {
    const WorkingFolder folder(
        "4k3/8/4K3/8/8/8/8/7R w - - 0 1,1,2\n"
        "4k3/8/4K3/8/8/8/8/7R w - - 0 1,3,2\n"
        "4k3/8/4K3/8/8/8/8/7R b - - 0 1,-1,-2\n");
    const TableFolder damaged;
    damaged.write("KRvK.rtbw", realBytes("KRvK.rtbw"));
    damaged.write("KRvK.rtbz", "no table");
    tables::registerFolder(damaged.path.string());
    EXPECT_THAT(runHarness(), testing::HasSubstr("Error:               1 "));
    EXPECT_EQ(folder.read("Error.txt"), "4k3/8/4K3/8/8/8/8/7R w - - 0 1,3,2\n");
}

TEST(SyzygyTest, AppendsToTheFilesOfEarlierRuns) {
    const WorkingFolder folder("not a position,1,2\n");
    runHarness();
    runHarness();
    EXPECT_EQ(folder.read("BadFEN.txt"), "not a position,1,2\nnot a position,1,2\n");
}

TEST(SyzygyTest, ReportsEvery2000Lines) {
    std::string cases;
    for (i32 i = 0; i < 4001; ++i) {
        cases += "7k/8/6K1/8/8/8/8/R7 w - - 0 1,2,2\n";
    }
    const WorkingFolder folder(cases);
    EXPECT_EQ(runHarness(),
              "Syzygy Test started\n"
              "Completed: 0.08%\n"
              "Error:            2000   0.08%\n"
              "Bad FEN:             0   0.00%\n"
              "Completed: 0.16%\n"
              "Error:            4000   0.16%\n"
              "Bad FEN:             0   0.00%\n"
              "Syzygy Test ended.\n"
              "Error:            4001   0.16%\n"
              "Bad FEN:             0   0.00%\n");
}

TEST(SyzygyTest, EndsTheProcessWithoutItsFiles) {
    const TableFolder folder;
    EXPECT_EXIT(
        {
            std::filesystem::current_path(folder.path);
            dup2(2, 1);
            syzygyTest();
        },
        testing::ExitedWithCode(1), "File non trovato");
}
