// The opening lines and the sample configuration that are installed with the engine.
#include "board/board.h"
#include "book/book.h"
#include "book_builder.h"
#include "book_check.h"
#include "frontend/config.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "line_reader.h"
#include "support/temp_directory.h"
#include "text_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>

static std::string shipped(const char* name) {
    return std::string(SHIPPED_DATA_DIR) + "/" + name;
}

static BookBuilder shippedLines(u64& lines, FaultLog& log) {
    std::string text;
    EXPECT_TRUE(readFile(shipped("book/openings.txt"), text));
    BookBuilder builder{400, {}};
    lines = readOpeningLines(builder, log, "openings.txt", text);
    return builder;
}

TEST(ShippedBook, HasLegalMovesOnly) {
    u64 lines = 0;
    FaultLog log{};
    const BookBuilder builder = shippedLines(lines, log);
    EXPECT_EQ(log.count, 0U);
    EXPECT_GE(lines, 300U);
    const BookReport report = checkBook({recordsOf(builder, 1), 0});
    EXPECT_TRUE(isSound(report));
    EXPECT_EQ(report.reachedRecords, report.records) << "every record is met from the start position";
}

TEST(ShippedBook, FitsIntoTheMovesThatCount) {
    u64 lines = 0;
    FaultLog log{};
    const BookBuilder all = shippedLines(lines, log);
    std::string text;
    ASSERT_TRUE(readFile(shipped("book/openings.txt"), text));
    BookBuilder counted{40, {}};
    readOpeningLines(counted, log, "openings.txt", text);
    EXPECT_EQ(counted.countOfMove.size(), all.countOfMove.size());
}

TEST(ShippedBook, AnswersEveryFirstMove) {
    u64 lines = 0;
    FaultLog log{};
    const TempDirectory directory;
    const std::string name = directory.nameOf("book.bin");
    ASSERT_TRUE(saveBook(name, recordsOf(shippedLines(lines, log), 1)));
    for (const char* move :
         {"a2a3", "a2a4", "b2b3", "b2b4", "c2c3", "c2c4", "d2d3", "d2d4", "e2e3", "e2e4",
          "f2f3", "f2f4", "g2g3", "g2g4", "h2h3", "h2h4", "b1a3", "b1c3", "g1f3", "g1h3"}) {
        newGame();
        ASSERT_EQ(parseUserMove(move), 1);
        char text[6] = "";
        EXPECT_EQ(bookProbe(name.c_str(), text), 0) << move;
        EXPECT_EQ(parseUserMove(text), 1) << move << " " << text;
    }
    newGame();
}

// ---- the sample configuration -----------------------------------------------------------------------------------

constexpr const char* sampleName = "tarvelmon.ini";

TEST(SampleConfiguration, NamesEveryKeyOnceInItsSection) {
    std::string text;
    ASSERT_TRUE(readFile(shipped(sampleName), text));
    std::multiset<std::string> found;
    std::string section;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('[')) {
            section = line;
        } else if (!line.starts_with(';') && line.find('=') != std::string::npos) {
            found.insert(section + line.substr(0, line.find('=')));
        } else {
            EXPECT_TRUE(line.empty() || line.starts_with(';')) << line;
        }
        EXPECT_LE(line.size(), 120U) << line;
    }
    const std::multiset<std::string> expected = {
        "[ENGINE]MaxDepth",     "[ENGINE]MinDepth",     "[ENGINE]MaxTime",   "[ENGINE]PostThinking",
        "[ENGINE]HashSize",     "[ENGINE]PawnHashSize", "[ENGINE]safePly",   "[BOOK]BookFile",
        "[BOOK]Book",           "[BOOK]RandBook",       "[TABLEBASE]Syzygy", "[TABLEBASE]SyzygyPath",
        "[TABLEBASE]SyzygyMen", "[TIME]SuddenDeath",    "[TIME]MoreTime",    "[TIME]LessTime",
        "[TIME]FastGame",       "[TIME]FastOpening"};
    EXPECT_EQ(found, expected);
}

TEST(SampleConfiguration, SetsDefaultsButForMemoryTimesAndTheFolderOfTables) {
    const EngineOptionsRecord options = EngineOptions;
    const TimeControlRecord times = TimeControl;
    loadConfig(shipped(sampleName).c_str());
    EXPECT_EQ(EngineOptions.hashSize, 128);
    EXPECT_EQ(EngineOptions.pawnHashSize, 16);
    EXPECT_STREQ(EngineOptions.syzygyPath, "syzygy");
    EXPECT_EQ(EngineOptions.maxDepth, 64);
    EXPECT_EQ(EngineOptions.minDepth, 1);
    EXPECT_EQ(EngineOptions.postThinking, 1);
    EXPECT_EQ(EngineOptions.safePly, 10);
    EXPECT_STREQ(EngineOptions.bookFile, "book.bin");
    EXPECT_EQ(EngineOptions.book, 1);
    EXPECT_EQ(EngineOptions.randBook, 1);
    EXPECT_EQ(EngineOptions.syzygy, 1);
    EXPECT_EQ(EngineOptions.syzygyMen, 5);
    EXPECT_EQ(TimeControl.maxTime, 300000);
    EXPECT_EQ(TimeControl.suddenDeath, 20);
    EXPECT_EQ(TimeControl.moreTime, 5);
    EXPECT_EQ(TimeControl.lessTime, 5);
    EXPECT_EQ(TimeControl.fastGame, 5);
    EXPECT_EQ(TimeControl.fastOpening, 35);
    EngineOptions = options;
    TimeControl = times;
}
