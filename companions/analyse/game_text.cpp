// The moves are played; what stands in comments and variations is only carried along.
#include "game_text.h"

#include "fen_reader.h"
#include "frontend/session.h"
#include "move_reader.h"
#include "san.h"
#include "words.h"

#include <algorithm>

constexpr std::size_t lineWidth = 79;

// ---- characters -----------------------------------------------------------------------------------------------

static std::string_view takeText(GameText& text, std::size_t length) {
    const std::string_view taken = text.rest.substr(0, length);
    text.line += static_cast<u64>(std::ranges::count(taken, '\n'));
    text.lineStarts = taken.empty() ? text.lineStarts : taken.back() == '\n';
    text.rest.remove_prefix(taken.size());
    return taken;
}

static bool isBlankChar(char c) {
    return static_cast<u8>(c) <= ' ';
}

static std::size_t endOf(std::string_view text, char last) {
    const std::size_t at = text.find(last);
    return at == std::string_view::npos ? text.size() : at + 1;
}

// Length of a variation, up to its own closing bracket; all there is if that does not come.
static std::size_t variationLength(std::string_view text) {
    i64 depth = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        const char c = text[at];
        if (c == '{') {
            at += endOf(text.substr(at), '}');
            continue;
        }
        if (c == ';') {
            at += endOf(text.substr(at), '\n');
            continue;
        }
        ++at;
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (depth == 0) {
            break;
        }
    }
    return at;
}

// Blanks and escaped lines.
static void skipBlanks(GameText& text) {
    while (!text.rest.empty()) {
        if (text.rest.front() == '%' && text.lineStarts) {
            takeText(text, endOf(text.rest, '\n'));
        } else if (isBlankChar(text.rest.front())) {
            takeText(text, 1);
        } else {
            break;
        }
    }
}

// ---- tags -----------------------------------------------------------------------------------------------------

static std::string_view takeTag(GameText& text) {
    bool quoted = false;
    std::size_t length = 1;
    for (; length < text.rest.size(); ++length) {
        const char c = text.rest[length];
        if (quoted && c == '\\') {
            ++length;
        } else if (c == '"') {
            quoted = !quoted;
        } else if (c == '\n' || (!quoted && c == ']')) {
            break;
        }
    }
    return takeText(text, length + 1);
}

std::string tagValue(const Game& game, std::string_view name) {
    for (const std::string& tag : game.tags) {
        Words words{std::string_view(tag).substr(1)};
        if (words.next() != name) {
            continue;
        }
        std::string value;
        for (std::size_t at = tag.find('"');
             at != std::string::npos && ++at < tag.size() && tag[at] != '"';) {
            at += tag[at] == '\\' && at + 1 < tag.size() ? 1 : 0;
            value += tag[at];
        }
        return value;
    }
    return {};
}

static void takeTags(GameText& text, Game& game) {
    for (skipBlanks(text); text.rest.starts_with('['); skipBlanks(text)) {
        std::string tag(takeTag(text));
        while (!tag.empty() && isBlankChar(tag.back())) {
            tag.pop_back();
        }
        game.tags.push_back(tag);
    }
}

// ---- moves ----------------------------------------------------------------------------------------------------

static bool isResultWord(std::string_view word) {
    return word == "1-0" || word == "0-1" || word == "1/2-1/2" || word == "*";
}

static std::string_view withoutNumber(std::string_view word) {
    const std::size_t digits = std::min(word.find_first_not_of("0123456789"), word.size());
    if (digits < word.size() && word[digits] != '.') {
        return word;  // a castling with zeros
    }
    return word.substr(std::min(word.find_first_not_of('.', digits), word.size()));
}

static std::string glyphOf(std::string_view word) {
    const std::size_t last = word.find_last_not_of("!?");
    const std::string_view marks = word.substr(last == std::string_view::npos ? 0 : last + 1);
    constexpr std::string_view known[] = {"!", "?", "!!", "??", "!?", "?!"};
    const auto* const found = std::ranges::find(known, marks);
    return found == std::end(known) ? "" : "$" + std::to_string(found - known + 1);
}

static void noteFault(Game& game, u64 line, const std::string& fault) {
    if (game.fault.empty()) {
        game.fault = fault;
        game.faultLine = line;
    }
}

static void addItem(Game& game, ItemKind kind, const std::string& item) {
    (game.moves.empty() ? game.before : game.moves.back().after).push_back({kind, item});
}

static void playWord(Game& game, u64 line, std::string_view word) {
    if (!game.fault.empty()) {
        return;
    }
    const ReadMove read = readMoveText(word);
    if (read.fault != nullptr) {
        noteFault(game, line, "\"" + std::string(word) + "\" " + read.fault);
        return;
    }
    if (game.moves.size() + 2 >= gameRecordsMax) {
        noteFault(game, line, "the game is too long");
        return;
    }
    game.moves.push_back({read.move, sanOf(read.move), {}});
    makeMove(read.move);
    if (const std::string glyph = glyphOf(word); !glyph.empty()) {
        addItem(game, ItemKind::glyph, glyph);
    }
}

// A word of moves, numbers or results. True if it ends the game.
static bool takeWord(GameText& text, Game& game) {
    const u64 line = text.line;
    const auto* const begin = text.rest.data();
    const auto* const end = std::find_if(begin + 1, begin + text.rest.size(), [](char c) {
        return isBlankChar(c) || std::string_view("(){};$[]").find(c) != std::string_view::npos;
    });
    const std::string_view word = takeText(text, static_cast<std::size_t>(end - begin));
    if (isResultWord(word)) {
        game.result = word;
        game.ended = true;
        return true;
    }
    const std::string_view move = withoutNumber(word);
    const bool says = std::ranges::any_of(move, [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    });
    if ((says && move != "e.p.") || move.starts_with("--")) {
        playWord(game, line, move);
    }
    return false;
}

// What ends with the line becomes a comment in braces.
static std::string bracedComment(std::string_view text) {
    std::string comment(text.substr(1));
    while (!comment.empty() && isBlankChar(comment.back())) {
        comment.pop_back();
    }
    std::ranges::replace(comment, '}', ')');
    return "{" + comment + " }";
}

static void takeEnclosed(GameText& text, Game& game, ItemKind kind, std::size_t length) {
    const u64 line = text.line;
    const std::string item(takeText(text, length));
    if (item.back() != (kind == ItemKind::comment ? '}' : ')')) {
        noteFault(game, line,
                  kind == ItemKind::comment ? "a comment does not end" : "a variation does not end");
    }
    addItem(game, kind, item);
}

// Takes what comes next of a game's moves. True if the game ends.
static bool takeNext(GameText& text, Game& game) {
    switch (text.rest.front()) {
        case '{':
            takeEnclosed(text, game, ItemKind::comment, endOf(text.rest, '}'));
            return false;
        case '(':
            takeEnclosed(text, game, ItemKind::variation, variationLength(text.rest));
            return false;
        case ';':
            addItem(game, ItemKind::comment, bracedComment(takeText(text, endOf(text.rest, '\n'))));
            return false;
        case '$': {
            const std::size_t digits =
                std::min(text.rest.find_first_not_of("0123456789", 1), text.rest.size());
            addItem(game, ItemKind::glyph, std::string(takeText(text, digits)));
            return false;
        }
        case ')':
        case '}':
        case ']':
            noteFault(game, text.line, "a bracket that was not opened");
            takeText(text, 1);
            return false;
        default:
            return takeWord(text, game);
    }
}

static void setUpFirstPosition(Game& game) {
    const std::string given = tagValue(game, "FEN");
    const FenReading reading = readFen(given.empty() ? startFen : given);
    if (!reading.fault.empty()) {
        noteFault(game, game.line, reading.fault);
    }
    game.fen = reading.fault.empty() ? reading.fen : startFen;
    newGame();
    fenToBoard(game.fen.c_str());
}

bool nextGame(GameText& text, Game& game) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.rest.starts_with(byteOrderMark)) {
        text.rest.remove_prefix(byteOrderMark.size());
    }
    skipBlanks(text);
    if (text.rest.empty()) {
        return false;
    }
    game = {};
    game.line = text.line;
    const char* const begin = text.rest.data();
    takeTags(text, game);
    setUpFirstPosition(game);
    // Tags begin the next game where a result is missing.
    for (skipBlanks(text); !text.rest.empty() && text.rest.front() != '['; skipBlanks(text)) {
        if (takeNext(text, game)) {
            break;
        }
    }
    game.raw.assign(begin, text.rest.data());
    while (!game.raw.empty() && isBlankChar(game.raw.back())) {
        game.raw.pop_back();
    }
    if (game.result.empty()) {
        const std::string told = tagValue(game, "Result");
        game.result = isResultWord(told) ? told : "*";
    }
    return true;
}

std::string gameKey(const Game& game) {
    std::string key;
    for (const std::string& tag : game.tags) {
        key += tag + "\n";
    }
    key += game.fen + "\n";
    for (const GameMove& move : game.moves) {
        key += move.san + " ";
    }
    return key;
}

// ---- writing --------------------------------------------------------------------------------------------------

void writeWord(GameWriter& writer, const std::string& word) {
    if (writer.column > 0) {
        const bool fits = writer.column + 1 + word.size() <= lineWidth;
        writer.text += fits ? " " : "\n";
        writer.column = fits ? writer.column + 1 : 0;
    }
    writer.text += word;
    const std::size_t lastLine = word.rfind('\n');
    writer.column = lastLine == std::string::npos ? writer.column + word.size() : word.size() - lastLine;
}

bool isWhitePly(const std::string& fen, std::size_t ply) {
    return (fen.find(" w ") != std::string::npos) == (ply % 2 == 0);
}

std::string moveNumber(const std::string& fen, std::size_t ply) {
    Words words{fen};
    for (i32 i = 0; i < 5; ++i) {
        words.next();
    }
    const std::size_t blackFirst = isWhitePly(fen, 0) ? 0 : 1;
    const i64 number = numberOr(words.next(), 1) + static_cast<i64>((ply + blackFirst) / 2);
    return std::to_string(number) + (isWhitePly(fen, ply) ? "." : "...");
}
