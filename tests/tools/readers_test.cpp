// Opening lines and PGN games into counted moves and book records.
#include "board/board.h"
#include "book/book.h"
#include "book_builder.h"
#include "frontend/session.h"
#include "line_reader.h"
#include "move_reader.h"
#include "pgn_reader.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

struct Counted {
    BookBuilder builder{40, {}};
    FaultLog log{};
    u64 items = 0;
    std::string said;
};

static Counted readLines(std::string_view text, i32 maxPly = 40) {
    Counted counted;
    counted.builder.maxPly = maxPly;
    testing::internal::CaptureStderr();
    counted.items = readOpeningLines(counted.builder, counted.log, "file", text);
    counted.said = testing::internal::GetCapturedStderr();
    return counted;
}

static Counted readPgn(std::string_view text, i32 maxPly = 40) {
    Counted counted;
    counted.builder.maxPly = maxPly;
    testing::internal::CaptureStderr();
    counted.items = readPgnGames(counted.builder, counted.log, "file", text);
    counted.said = testing::internal::GetCapturedStderr();
    return counted;
}

// How often `move` was counted after `moves`.
static u64 countOf(const Counted& counted, std::initializer_list<const char*> moves, const char* move) {
    newGame();
    for (const char* played : moves) {
        makeMove(readMoveText(played).move);
    }
    const auto found = counted.builder.countOfMove.find({polyglotKey(), bookMoveOf(readMoveText(move).move)});
    newGame();
    return found == counted.builder.countOfMove.end() ? 0 : found->second;
}

// ---- opening lines ----------------------------------------------------------------------------------------------

TEST(OpeningLines, CountEachMoveOfEachLine) {
    const Counted counted = readLines("1. e4 e5 2. Nf3\n1.e4 e5 2.Bc4\ne4 c5\n");
    EXPECT_EQ(counted.items, 3U);
    EXPECT_EQ(counted.log.count, 0U);
    EXPECT_EQ(countOf(counted, {}, "e4"), 3U);
    EXPECT_EQ(countOf(counted, {"e4"}, "e5"), 2U);
    EXPECT_EQ(countOf(counted, {"e4"}, "c5"), 1U);
    EXPECT_EQ(countOf(counted, {"e4", "e5"}, "Nf3"), 1U);
    EXPECT_EQ(counted.builder.countOfMove.size(), 5U);
}

TEST(OpeningLines, JoinWhereMovesTranspose) {
    const Counted counted = readLines("d4 Nf6 c4 e6 Nc3\nc4 e6 d4 Nf6 Nf3\n");
    EXPECT_EQ(countOf(counted, {"d4", "Nf6", "c4", "e6"}, "Nc3"), 1U);
    EXPECT_EQ(countOf(counted, {"d4", "Nf6", "c4", "e6"}, "Nf3"), 1U);
}

TEST(OpeningLines, MayHaveAWeight) {
    const Counted counted = readLines("5: e4 e5\n 0: e4 c5\ne4 c5\n  12 : d4\n");
    EXPECT_EQ(countOf(counted, {}, "e4"), 6U);
    EXPECT_EQ(countOf(counted, {"e4"}, "c5"), 1U);
    EXPECT_EQ(countOf(counted, {}, "d4"), 12U);
}

TEST(OpeningLines, AnswerDoubtfulMovesWithoutPlayingThem) {
    const Counted counted = readLines("e4 e5 Nf3 f6? Nxe5\nf4?! d5!\n");
    EXPECT_EQ(countOf(counted, {"e4", "e5", "Nf3"}, "f6"), 0U);
    EXPECT_EQ(countOf(counted, {"e4", "e5", "Nf3", "f6"}, "Nxe5"), 1U);
    EXPECT_EQ(countOf(counted, {}, "f4"), 0U);
    EXPECT_EQ(countOf(counted, {"f4"}, "d5"), 1U);
}

TEST(OpeningLines, PassOverCommentsAndHeads) {
    const Counted counted = readLines("# e4\n\n[e4 e5]\n  [x]\n \t \ne4 # e5\r\nd4\r\n#\n");
    EXPECT_EQ(counted.items, 2U);
    EXPECT_EQ(counted.builder.countOfMove.size(), 2U);
    EXPECT_EQ(counted.log.count, 0U);
}

TEST(OpeningLines, CountUpToTheFirstFault) {
    const Counted counted = readLines("d4\ne4 e5 Ke3 d5\nx: e4\n70000: e4\n");
    EXPECT_EQ(counted.log.count, 3U);
    EXPECT_EQ(counted.said,
              "file:2: \"Ke3\" is not a legal move here\n"
              "file:3: \"x: e4\" has no number up to 65535 before the colon\n"
              "file:4: \"70000: e4\" has no number up to 65535 before the colon\n");
    EXPECT_EQ(countOf(counted, {"e4"}, "e5"), 1U);
    EXPECT_EQ(counted.builder.countOfMove.size(), 3U);
}

TEST(OpeningLines, CountNoMoreThanTheAskedMoves) {
    const Counted counted = readLines("e4 e5 Nf3 Nc6 nonsense\n", 3);
    EXPECT_EQ(counted.log.count, 0U);
    EXPECT_EQ(counted.builder.countOfMove.size(), 3U);
}

TEST(OpeningLines, StopSayingFaultsAfterTwenty) {
    std::string text;
    for (i32 i = 0; i < 100; ++i) {
        text += "e5\n";
    }
    const Counted counted = readLines(text);
    EXPECT_EQ(counted.log.count, 100U);
    EXPECT_EQ(std::count(counted.said.begin(), counted.said.end(), '\n'), 21);
}

// ---- games ------------------------------------------------------------------------------------------------------

TEST(PgnGames, CountEachMoveOfEachGame) {
    const Counted counted = readPgn(
        "[Event \"A\"]\n[Site \"?\"]\n[Result \"1-0\"]\n\n1. e4 e5 2. Nf3 Nc6 1-0\n\n"
        "[Event \"B\"]\n\n1. e4 c5 {a comment} 2. Nf3 *\n");
    EXPECT_EQ(counted.items, 2U);
    EXPECT_EQ(counted.log.count, 0U);
    EXPECT_EQ(countOf(counted, {}, "e4"), 2U);
    EXPECT_EQ(countOf(counted, {"e4"}, "e5"), 1U);
    EXPECT_EQ(countOf(counted, {"e4", "e5", "Nf3"}, "Nc6"), 1U);
    EXPECT_EQ(countOf(counted, {"e4", "c5"}, "Nf3"), 1U);
}

struct PgnCase {
    const char* name;
    const char* text;
};

// Each is the one game 1. e4 e5 2. Nf3.
constexpr PgnCase oneGameCases[] = {
    {"no tags and no result", "e4 e5 Nf3"},
    {"numbers of every kind", "1.e4 1...e5 2 . Nf3 1/2-1/2"},
    {"comments in braces", "1. e4 {1. d4 (d5} e5 {)} 2. Nf3 0-1"},
    {"comments to the end of the line", "1. e4 ; d4 { d5\ne5 ;\n2. Nf3 *"},
    {"variations", "1. e4 (1. d4 d5) e5 (1... c5 2. Nf3 (2. Nc3)) 2. Nf3"},
    {"moves behind a variation in a variation", "1. e4 (1. d4 (1. c4) d5) e5 2. Nf3"},
    {"comments in variations", "1. e4 (1. d4 {)(} d5 ; )\n) e5 2. Nf3"},
    {"marks of positions", "1. e4 $1 $13 e5!? 2. Nf3 +- ! = *"},
    {"an escaped line", "% e4 d5\n1. e4 e5\n%%%\n2. Nf3"},
    {"line ends of the other system", "[Event \"x\"]\r\n\r\n1. e4\r\ne5 2. Nf3\r\n*\r\n"},
    {"a byte order mark", "\xEF\xBB\xBF[Event \"x\"]\n1. e4 e5 2. Nf3"},
    {"quotes and brackets in a tag", "[Event \"a \\\"]\\\" b]\"]\n1. e4 e5 2. Nf3"},
    {"a tag that is not closed", "[Event \"a\n1. e4 e5 2. Nf3"},
    {"coordinates", "e2e4 e7e5 g1f3"},
    {"stray closing signs", ")} ] 1. e4 ) e5 } 2. Nf3"},
    {"a comment that is not closed", "1. e4 e5 2. Nf3 { e5"},
    {"a variation that is not closed", "1. e4 e5 2. Nf3 ( e5"},
    {"a note of en passant", "1. e4 e5 e.p. 2. Nf3"},
};

TEST(PgnGames, AreReadInTheseForms) {
    for (const PgnCase& c : oneGameCases) {
        SCOPED_TRACE(c.name);
        const Counted counted = readPgn(c.text);
        EXPECT_EQ(counted.items, 1U);
        EXPECT_EQ(counted.said, "");
        EXPECT_EQ(countOf(counted, {}, "e4"), 1U);
        EXPECT_EQ(countOf(counted, {"e4"}, "e5"), 1U);
        EXPECT_EQ(countOf(counted, {"e4", "e5"}, "Nf3"), 1U);
        EXPECT_EQ(counted.builder.countOfMove.size(), 3U);
    }
}

TEST(PgnGames, MayStartElsewhere) {
    const Counted counted =
        readPgn("[SetUp \"1\"]\n[FEN \"4k3/8/8/8/8/8/8/4K2R b K - 0 9\"]\n\n9... Kd7 10. O-O *\n");
    EXPECT_EQ(counted.said, "");
    EXPECT_EQ(counted.builder.countOfMove.size(), 2U);
    newGame();
    ASSERT_EQ(fenToBoard("4k3/8/8/8/8/8/8/4K2R b K - 0 9"), 1);
    EXPECT_EQ(counted.builder.countOfMove.count({polyglotKey(), bookMoveOf(readMoveText("Kd7").move)}), 1U);
    newGame();
}

TEST(PgnGames, CountUpToTheirFirstFault) {
    const Counted counted =
        readPgn("1. e4 e5 2. Ke3 d5 3. hello *\n\n1. e4 d5 *\n[FEN \"nonsense\"]\n1. e4 *\n1. d4");
    EXPECT_EQ(counted.items, 4U);
    EXPECT_EQ(counted.said,
              "file:1: \"Ke3\" is not a legal move here\n"
              "file:4: \"nonsense\" is not a position\n");
    EXPECT_EQ(countOf(counted, {}, "e4"), 2U);
    EXPECT_EQ(countOf(counted, {}, "d4"), 1U);
    EXPECT_EQ(counted.builder.countOfMove.size(), 4U);
}

TEST(PgnGames, StartAnewAtTagsBehindMoves) {
    const Counted counted = readPgn("[Event \"A\"]\n1. e4 e5\n[Event \"B\"]\n1. d4\n");
    EXPECT_EQ(counted.items, 2U);
    EXPECT_EQ(countOf(counted, {}, "d4"), 1U);
}

TEST(PgnGames, SurviveAnyText) {
    EXPECT_EQ(readPgn("").items, 0U);
    EXPECT_EQ(readPgn("\n\n  \n").items, 0U);
    EXPECT_EQ(readPgn("[").items, 1U);
    EXPECT_EQ(readPgn("[FEN \"").items, 1U);
    EXPECT_EQ(readPgn("((((((((((").items, 0U);
    EXPECT_EQ(readPgn("$").items, 0U);
    EXPECT_EQ(readPgn(std::string(1 << 20, '(')).items, 0U);
    EXPECT_EQ(readPgn(std::string(1 << 20, '\0')).items, 0U);
    EXPECT_EQ(readPgn(std::string(1 << 20, 'x')).log.count, 1U);
    std::string shuffling;
    for (i32 i = 0; i < 20000; ++i) {
        shuffling += "Nf3 Nf6 Ng1 Ng8 ";
    }
    EXPECT_EQ(readPgn(shuffling).builder.countOfMove.size(), 4U) << "a game longer than the board's memory";
}

// ---- records ----------------------------------------------------------------------------------------------------

TEST(BookBuilder, SortsByKeyThenByWeightThenByMove) {
    BookBuilder builder{40, {}};
    builder.countOfMove = {{{2, 7}, 1}, {{2, 5}, 3}, {{2, 6}, 3}, {{1, 9}, 1}};
    const BookRecords records = recordsOf(builder, 1);
    ASSERT_EQ(records.size(), 4U);
    const std::pair<u64, u16> expected[] = {{1, 9}, {2, 5}, {2, 6}, {2, 7}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(std::pair(records[i].key, records[i].move), expected[i]) << i;
        EXPECT_EQ(records[i].learn, 0U);
    }
    EXPECT_EQ(records[1].weight, 3);
}

TEST(BookBuilder, LeavesOutWhatIsTooRare) {
    BookBuilder builder{40, {}};
    builder.countOfMove = {{{1, 1}, 1}, {{1, 2}, 2}, {{2, 1}, 1}};
    const BookRecords records = recordsOf(builder, 2);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].move, 2);
}

TEST(BookBuilder, ScalesCountsThatDoNotFit) {
    BookBuilder builder{40, {}};
    builder.countOfMove = {
        {{1, 1}, 131070}, {{1, 2}, 65535}, {{1, 3}, 1}, {{2, 1}, 65535}, {{3, 1}, ~u64{0}}};
    const BookRecords records = recordsOf(builder, 1);
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(records[0].weight, 65535);
    EXPECT_EQ(records[1].weight, 32767);
    EXPECT_EQ(records[2].weight, 1) << "what was played keeps a weight";
    EXPECT_EQ(records[3].weight, 65535);
    EXPECT_EQ(records[4].weight, 65535);
}

TEST(BookBuilder, KeepsAHundredMovesOfAPosition) {
    BookBuilder builder{40, {}};
    for (u16 move = 0; move < 150; ++move) {
        builder.countOfMove[{1, move}] = move + u64{1};
    }
    const BookRecords records = recordsOf(builder, 1);
    ASSERT_EQ(records.size(), 100U);
    EXPECT_EQ(records.front().weight, 150);
    EXPECT_EQ(records.back().weight, 51);
}
