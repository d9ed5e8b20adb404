// Whole books: reading, writing, merging, checking.
#include "book_file.h"

#include "board/board.h"
#include "board/tables.h"
#include "book/book.h"
#include "book_check.h"
#include "frontend/session.h"
#include "hash/random64.h"
#include "support/temp_directory.h"
#include "text_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

constexpr u64 startKey = 0x463B96181691FC9C;
constexpr u64 afterE4Key = 0x823C9B50FD114196;
constexpr u16 e2e4 = makeBookMove(12, 28, 0);
constexpr u16 d2d4 = makeBookMove(11, 27, 0);
constexpr u16 e7e5 = makeBookMove(52, 36, 0);
constexpr u16 e2e5 = makeBookMove(12, 36, 0);

static bool equal(const BookRecord& a, const BookRecord& b) {
    return a.key == b.key && a.move == b.move && a.weight == b.weight && a.learn == b.learn;
}

TEST(BookFile, KeepsRecordsAsTheyAre) {
    const TempDirectory directory;
    const std::string name = directory.nameOf("book.bin");
    const BookRecords records = {{startKey, e2e4, 3, 7}, {1, 2, 3, 4}};
    ASSERT_TRUE(saveBook(name, records));
    LoadedBook book{};
    ASSERT_TRUE(loadBook(name, book));
    ASSERT_EQ(book.records.size(), 2U);
    EXPECT_TRUE(equal(book.records[0], records[0]));
    EXPECT_TRUE(equal(book.records[1], records[1]));
    EXPECT_EQ(book.spareBytes, 0U);
    EXPECT_FALSE(std::filesystem::exists(name + ".new"));
}

TEST(BookFile, TellsSpareBytes) {
    const TempDirectory directory;
    LoadedBook book{};
    ASSERT_TRUE(loadBook(directory.write("odd.bin", std::string(37, 'x')), book));
    EXPECT_EQ(book.records.size(), 2U);
    EXPECT_EQ(book.spareBytes, 5U);
    ASSERT_TRUE(loadBook(directory.write("empty.bin", ""), book));
    EXPECT_EQ(book.records.size(), 0U);
}

TEST(BookFile, SaysWhatCannotBeReadOrWritten) {
    const TempDirectory directory;
    LoadedBook book{};
    testing::internal::CaptureStderr();
    EXPECT_FALSE(loadBook(directory.nameOf("missing.bin"), book));
    EXPECT_FALSE(loadBook(directory.path.string(), book));
    EXPECT_FALSE(saveBook(directory.nameOf("no/such/folder.bin"), {{1, 2, 3, 4}}));
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("missing.bin: No such file"), std::string::npos) << said;
    EXPECT_NE(said.find("folder.bin.new: No such file"), std::string::npos) << said;
}

TEST(BookFile, LeavesAStandingBookAloneIfItCannotBeReplaced) {
    const TempDirectory directory;
    const std::string name = directory.nameOf("folder");
    ASSERT_TRUE(std::filesystem::create_directory(name));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(saveBook(name, {{1, 2, 3, 4}}));
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(std::filesystem::is_directory(name));
}

TEST(BookFile, MergesByAddingWeights) {
    const BookRecords a = {{2, 1, 5, 9}, {2, 2, 7, 0}, {9, 1, 60000, 0}};
    const BookRecords b = {{1, 1, 0, 0}, {2, 1, 10, 0}, {9, 1, 60000, 0}, {9, 2, 60000, 0}};
    const BookRecords merged = mergeBooks(a, b);
    const BookRecords expected = {
        {1, 1, 0, 0}, {2, 1, 15, 0}, {2, 2, 7, 0}, {9, 1, 65535, 0}, {9, 2, 32767, 0}};
    ASSERT_EQ(merged.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(equal(merged[i], expected[i])) << i << ": weight " << merged[i].weight;
    }
}

TEST(BookFile, MergesIntoAnythingWithNothing) {
    EXPECT_TRUE(mergeBooks({}, {}).empty());
    EXPECT_EQ(mergeBooks({}, {{2, 1, 5, 9}}).size(), 1U);
}

// ---- checking ---------------------------------------------------------------------------------------------------

static BookReport check(const BookRecords& records, u64 spareBytes = 0) {
    return checkBook({records, spareBytes});
}

TEST(BookCheck, FindsNothingWrongInASoundBook) {
    const BookReport report =
        check({{startKey, e2e4, 1, 0}, {startKey, d2d4, 1, 0}, {afterE4Key, e7e5, 1, 0}});
    EXPECT_TRUE(isSound(report));
    EXPECT_EQ(report.records, 3U);
    EXPECT_EQ(report.positions, 2U);
    EXPECT_EQ(report.reachedPositions, 2U);
    EXPECT_EQ(report.reachedRecords, 3U);
}

TEST(BookCheck, FindsEachFault) {
    EXPECT_FALSE(isSound(check({})));
    EXPECT_FALSE(isSound(check({{startKey, e2e4, 1, 0}}, 1)));
    const BookReport unsorted = check({{afterE4Key, e7e5, 1, 0}, {startKey, e2e4, 1, 0}});
    EXPECT_EQ(unsorted.unsorted, 1U);
    EXPECT_FALSE(isSound(unsorted));
    const BookReport repeated = check({{startKey, e2e4, 1, 0}, {startKey, e2e4, 1, 0}});
    EXPECT_EQ(repeated.repeated, 1U);
    EXPECT_FALSE(isSound(repeated));
    const BookReport promotion = check({{1, makeBookMove(52, 60, 5), 1, 0}});
    EXPECT_EQ(promotion.badPromotions, 1U);
    EXPECT_FALSE(isSound(promotion));
    const BookReport illegal =
        check({{startKey, e2e4, 1, 0}, {startKey, e2e5, 1, 0}, {afterE4Key, e2e4, 1, 0}});
    EXPECT_EQ(illegal.illegal, 2U);
    EXPECT_EQ(illegal.firstIllegal, "463b96181691fc9c e2e5");
    EXPECT_FALSE(isSound(illegal));
    BookRecords crowd;
    for (u16 move = 0; move < 101; ++move) {
        crowd.push_back({1, move, 1, 0});
    }
    EXPECT_EQ(check(crowd).crowded, 1U);
    crowd.pop_back();
    EXPECT_EQ(check(crowd).crowded, 0U);
}

TEST(BookCheck, MeetsWhatABookOfOneSideLeavesOut) {
    // White's book: no move of Black's is in it.
    newGame();
    for (const char* move : {"e2e4", "c7c5"}) {
        ASSERT_EQ(parseUserMove(move), 1);
    }
    const u64 sicilianKey = polyglotKey();
    const u16 g1f3 = makeBookMove(6, 21, 0);
    const BookReport report = check({{startKey, e2e4, 1, 0}, {sicilianKey, g1f3, 1, 0}});
    EXPECT_EQ(report.reachedPositions, 2U);
}

struct EnPassantCase {
    const char* name;
    std::array<const char*, 4> moves;
    u32 file;
};

constexpr EnPassantCase enPassantCases[] = {
    {"the capturing pawn stands on the left", {"e2e4", "d7d5", "e4e5", "f7f5"}, 5},
    {"the capturing pawn stands on the right", {"e2e4", "f7f5", "e4e5", "d7d5"}, 3},
    {"the capturing pawn stands on the rim", {"a2a4", "h7h5", "a4a5", "b7b5"}, 1},
};

TEST(BookCheck, CountsPositionsUnderPublishedEnPassantKeys) {
    for (const EnPassantCase& c : enPassantCases) {
        SCOPED_TRACE(c.name);
        newGame();
        BookRecords records;
        const auto add = [&records](const char* move, u64 term) {
            const i32 from = move[0] - 'a' + 8 * (move[1] - '1');
            const i32 to = move[2] - 'a' + 8 * (move[3] - '1');
            records.push_back({polyglotKey() ^ term, makeBookMove(from, to, 0), 1, 0});
            ASSERT_EQ(parseUserMove(move), 1);
        };
        for (const char* move : c.moves) {
            add(move, 0);
        }
        add("g1f3", Random64[772 + c.file]);
        std::sort(records.begin(), records.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
        const BookReport report = check(records);
        EXPECT_EQ(report.publishedKeysOnly, 1U);
        EXPECT_EQ(report.reachedRecords, 4U);
        EXPECT_TRUE(isSound(report)) << "not faulty for that";
    }
}

TEST(BookCheck, CountsNoPublishedKeyWithoutAPawnBeside) {
    // A pawn on the h-file is not beside one on the next rank's a-file.
    newGame();
    BookRecords records;
    for (const char* move : {"h2h4", "g8f6", "h4h5", "a7a5"}) {
        const i32 from = move[0] - 'a' + 8 * (move[1] - '1');
        const i32 to = move[2] - 'a' + 8 * (move[3] - '1');
        records.push_back({polyglotKey(), makeBookMove(from, to, 0), 1, 0});
        ASSERT_EQ(parseUserMove(move), 1);
    }
    records.push_back({polyglotKey() ^ Random64[772], e2e4, 1, 0});
    EXPECT_EQ(check(records).publishedKeysOnly, 0U);
}
