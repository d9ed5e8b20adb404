// Looking a position up in books that the tests write: every place of a record, damaged files, the listing.
#include "board/board.h"
#include "book/book.h"
#include "book_files.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

constexpr u64 startKey = 0x463B96181691FC9C;

constexpr const char* noMove = "(none)";

struct BookProbe : testing::Test {
    TempDirectory directory;

    void SetUp() override {
        newGame();
        EngineOptions.randBook = 0;
        EngineOptions.postThinking = 0;
        EngineOptions.xboardMode = 0;
    }
    void TearDown() override { SetUp(); }

    std::string write(const std::vector<BookRecord>& records) const {
        return directory.write("book.bin", bookBytes(records));
    }
};

static std::string probe(const std::string& file) {
    char text[6] = "*****";
    const i32 result = bookProbe(file.c_str(), text);
    EXPECT_TRUE(result == 0 || result == 1);
    return result == 0 ? text : noMove;
}

static std::string listing(const std::string& file) {
    testing::internal::CaptureStdout();
    bookList(file.c_str());
    return testing::internal::GetCapturedStdout();
}

// `count` records of other keys, half below and half above the start position's.
static std::vector<BookRecord> othersAround(std::size_t below, std::size_t above) {
    std::vector<BookRecord> records;
    for (std::size_t i = 0; i < below; ++i) {
        records.push_back({startKey - (below - i) * 1000, bookMove("a2a3"), 1, 0});
    }
    for (std::size_t i = 0; i < above; ++i) {
        records.push_back({startKey + (i + 1) * 1000, bookMove("h2h3"), 1, 0});
    }
    return records;
}

// ---- search -----------------------------------------------------------------------------------------------------

TEST_F(BookProbe, FindsTheOnlyRecord) {
    EXPECT_EQ(probe(write({{startKey, bookMove("e2e4"), 1, 0}})), "e2e4");
}

TEST_F(BookProbe, FindsAKeyAtEveryPlaceOfABook) {
    for (std::size_t size = 1; size <= 33; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            std::vector<BookRecord> records = othersAround(place, size - 1 - place);
            records.insert(records.begin() + static_cast<std::ptrdiff_t>(place),
                           {startKey, bookMove("e2e4"), 1, 0});
            ASSERT_EQ(probe(write(records)), "e2e4") << place << " of " << size;
        }
    }
}

TEST_F(BookProbe, MissesAKeyThatIsNotThere) {
    for (std::size_t size = 1; size <= 9; ++size) {
        for (std::size_t below = 0; below <= size; ++below) {
            ASSERT_EQ(probe(write(othersAround(below, size - below))), noMove) << below << " of " << size;
        }
    }
}

TEST_F(BookProbe, FindsTheLowestAndTheHighestKeyAsUnsignedNumbers) {
    const std::vector<BookRecord> records = {{0, bookMove("a2a3"), 1, 0},
                                             {startKey, bookMove("e2e4"), 1, 0},
                                             {0x8000000000000000, bookMove("a2a3"), 1, 0},
                                             {~u64{0}, bookMove("a2a3"), 1, 0}};
    EXPECT_EQ(probe(write(records)), "e2e4");
}

TEST_F(BookProbe, TakesTheFirstOfEqualKeysAtEveryPlace) {
    const std::vector<BookRecord> equals = {{startKey, bookMove("c2c4"), 1, 0},
                                            {startKey, bookMove("e2e4"), 60000, 0},
                                            {startKey, bookMove("d2d4"), 9, 0}};
    for (std::size_t others = 0; others <= 12; ++others) {
        for (std::size_t place = 0; place <= others; ++place) {
            std::vector<BookRecord> records = othersAround(place, others - place);
            records.insert(records.begin() + static_cast<std::ptrdiff_t>(place), equals.begin(),
                           equals.end());
            ASSERT_EQ(probe(write(records)), "c2c4") << place << " of " << others;
        }
    }
}

TEST_F(BookProbe, LooksUpThePositionOfTheBlackSideToo) {
    ASSERT_EQ(parseUserMove("e2e4"), 1);
    EXPECT_EQ(probe(write({{0x823C9B50FD114196, bookMove("e7e5"), 1, 0}})), "e7e5");
}

TEST_F(BookProbe, LooksUpAnEnPassantPositionWithoutTheRight) {
    for (const char* move : {"e2e4", "d7d5", "e4e5", "f7f5"}) {
        ASSERT_EQ(parseUserMove(move), 1);
    }
    EXPECT_EQ(probe(write({{0x22A48B5A8E47FF78, bookMove("e5f6"), 1, 0}})), noMove) << "the published key";
    EXPECT_EQ(probe(write({{0xF240C920DB53040A, bookMove("e5f6"), 1, 0}})), "e5f6");
}

TEST_F(BookProbe, GivesAnIllegalMoveAsItStands) {
    EXPECT_EQ(probe(write({{startKey, bookMove("e1h1"), 1, 0}})), "e1g1");
    EXPECT_EQ(probe(write({{startKey, bookMove("a8a1"), 1, 0}})), "a8a1");
}

// ---- choice -----------------------------------------------------------------------------------------------------

static std::vector<BookRecord> manyMoves(u32 count) {
    std::vector<BookRecord> records;
    for (u32 i = 0; i < count; ++i) {
        records.push_back({startKey, static_cast<u16>(i), static_cast<u16>(i), 0});
    }
    return records;
}

// The generator's first number after seeding with the second, whatever the weights.
static std::string pickOfSecond(std::time_t second, i32 count) {
    std::srand(static_cast<unsigned>(second));
    char text[6];
    bookMoveText(text, static_cast<u16>(std::rand() % count));
    return text;
}

TEST_F(BookProbe, PicksByTheSecondWithoutRegardToWeight) {
    EngineOptions.randBook = 1;
    const std::string file = write(manyMoves(100));
    std::time_t before = 0;
    std::string first;
    std::string second;
    do {
        before = std::time(nullptr);
        first = probe(file);
        second = probe(file);
    } while (std::time(nullptr) != before);
    EXPECT_EQ(first, pickOfSecond(before, 100));
    EXPECT_EQ(second, first) << "one second, one pick";
}

TEST_F(BookProbe, PicksAtRandomForAnyNonZeroSetting) {
    const std::string file = write({{startKey, bookMove("e2e4"), 0, 0}});
    for (const i32 setting : {-1, 1, 2}) {
        EngineOptions.randBook = setting;
        EXPECT_EQ(probe(file), "e2e4");
    }
}

// ---- number of moves --------------------------------------------------------------------------------------------

TEST_F(BookProbe, ServesAHundredMoves) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(probe(write(manyMoves(100))), "a1a1");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    const std::string list = listing(write(manyMoves(100)));
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 100);
}

TEST_F(BookProbe, FailsWithAHundredAndOneMoves) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(probe(write(manyMoves(101))), noMove);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "#DEBUG: Too many moves in this position (max=100)\n");
    EXPECT_EQ(listing(write(manyMoves(101))), "Too many moves in this position (max=100)\n");
    EXPECT_EQ(listing(write(manyMoves(5000))), "Too many moves in this position (max=100)\n");
}

TEST_F(BookProbe, DoesNotCountOtherKeysAmongTheHundred) {
    std::vector<BookRecord> records = manyMoves(100);
    records.push_back({startKey + 1, bookMove("a2a3"), 1, 0});
    EXPECT_EQ(probe(write(records)), "a1a1");
}

// ---- the line for the interface ---------------------------------------------------------------------------------

TEST_F(BookProbe, ShowsTheMoveAsAThinkingLineUnderTheProtocol) {
    const std::string file = write({{startKey, bookMove("e2e4"), 1, 0}});
    EngineOptions.postThinking = 1;
    EngineOptions.xboardMode = 1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(probe(file), "e2e4");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "0 0 0 0 e2e4 (move from book)\n");
}

TEST_F(BookProbe, ShowsNothingElsewhere) {
    const std::string hit = write({{startKey, bookMove("e2e4"), 1, 0}});
    const std::string miss = directory.write("miss.bin", bookBytes({{1, bookMove("e2e4"), 1, 0}}));
    testing::internal::CaptureStdout();
    for (const auto& [post, xboard] : {std::pair{0, 1}, {1, 0}, {2, 1}, {1, 2}}) {
        EngineOptions.postThinking = post;
        EngineOptions.xboardMode = xboard;
        EXPECT_EQ(probe(hit), "e2e4");
    }
    EngineOptions.postThinking = 1;
    EngineOptions.xboardMode = 1;
    EXPECT_EQ(probe(miss), noMove);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// ---- files ------------------------------------------------------------------------------------------------------

TEST_F(BookProbe, MissesInAFileShorterThanARecord) {
    const std::string whole = bookBytes({{startKey, bookMove("e2e4"), 1, 0}});
    for (std::size_t length = 0; length < 16; ++length) {
        const std::string file = directory.write("short.bin", whole.substr(0, length));
        testing::internal::CaptureStderr();
        EXPECT_EQ(probe(file), noMove) << length;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "a plain miss";
    }
}

TEST_F(BookProbe, SearchesAFileOfOddLengthByItsWholeRecords) {
    std::vector<BookRecord> records = othersAround(3, 3);
    records.insert(records.begin() + 3, {startKey, bookMove("e2e4"), 1, 0});
    const std::string whole = bookBytes(records);
    for (std::size_t extra = 1; extra < 16; ++extra) {
        const std::string file = directory.write("odd.bin", whole + std::string(extra, '\0'));
        EXPECT_EQ(probe(file), "e2e4") << extra;
    }
}

TEST_F(BookProbe, EndsTheListAtACutRecord) {
    const std::string whole = bookBytes(manyMoves(3));
    const std::string file = directory.write("cut.bin", bookBytes(othersAround(2, 0)) + whole.substr(0, 40));
    EXPECT_EQ(listing(file), "move=a1a1 weight= 0.00%\nmove=a1b1 weight=100.00%\n");
}

TEST_F(BookProbe, EndsInAnUnsortedFile) {
    std::vector<BookRecord> records = othersAround(20, 20);
    records.push_back({startKey, bookMove("e2e4"), 1, 0});
    std::sort(records.begin(), records.end(),
              [](const BookRecord& a, const BookRecord& b) { return a.key > b.key; });
    const std::string result = probe(write(records));
    EXPECT_TRUE(result == noMove || result == "e2e4");
}

TEST_F(BookProbe, SaysWhyAFileCannotBeOpened) {
    const std::string missing = directory.nameOf("no such book.bin");
    for (i32 i = 0; i < 2; ++i) {
        testing::internal::CaptureStderr();
        testing::internal::CaptureStdout();
        EXPECT_EQ(probe(missing), noMove);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), missing + ": No such file or directory\n")
            << "each time";
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(listing(missing), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), missing + ": No such file or directory\n");
}

TEST_F(BookProbe, TakesWhatIsNoRegularFileAsOneThatCannotBeOpened) {
    const std::string pipe = directory.nameOf("pipe.bin");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& name : {pipe, directory.path.string(), std::string("/dev/zero"), std::string()}) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(probe(name), noMove);
        EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::StartsWith(name + ": "));
    }
}

TEST_F(BookProbe, ClosesTheFileAfterEachProbe) {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit small = {32, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &small), 0);
    const std::string hit = write({{startKey, bookMove("e2e4"), 1, 0}});
    const std::string tooMany = directory.write("many.bin", bookBytes(manyMoves(101)));
    const std::string shortFile = directory.write("short.bin", "x");
    testing::internal::CaptureStdout();
    for (i32 i = 0; i < 1000; ++i) {
        ASSERT_EQ(probe(hit), "e2e4") << i;
        ASSERT_EQ(probe(tooMany), noMove);
        ASSERT_EQ(probe(shortFile), noMove);
        bookList(hit.c_str());
    }
    testing::internal::GetCapturedStdout();
    setrlimit(RLIMIT_NOFILE, &limit);
}

TEST_F(BookProbe, ReadsBeyondFourGigabytes) {
    // Zeros take no room on disk: keys of 0 below, the two records at the end.
    const std::string file = directory.write("large.bin", "");
    constexpr u64 size = (u64{5} << 30) + 32;
    std::error_code error;
    std::filesystem::resize_file(file, size - 32, error);
    if (error) {
        GTEST_SKIP() << "no large files here: " << error.message();
    }
    {
        std::ofstream stream(file, std::ios::binary | std::ios::app);
        const std::string records =
            bookBytes({{startKey, bookMove("e2e4"), 1, 0}, {startKey, bookMove("d2d4"), 3, 0}});
        stream.write(records.data(), static_cast<std::streamsize>(records.size()));
    }
    ASSERT_EQ(std::filesystem::file_size(file), size);
    EXPECT_EQ(probe(file), "e2e4");
    EXPECT_EQ(listing(file), "move=e2e4 weight=25.00%\nmove=d2d4 weight=75.00%\n");
}

// ---- listing ----------------------------------------------------------------------------------------------------

TEST_F(BookProbe, ListsTheMovesWithTheirShares) {
    std::vector<BookRecord> records = othersAround(2, 2);
    const std::vector<BookRecord> equals = {{startKey, bookMove("e2e4"), 2, 5},
                                            {startKey, bookMove("e1h1"), 1, 0},
                                            {startKey, bookMove("e7e8", 4), 0, 0},
                                            {startKey, bookMove("d2d4"), 0, 0}};
    records.insert(records.begin() + 2, equals.begin(), equals.end());
    EXPECT_EQ(listing(write(records)),
              "move=e2e4 weight=66.67%\nmove=e1g1 weight=33.33%\nmove=e7e8q weight= 0.00%\nmove=d2d4 weight= "
              "0.00%\n");
}

TEST_F(BookProbe, ListsTheWholeShareOfALoneMove) {
    EXPECT_EQ(listing(write({{startKey, bookMove("e2e4"), 65535, 0}})), "move=e2e4 weight=100.00%\n");
}

TEST_F(BookProbe, ListsZeroSharesWhenNoMoveHasAWeight) {
    EXPECT_EQ(listing(write({{startKey, bookMove("e2e4"), 0, 0}, {startKey, bookMove("d2d4"), 0, 0}})),
              "move=e2e4 weight= 0.00%\nmove=d2d4 weight= 0.00%\n");
}

TEST_F(BookProbe, ListsAMissByItsKey) {
    EXPECT_EQ(listing(write(othersAround(1, 1))), "463b96181691fc9c: No such key\n");
    EXPECT_EQ(listing(directory.write("empty.bin", "")), "463b96181691fc9c: No such key\n");
    ASSERT_EQ(fenToBoard("7k/8/8/8/8/8/8/8 b - - 0 1"), 1);
    EXPECT_EQ(listing(write(othersAround(1, 1))).size(),
              std::string("463b96181691fc9c: No such key\n").size());
}

// ---- a large, real book -----------------------------------------------------------------------------------------

// Walks the book's tree from the start position: every move of every position it reaches is legal.
static void walkBook(const std::string& file, std::set<u64>& seen, u64& moves) {
    if (!seen.insert(polyglotKey()).second) {
        return;
    }
    testing::internal::CaptureStdout();
    const i32 result = bookList(file.c_str());
    std::string list = testing::internal::GetCapturedStdout();
    if (result != 0) {
        return;
    }
    constexpr std::size_t moveStart = 5;  // behind "move="
    for (std::size_t line = 0; line < list.size(); line = list.find('\n', line) + 1) {
        const std::string move = list.substr(line + moveStart, list.find(' ', line) - line - moveStart);
        ++moves;
        ASSERT_EQ(parseUserMove(move.c_str()), 1) << move;
        walkBook(file, seen, moves);
        --board;
    }
}

TEST_F(BookProbe, PlaysLegalMovesFromARealBook) {
    const char* file = std::getenv("TARVELMON_BOOK_FILE");
    if (file == nullptr) {
        GTEST_SKIP() << "TARVELMON_BOOK_FILE names no book";
    }
    EXPECT_NE(probe(file), noMove);
    std::set<u64> seen;
    u64 moves = 0;
    walkBook(file, seen, moves);
    EXPECT_GT(moves, 1000U);
    RecordProperty("positions", std::to_string(seen.size()));
    RecordProperty("moves", std::to_string(moves));
}
