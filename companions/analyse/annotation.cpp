// Scores are compared from the mover's side: what the position promised before the move, and what it gives after it.
#include "annotation.h"

#include "frontend/session.h"
#include "rules.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

using nlohmann::json;

// ---- judging --------------------------------------------------------------------------------------------------

static i32 heldScore(const Analysis& analysis) {
    return std::clamp(analysis.score, -highestScore, highestScore);
}

static std::optional<i32> scoreForWhite(const Analysis& analysis, bool whiteToMove) {
    if (!analysis.fault.empty()) {
        return std::nullopt;
    }
    return whiteToMove ? heldScore(analysis) : -heldScore(analysis);
}

static i32 lossOf(const GameMove& move, const Analysis& before, const Analysis& after) {
    if (!before.line.empty() && before.line.front() == move.san) {
        return 0;
    }
    return std::max(0, heldScore(before) + heldScore(after));
}

static i32 realSquareOf(i32 square) {
    return blackToMove(*board) ? square ^ 56 : square;
}

JudgedGame judgeGame(const Game& game, const std::vector<Analysis>& analyses) {
    JudgedGame judged{
        tagValue(game, "White"), tagValue(game, "Black"), tagValue(game, "Event"), game.result, {}};
    newGame();
    fenToBoard(game.fen.c_str());
    for (std::size_t i = 0; i < game.moves.size(); ++i) {
        const GameMove& move = game.moves[i];
        const Analysis& before = analyses[i];
        const Analysis& after = analyses[i + 1];
        const bool known = before.fault.empty() && after.fault.empty();
        const bool white = isWhitePly(game.fen, i);
        const bool best = before.line.empty() || before.line.front() == move.san;
        judged.moves.push_back({moveNumber(game.fen, i), move.san, white, known, scoreForWhite(after, !white),
                                known ? lossOf(move, before, after) : 0, best ? "" : before.line.front(),
                                menOf(*board), realSquareOf(moveFrom(move.move)),
                                realSquareOf(moveTo(move.move))});
        makeMove(move.move);
    }
    return judged;
}

// ---- comments -------------------------------------------------------------------------------------------------

// From White's side, as readers of games expect it.
static std::string evaluationText(const Analysis& analysis, bool whiteToMove) {
    const i32 mate = mateDistance(analysis.score);
    char text[32];
    if (mate != 0) {
        std::snprintf(text, sizeof text, "#%d", whiteToMove ? mate : -mate);
    } else {
        const i32 score = whiteToMove ? analysis.score : -analysis.score;
        std::snprintf(text, sizeof text, "%s%d.%02d", score < 0 ? "-" : "", std::abs(score) / 100,
                      std::abs(score) % 100);
    }
    return text;
}

// Empty for a mate on the board, which has no evaluation.
static std::string commentOf(const Analysis& analysis, bool whiteToMove) {
    if (!analysis.fault.empty()) {
        return "{" + (notAnalysed + analysis.fault) + "}";
    }
    if (analysis.standstill == Standstill::checkmate) {
        return {};
    }
    return "{[%eval " + evaluationText(analysis, whiteToMove) + "] [%depth " +
           std::to_string(analysis.depth) + "]}";
}

// An earlier evaluation goes: without it, or empty if nothing else was in the comment.
static std::string withoutEvaluation(std::string comment) {
    for (const std::string_view command : {"[%eval ", "[%depth "}) {
        for (std::size_t at = comment.find(command); at != std::string::npos; at = comment.find(command)) {
            const std::size_t end = comment.find(']', at);
            if (end == std::string::npos) {
                break;
            }
            comment.erase(at, end + 1 - at);
        }
    }
    const bool says = comment.find_first_not_of("{} \t\r\n") != std::string::npos;
    return says && comment.find(std::string("{") + notAnalysed) != 0 ? comment : "";
}

static const char* glyphFor(i32 loss, i32 threshold) {
    if (loss < threshold) {
        return "";
    }
    return loss >= 4 * threshold ? "$4" : loss >= 2 * threshold ? "$2" : "$6";
}

static bool judgesMove(const GameItem& item) {
    return item.kind == ItemKind::glyph && item.text.size() == 2 && item.text[1] >= '1' &&
           item.text[1] <= '6';
}

static std::string betterLine(const Game& game, std::size_t ply, const Analysis& before) {
    std::string text = "(";
    for (std::size_t i = 0; i < before.line.size(); ++i) {
        if (i == 0 || isWhitePly(game.fen, ply + i)) {
            text += moveNumber(game.fen, ply + i) + " ";
        }
        text += before.line[i] + " ";
    }
    const std::string comment = commentOf(before, isWhitePly(game.fen, ply));
    return text + comment + ")";
}

// Whether a line stands there already, as an earlier run has written it, however its lines are broken now.
static bool isToldAlready(const std::vector<GameItem>& items, const std::string& line) {
    const auto withoutBlanks = [](std::string text) {
        std::erase_if(text, [](char c) { return static_cast<u8>(c) <= ' '; });
        return text;
    };
    return std::ranges::any_of(items, [&](const GameItem& item) {
        return item.kind == ItemKind::variation && withoutBlanks(item.text) == withoutBlanks(line);
    });
}

// ---- the whole ------------------------------------------------------------------------------------------------

// What stands behind a move: glyphs and comments of the input, then ours, then its variations and what follows them.
// True if the next move of Black needs its number.
static bool writeBehind(GameWriter& writer, const Game& game, std::size_t ply,
                        const std::vector<Analysis>& analyses, const JudgedGame& judged, i32 threshold) {
    const std::vector<GameItem>& items = game.moves[ply].after;
    const i32 loss = judged.moves[ply].loss;
    const bool isWorth = judged.moves[ply].known && loss >= threshold;
    if (isWorth && std::ranges::none_of(items, judgesMove)) {
        writeWord(writer, glyphFor(loss, threshold));
    }
    auto item = items.begin();
    bool interrupts = false;
    const auto write = [&](const std::string& text) {
        if (!text.empty()) {
            writeWord(writer, text);
            interrupts = interrupts || text.front() != '$';
        }
    };
    for (; item != items.end() && item->kind != ItemKind::variation; ++item) {
        write(item->kind == ItemKind::comment ? withoutEvaluation(item->text) : item->text);
    }
    write(commentOf(analyses[ply + 1], isWhitePly(game.fen, ply + 1)));
    if (isWorth && !judged.moves[ply].better.empty()) {
        const std::string line = betterLine(game, ply, analyses[ply]);
        write(isToldAlready(items, line) ? "" : line);
    }
    for (; item != items.end(); ++item) {
        write(item->text);
    }
    return interrupts;
}

static void writeItems(GameWriter& writer, const std::vector<GameItem>& items) {
    for (const GameItem& item : items) {
        writeWord(writer, item.text);
    }
}

std::string annotatedGame(const Game& game, const std::vector<Analysis>& analyses, const JudgedGame& judged,
                          i32 threshold) {
    std::string head;
    for (const std::string& tag : game.tags) {
        head += tag + "\n";
    }
    head += head.empty() ? "" : "\n";
    GameWriter writer;
    writeItems(writer, game.before);
    bool needsNumber = true;
    for (std::size_t ply = 0; ply < game.moves.size(); ++ply) {
        if (needsNumber || isWhitePly(game.fen, ply)) {
            writeWord(writer, moveNumber(game.fen, ply));
        }
        writeWord(writer, game.moves[ply].san);
        needsNumber = writeBehind(writer, game, ply, analyses, judged, threshold);
    }
    writeWord(writer, game.result);
    return head + writer.text + "\n\n";
}

std::string annotatedJson(const Game& game, const std::vector<Analysis>& analyses, const JudgedGame& judged) {
    json moves = json::array();
    for (std::size_t i = 0; i < game.moves.size(); ++i) {
        const Analysis& after = analyses[i + 1];
        json move{{"number", judged.moves[i].number}, {"san", game.moves[i].san}};
        if (after.fault.empty()) {
            const i32 sign = judged.moves[i].white ? -1 : 1;
            const i32 mate = mateDistance(after.score);
            move[mate != 0 ? "mate" : "score"] = sign * (mate != 0 ? mate : after.score);
            move["depth"] = after.depth;
        } else {
            move["error"] = after.fault;
        }
        if (judged.moves[i].known) {
            move["loss"] = judged.moves[i].loss;
            move["best"] = analyses[i].line;
        }
        moves.push_back(move);
    }
    const json object{{"tags", game.tags}, {"fen", game.fen}, {"moves", moves}, {"result", game.result}};
    return object.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}
