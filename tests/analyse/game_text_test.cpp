#include "game_text.h"
#include "annotation.h"

#include <gtest/gtest.h>

namespace {

Game onlyGame(const std::string& text) {
    GameText games{text};
    Game game;
    EXPECT_TRUE(nextGame(games, game));
    return game;
}

Analysis scored(i32 score, const std::vector<std::string>& line) {
    return {{}, Standstill::none, 5, score, 0, 0, line, {}};
}

}  // namespace

TEST(GameText, EverythingBehindAMoveIsKept) {
    const Game game = onlyGame(
        "[Event \"a \\\"b\\\" ]\"]\n\n{first} 1. e4! $14 {one} (1. d4 {in (} (1. c4)) {two} e5?! ; end\n*");
    EXPECT_EQ(game.fault, "");
    EXPECT_EQ(tagValue(game, "Event"), "a \"b\" ]");
    ASSERT_EQ(game.moves.size(), 2U);
    EXPECT_EQ(game.before.size(), 1U);
    ASSERT_EQ(game.moves[0].after.size(), 5U);
    EXPECT_EQ(game.moves[0].after[0].text, "$1");
    EXPECT_EQ(game.moves[0].after[3].text, "(1. d4 {in (} (1. c4))");
    EXPECT_EQ(game.moves[1].after[0].text, "$6");
    EXPECT_EQ(game.moves[1].after[1].text, "{ end }");
    EXPECT_TRUE(game.ended);
}

TEST(GameText, GamesEndByAResultOrByTheNextTags) {
    const std::string text = "1. e4 1-0\n\n[Result \"1/2-1/2\"]\n1. d4\n[Result \"?\"]\n1. c4";
    GameText games{text};
    Game game;
    ASSERT_TRUE(nextGame(games, game));
    EXPECT_EQ(game.result, "1-0");
    EXPECT_TRUE(game.ended);
    ASSERT_TRUE(nextGame(games, game));
    EXPECT_EQ(game.result, "1/2-1/2");
    EXPECT_FALSE(game.ended);
    EXPECT_EQ(game.line, 3U);
    ASSERT_TRUE(nextGame(games, game));
    EXPECT_EQ(game.result, "*");
    EXPECT_FALSE(nextGame(games, game));
}

TEST(GameText, CutAndBrokenTextComesToAnEnd) {
    const std::string whole = "[FEN \"x\"]\n\n1. e4 {a} (1. d4 {b}) $1 ;c\n%d\n1... e5 2. Ke3 }])(( {{";
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const std::string text = whole.substr(0, length);
        GameText games{text};
        Game game;
        std::size_t count = 0;
        while (nextGame(games, game)) {
            ASSERT_LT(++count, 20U);
        }
    }
}

TEST(GameText, NumbersFollowThePosition) {
    const std::string black = "4k3/8/8/8/8/8/8/4K3 b - - 0 30";
    EXPECT_EQ(moveNumber(black, 0), "30...");
    EXPECT_EQ(moveNumber(black, 1), "31.");
    EXPECT_EQ(moveNumber("4k3/8/8/8/8/8/8/4K3 w - - 0 1", 3), "2...");
}

TEST(Annotation, ALossIsWhatTheMoverGaveAway) {
    const Game game = onlyGame("1. e4 e5 *");
    const JudgedGame judged =
        judgeGame(game, {scored(30, {"d4"}), scored(25, {"e5"}), scored(5000, {"Nf3"})});
    EXPECT_EQ(judged.moves[0].loss, 55);  // 30 before, -25 after
    EXPECT_EQ(judged.moves[0].score, -25);
    EXPECT_EQ(judged.moves[0].better, "d4");
    EXPECT_EQ(judged.moves[1].loss, 0);  // it was the best, whatever came of it
    EXPECT_EQ(judged.moves[1].score, highestScore);
    EXPECT_EQ(judged.moves[1].better, "");
}

TEST(Annotation, GlyphsGrowWithTheLoss) {
    const Game game = onlyGame("1. e4 *");
    const auto annotated = [&](i32 loss) {
        const std::vector<Analysis> analyses{scored(loss, {"d4"}), scored(0, {"e5"})};
        return annotatedGame(game, analyses, judgeGame(game, analyses), 50);
    };
    EXPECT_EQ(annotated(49), "1. e4 {[%eval 0.00] [%depth 5]} *\n\n");
    EXPECT_EQ(annotated(50), "1. e4 $6 {[%eval 0.00] [%depth 5]} (1. d4 {[%eval 0.50] [%depth 5]}) *\n\n");
    EXPECT_NE(annotated(100).find(" $2 "), std::string::npos);
    EXPECT_NE(annotated(199).find(" $2 "), std::string::npos);
    EXPECT_NE(annotated(200).find(" $4 "), std::string::npos);
}

TEST(Annotation, AMoveThatIsJudgedAlreadyKeepsItsGlyph) {
    const Game game = onlyGame("1. e4! {[%eval 1.0] mine} *");
    const std::vector<Analysis> analyses{scored(300, {"d4"}), scored(19997, {"e5"})};
    EXPECT_EQ(annotatedGame(game, analyses, judgeGame(game, analyses), 5000),
              "1. e4 $1 { mine} {[%eval #-2] [%depth 5]} *\n\n");
}
