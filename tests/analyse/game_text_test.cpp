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

TEST(GameText, CommentsBeforeTheTagsAndBehindTheResultBelongToTheGame) {
    const std::string text =
        "; made by a program\n{of two}\n[Event \"a\"]\n\n1. e4 {x} 1-0 {resigned} ; at once\n{of the next}\n"
        "[Event \"b\"]\n\n{none} 1. d4 *";
    GameText games{text};
    Game game;
    ASSERT_TRUE(nextGame(games, game));
    ASSERT_EQ(game.before.size(), 2U);
    EXPECT_EQ(game.before[0].text, "{ made by a program }");
    ASSERT_EQ(game.moves.size(), 1U);
    ASSERT_EQ(game.moves[0].after.size(), 3U);
    EXPECT_EQ(game.moves[0].after[1].text, "{resigned}");
    EXPECT_EQ(game.moves[0].after[2].text, "{ at once }");
    EXPECT_EQ(game.result, "1-0");
    ASSERT_TRUE(nextGame(games, game));
    EXPECT_EQ(game.tags.size(), 1U);
    ASSERT_EQ(game.before.size(), 2U);
    EXPECT_EQ(game.before[0].text, "{of the next}");
    EXPECT_FALSE(nextGame(games, game));
}

TEST(GameText, EscapedLinesArePassedOverAlsoInAVariation) {
    const Game game =
        onlyGame("%a ) line\n[Event \"a\"]\n% [x\n\n1. e4 e5\n%Ke3 {\n(1... c5\n% )\n 2. d4) 2. d4 *");
    EXPECT_EQ(game.fault, "");
    ASSERT_EQ(game.moves.size(), 3U);
    EXPECT_EQ(game.moves[1].after[0].text, "(1... c5\n% )\n 2. d4)");
}

TEST(GameText, CommentsMayRunOverLines) {
    const Game game = onlyGame("1. e4 {one\n% two\n(three} e5 *");
    EXPECT_EQ(game.moves.size(), 2U);
    EXPECT_EQ(game.moves[0].after[0].text, "{one\n% two\n(three}");
}

TEST(GameText, MovesAreReadAsManyProgramsWriteThem) {
    for (const char* const text :
         {"1. e4 e5 2. Nf3 Nc6 3. Bb5 Nf6 4. O-O *", "1.e4 e5 2.Nf3 Nc6 3.Bb5 Nf6 4.0-0 *",
          "e4 e5 Nf3 Nc6 Bb5 Nf6 O-O", "1. e2e4 e7e5 2. g1f3 b8c6 3. f1b5 g8f6 4. e1g1 1/2",
          "1. e2-e4 e7-e5 2. Ng1-f3 Nb8-c6 3. Bf1-b5 Ng8-f6 4. O-O",
          "1 . e4 1 ... e5 2. Ngf3 Nbc6 3. Bfb5 Ngf6 4.O-O+!?"}) {
        SCOPED_TRACE(text);
        const Game game = onlyGame(text);
        EXPECT_EQ(game.fault, "");
        ASSERT_EQ(game.moves.size(), 7U);
        EXPECT_EQ(game.moves[2].san, "Nf3");
        EXPECT_EQ(game.moves[6].san, "O-O");
    }
    EXPECT_EQ(onlyGame("1. e4 d5 2. e5 f5 3. exf6 e.p. exf6 1/2").moves.size(), 6U);
    EXPECT_EQ(onlyGame("1. e4 1/2").result, "1/2-1/2");
    EXPECT_EQ(onlyGame("1.*").result, "*");
}

TEST(GameText, SignsBecomeGlyphs) {
    const Game game = onlyGame("1. e4 ! += e5 $10 N ?? +- *");
    EXPECT_EQ(game.fault, "");
    ASSERT_EQ(game.moves.size(), 2U);
    const auto glyphs = [](const GameMove& move) {
        std::string all;
        for (const GameItem& item : move.after) {
            all += item.text;
        }
        return all;
    };
    EXPECT_EQ(glyphs(game.moves[0]), "$1$14");
    EXPECT_EQ(glyphs(game.moves[1]), "$10$146$4$18");
}

TEST(GameText, WhatCannotBePlayedIsTold) {
    struct Case {
        const char* text;
        const char* fault;
        u64 line;
    };
    for (const Case& c : {
             Case{"1. e4\n--", "\"--\" is no move but a pass", 2},
             {"1. e4 Z0 2. d4", "\"Z0\" is no move but a pass", 1},
             {"1. e4\n\n2. e4", "\"e4\" is not a legal move here", 3},
             {"1. e4 e\x7F\x35", "\"e?5\" cannot be read as a move", 1},
             {"[Variant \"\x1B[2J\"]\n*", "the variant \"?[2J\" is not played here", 1},
             {"1. abcdefghijklmnopqrstuvwxyzabcdefghijklmn",
              "\"abcdefghijklmnopqrstuvwxyzabcdef...\" cannot be read as a move", 1},
             {"1. e4\n(1. d4 (d5)", "a variation does not end", 2},
             {"1. e4 {\n", "a comment does not end", 1},
             {"{a\n", "a comment does not end", 1},
             {"1. e4 )", "a bracket that was not opened", 1},
             {"[Event \"a\"]\n[Site \"b\"\n\n*", "a tag does not end", 2},
             {"[", "a tag does not end", 1},
             {"[Variant \"Chess960\"]\n\n1. e4 *", "the variant \"Chess960\" is not played here", 1},
             {"[FEN \"rnbqkbnr/8/8/8/8/8/8/8 w - - 0 1\"]\n*", "each side needs one king", 1},
             {"[FEN \"nrkbbqrn/pppppppp/8/8/8/8/PPPPPPPP/NRKBBQRN w GBgb - 0 1\"]\n*",
              "the castling rights are not of KQkq", 1},
         }) {
        SCOPED_TRACE(c.text);
        const Game game = onlyGame(c.text);
        EXPECT_EQ(game.fault, c.fault);
        EXPECT_EQ(game.faultLine, c.line);
    }
    EXPECT_EQ(onlyGame("[Variant \"From Position\"]\n[FEN \"4k3/8/8/8/8/8/8/4K2R w K -\"]\n\n1. O-O *").fault,
              "");
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

TEST(Annotation, ABetterLineThatStandsThereIsNotWrittenTwice) {
    const std::vector<Analysis> analyses{scored(300, {"d4", "d5"}), scored(0, {"e5"})};
    const auto annotated = [&](const std::string& text) {
        const Game game = onlyGame(text);
        return annotatedGame(game, analyses, judgeGame(game, analyses), 50);
    };
    const std::string once = annotated("1. e4 *");
    EXPECT_EQ(annotated(once), once);
    const std::string broken = annotated("1. e4 $4 (1. d4\n d5 {[%eval 3.00]\n[%depth 5]}) *");
    EXPECT_EQ(broken.find("(1. d4"), broken.rfind("(1. d4")) << broken;
    EXPECT_NE(annotated("1. e4 (1. d4 d5) *").find("(1. d4 d5 {["), std::string::npos);
}
