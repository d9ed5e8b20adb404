// Texts that tarvelmon-analyse reads as games: a game that can be played is annotated, and what is written then is the
// same game.
#include "annotation.h"
#include "fuzz_support.h"

#include <cstdlib>

// Scores that make every kind of comment and glyph. The best move is another than the game's, and none that is read.
static std::vector<Analysis> someAnalyses(const Game& game) {
    constexpr i32 scores[] = {0, 80, -30, 19996, -19997, 400, -400};
    std::vector<Analysis> analyses;
    for (std::size_t i = 0; i <= game.moves.size(); ++i) {
        const std::string fault = i % 11 == 10 ? "the worker was ended by signal 9" : "";
        analyses.push_back(
            {fault, Standstill::none, 5, scores[i % std::size(scores)], 1, 1, {"Qh4", "g3"}, {}});
    }
    return analyses;
}

static void must(bool holds) {
    if (!holds) {
        std::abort();
    }
}

static void annotateAndReadBack(const Game& game) {
    const std::vector<Analysis> analyses = someAnalyses(game);
    const JudgedGame judged = judgeGame(game, analyses);
    must(!annotatedJson(game, analyses, judged).empty());
    const std::string text = annotatedGame(game, analyses, judged, 50);
    GameText written{text};
    Game again;
    must(nextGame(written, again));
    must(again.fault.empty() && again.ended && again.result == game.result);
    must(gameKey(again) == gameKey(game));
    must(!nextGame(written, again));
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    GameText games{textOf(data, size)};
    Game game;
    while (nextGame(games, game)) {
        if (game.fault.empty()) {
            annotateAndReadBack(game);
        }
    }
    return 0;
}
