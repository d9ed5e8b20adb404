// Whole searches against lists made by an independent model: depth, score, node count and line of each iteration.
#include "search/search.h"

#include "eval/eval.h"
#include "eval/internal.h"
#include "frontend/game_end.h"
#include "search/search_fixture.h"
#include "support/golden.h"

#include <algorithm>
#include <cinttypes>
#include <sstream>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSlowBuild = true;
#elif defined(__has_feature)
constexpr bool isSlowBuild = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool isSlowBuild = false;
#endif

// A sanitizer makes a node ten times as dear: there the iterations beyond this count are left out.
constexpr u64 unlimited = ~u64{0};
constexpr u64 nodesPerIteration = isSlowBuild ? 20000 : unlimited;

using Lines = std::vector<std::string>;

Lines splitLines(const std::string& text) {
    Lines lines;
    std::istringstream input(text);
    for (std::string line; std::getline(input, line);) {
        lines.push_back(line);
    }
    return lines;
}

Lines words(const std::string& line) {
    Lines result;
    std::istringstream input(line);
    for (std::string word; input >> word;) {
        result.push_back(word);
    }
    return result;
}

std::string joined(const Lines& parts) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : " ") + part;
    }
    return text;
}

bool isThinkingLine(const Lines& parts) {
    return parts.size() >= 3 &&
           std::ranges::all_of(parts[0], [](unsigned char c) { return std::isdigit(c) != 0; });
}

// A line as printed, without its time and with single blanks: the form of the lists.
std::string withoutTime(const std::string& line) {
    Lines parts = words(line);
    if (isThinkingLine(parts)) {
        parts.erase(parts.begin() + 2);
    }
    return joined(parts);
}

i32 depthOf(const std::string& line) {
    const Lines parts = words(line);
    return isThinkingLine(parts) ? std::stoi(parts[0]) : 0;
}

// What a list expects of one search: its lines without the last depths that are too long for this build.
struct Expectation {
    Lines lines;
    std::string best;
    i32 maxDepth = 1;
    bool hasLastDepth = true;
    bool isWhole = true;  // no more lines may follow
};

Expectation readExpectation(Lines::const_iterator first, Lines::const_iterator last, u64 nodesAtMost) {
    Expectation expected;
    i32 tooDeep = 1 << 20;
    for (auto line = first; line != last; ++line) {
        const Lines parts = words(*line);
        if (isThinkingLine(parts) && std::stoull(parts[2]) > nodesAtMost) {
            tooDeep = std::min(tooDeep, std::max(std::stoi(parts[0]), 2));
        }
    }
    i32 depth = 0;
    for (auto line = first; line != last; ++line) {
        const Lines parts = words(*line);
        if (parts.empty()) {
            continue;
        }
        if (parts[0] == "limit") {
            expected.isWhole = false;
            continue;
        }
        if (parts[0] == "best") {
            expected.best = parts[1];
            continue;
        }
        depth = std::max(depth, depthOf(*line));
        if (depth < tooDeep) {
            expected.lines.push_back(joined(parts));
            expected.maxDepth = std::max(expected.maxDepth, depth);
        } else {
            expected.hasLastDepth = false;
        }
    }
    return expected;
}

// Searches the position at `board` and compares. Returns the move.
Mossa expectSearch(const Expectation& expected) {
    EngineOptions.maxDepth = expected.maxDepth;
    resetClock();
    testing::internal::CaptureStdout();
    const Mossa best = think(0);
    Lines printed;
    for (const std::string& line : splitLines(testing::internal::GetCapturedStdout())) {
        printed.push_back(withoutTime(line));
    }
    // The model may have ended between two attempts at the last depth.
    const bool hasMore = !expected.isWhole && printed.size() > expected.lines.size();
    if (hasMore) {
        printed.resize(expected.lines.size());
    }
    EXPECT_EQ(printed, expected.lines);
    if (!hasMore && expected.hasLastDepth) {
        EXPECT_EQ(moveText(best), expected.best);
    }
    return best;
}

// ---- single searches ------------------------------------------------------------------------------------------

struct SearchList {
    const char* name;
    const char* file;
    bool materialOnly;
    i32 syzygy;
};

constexpr SearchList searchLists[] = {
    {"Material", "search-material.txt", true, 0},
    {"Full", "search-full.txt", false, 0},
    {"TablebasesOnButAbsent", "search-full-syzygy-on-no-files.txt", false, 1},
};

// Ten positions of a list, so that tests are of a handy length.
struct Portion {
    SearchList list;
    std::size_t first;
};

constexpr std::size_t portionSize = 10;

std::vector<Portion> portions() {
    std::vector<Portion> result;
    for (const SearchList& list : searchLists) {
        const std::size_t size = readGoldenBlocks(list.file).size();
        for (std::size_t first = 0; first < size; first += portionSize) {
            result.push_back({list, first});
        }
    }
    return result;
}

class GoldenSearch : public testing::TestWithParam<Portion> {
  protected:
    void TearDown() override { evalMaterialOnly = false; }
};

TEST_P(GoldenSearch, ThinkingLinesAreThoseOfTheModel) {
    const Portion& portion = GetParam();
    const std::vector<GoldenBlock> blocks = readGoldenBlocks(portion.list.file);
    const std::size_t last = std::min(portion.first + portionSize, blocks.size());
    for (std::size_t i = portion.first; i < last; ++i) {
        SCOPED_TRACE(blocks[i].fen);
        setUpFreshState(blocks[i].fen);
        EngineOptions.syzygy = portion.list.syzygy;
        evalMaterialOnly = portion.list.materialOnly;
        expectSearch(readExpectation(blocks[i].lines.begin(), blocks[i].lines.end(), nodesPerIteration));
    }
}

INSTANTIATE_TEST_SUITE_P(Lists, GoldenSearch, testing::ValuesIn(portions()), [](const auto& portion) {
    return portion.param.list.name + std::to_string(portion.param.first + 1);
});

// ---- games ----------------------------------------------------------------------------------------------------

constexpr const char* gamesFile = "games-depth5.txt";

std::string recordText() {
    const Scacchiera& b = *board;
    char text[400];
    std::snprintf(text, sizeof text,
                  "end side=%016" PRIx64 " pbq=%016" PRIx64 " nbk=%016" PRIx64 " rqk=%016" PRIx64
                  " castle=%02x ep=%d rule50=%d flags=%02x psq=%d key=%016" PRIx64 " compute=%016" PRIx64
                  " easy=%d",
                  b.side, b.pbq, b.nbk, b.rqk, b.castleRights, b.epFile, b.rule50, b.stateFlags, b.psqScore,
                  b.hashKey, computeKey(), easyVal());
    return text;
}

class GoldenGame : public testing::TestWithParam<std::size_t> {};

// The pawn hash and the game's records go on from move to move. A game is too long for iterations to be left out
// of it: the moves would differ.
TEST_P(GoldenGame, EveryMoveAndTheLastRecordAreThoseOfTheModel) {
    const GoldenBlock game = readGoldenBlocks(gamesFile)[GetParam()];
    SCOPED_TRACE(game.fen);
    setUpFreshState(game.fen);
    auto line = game.lines.begin();
    while (line != game.lines.end() && line->starts_with("ply ")) {
        SCOPED_TRACE(*line);
        const auto first = line + 1;
        const auto best =
            std::find_if(first, game.lines.end(), [](auto& text) { return text.starts_with("best "); });
        ASSERT_NE(best, game.lines.end());
        Expectation expected = readExpectation(first, best + 1, unlimited);
        makeMove(expectSearch(expected));
        testing::internal::CaptureStdout();
        const i32 over = checkGameEnd();
        const Lines results = splitLines(testing::internal::GetCapturedStdout());
        line = best + 1;
        for (const std::string& result : results) {
            ASSERT_NE(line, game.lines.end());
            EXPECT_EQ(result, *line++);
        }
        EXPECT_EQ(over != 0, !results.empty());
        ASSERT_FALSE(HasFailure());
    }
    ASSERT_NE(line, game.lines.end());
    EXPECT_EQ(recordText(), *line);
}

INSTANTIATE_TEST_SUITE_P(Games, GoldenGame, testing::Range<std::size_t>(0, 12));

}  // namespace
