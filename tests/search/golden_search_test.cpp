// Whole searches and games against lists made by an independent model.
#include "search/golden_lists.h"

#include "eval/eval.h"
#include "frontend/game_end.h"

namespace {

std::vector<Portion> fullLists() {
    std::vector<Portion> portions = portionsOf("Full", "search-full.txt", 0);
    const std::vector<Portion> absent =
        portionsOf("TablebasesOnButAbsent", "search-full-syzygy-on-no-files.txt", 1);
    portions.insert(portions.end(), absent.begin(), absent.end());
    return portions;
}

class GoldenSearch : public testing::TestWithParam<Portion> {};

TEST_P(GoldenSearch, ThinkingLinesAreThoseOfTheModel) {
    expectLinesOfTheModel(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Lists, GoldenSearch, testing::ValuesIn(fullLists()), nameOf);

// ---- games ----------------------------------------------------------------------------------------------------

constexpr const char* gamesFile = "games-depth5.txt";

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
    EXPECT_EQ("end " + recordFields(), *line);
}

INSTANTIATE_TEST_SUITE_P(Games, GoldenGame, testing::Range<std::size_t>(0, 12));

}  // namespace
