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

// Behind the first `last`, or behind all.
static std::size_t endOf(std::string_view text, char last) {
    const std::size_t at = text.find(last);
    return at == std::string_view::npos ? text.size() : at + 1;
}

// Length of a variation, up to its own closing bracket; none if that does not come.
static std::size_t variationLength(std::string_view text) {
    i64 depth = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        const char c = text[at];
        if (c == '{') {
            at += endOf(text.substr(at), '}');
            continue;
        }
        if (c == ';' || (c == '%' && at > 0 && text[at - 1] == '\n')) {
            at += endOf(text.substr(at), '\n');
            continue;
        }
        ++at;
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (depth == 0) {
            return at;
        }
    }
    return std::string_view::npos;
}

// Blanks, escaped lines, and the mark that some programs begin a file with.
static void skipBlanks(GameText& text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    while (!text.rest.empty()) {
        if (text.rest.starts_with(byteOrderMark)) {
            text.rest.remove_prefix(byteOrderMark.size());
        } else if (text.rest.front() == '%' && text.lineStarts) {
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

static void noteFault(Game& game, u64 line, const std::string& fault) {
    if (game.fault.empty()) {
        game.fault = fault;
        game.faultLine = line;
    }
}

static void takeTags(GameText& text, Game& game) {
    for (skipBlanks(text); text.rest.starts_with('['); skipBlanks(text)) {
        const u64 line = text.line;
        std::string tag(takeTag(text));
        while (isBlankChar(tag.back())) {
            tag.pop_back();
        }
        if (!tag.ends_with(']')) {
            noteFault(game, line, "a tag does not end");
        }
        game.tags.push_back(tag);
    }
}

// Games of other rules are told by a tag; those of ours by none, or by one of these names.
static void checkVariant(Game& game) {
    const std::string variant = tagValue(game, "Variant");
    constexpr std::string_view ours[] = {"", "?", "-", "standard", "normal", "chess", "from position"};
    if (std::ranges::none_of(ours, [&](std::string_view name) { return sameWord(name, variant); })) {
        noteFault(game, game.line, "the variant " + quotedWord(variant) + " is not played here");
    }
}

// ---- moves ----------------------------------------------------------------------------------------------------

static bool isResultWord(std::string_view word) {
    return word == "1-0" || word == "0-1" || word == "1/2-1/2" || word == "1/2" || word == "*";
}

static std::string resultOf(std::string_view word) {
    return std::string(word == "1/2" ? "1/2-1/2" : word);
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

// The glyph of a sign that stands by itself, such as "+-" or "!"; empty if it is none.
static std::string glyphOfSign(std::string_view word) {
    struct Sign {
        std::string_view text;
        const char* glyph;
    };
    constexpr Sign signs[] = {{"=", "$10"},   {"+=", "$14"}, {"=+", "$15"}, {"+/-", "$16"},
                              {"-/+", "$17"}, {"+-", "$18"}, {"-+", "$19"}, {"N", "$146"}};
    const auto* const found = std::ranges::find(signs, word, &Sign::text);
    return found != std::end(signs) ? found->glyph : withoutMarks(word).empty() ? glyphOf(word) : "";
}

static void addItem(Game& game, ItemKind kind, const std::string& item) {
    (game.moves.empty() ? game.before : game.moves.back().after).push_back({kind, item});
}

static void playWord(Game& game, u64 line, std::string_view word) {
    if (!game.fault.empty()) {
        return;
    }
    if (word == "--" || word == "Z0") {
        noteFault(game, line, quotedWord(word) + " is no move but a pass");
        return;
    }
    const ReadMove read = readMoveText(word);
    if (read.fault != nullptr) {
        noteFault(game, line, quotedWord(word) + " " + read.fault);
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
    const std::string_view move = withoutNumber(takeText(text, static_cast<std::size_t>(end - begin)));
    if (isResultWord(move)) {
        game.result = resultOf(move);
        game.ended = true;
        return true;
    }
    if (const std::string glyph = glyphOfSign(move); !glyph.empty()) {
        addItem(game, ItemKind::glyph, glyph);
        return false;
    }
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

static void takeComment(GameText& text, Game& game) {
    if (text.rest.front() == ';') {
        addItem(game, ItemKind::comment, bracedComment(takeText(text, endOf(text.rest, '\n'))));
        return;
    }
    const std::size_t end = text.rest.find('}');
    if (end == std::string_view::npos) {
        noteFault(game, text.line, "a comment does not end");
    }
    addItem(game, ItemKind::comment, std::string(takeText(text, std::min(end, text.rest.size() - 1) + 1)));
}

static void takeVariation(GameText& text, Game& game) {
    const std::size_t length = variationLength(text.rest);
    if (length == std::string_view::npos) {
        noteFault(game, text.line, "a variation does not end");
    }
    addItem(game, ItemKind::variation, std::string(takeText(text, length)));
}

static bool isCommentNext(const GameText& text) {
    return text.rest.starts_with('{') || text.rest.starts_with(';');
}

// Before the tags.
static void takeCommentsAhead(GameText& text, Game& game) {
    while (isCommentNext(text)) {
        takeComment(text, game);
        skipBlanks(text);
    }
}

// On the line of the result: said of the game that ends.
static void takeCommentsBehind(GameText& text, Game& game) {
    for (;;) {
        const std::size_t blanks = std::min(text.rest.find_first_not_of(" \t"), text.rest.size());
        takeText(text, blanks);
        if (!isCommentNext(text) || text.lineStarts) {
            return;
        }
        takeComment(text, game);
    }
}

// Takes what comes next of a game's moves. True if the game ends.
static bool takeNext(GameText& text, Game& game) {
    switch (text.rest.front()) {
        case '{':
        case ';':
            takeComment(text, game);
            return false;
        case '(':
            takeVariation(text, game);
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
    skipBlanks(text);
    if (text.rest.empty()) {
        return false;
    }
    game = {};
    game.line = text.line;
    const char* const begin = text.rest.data();
    takeCommentsAhead(text, game);
    takeTags(text, game);
    checkVariant(game);
    setUpFirstPosition(game);
    // Tags begin the next game where a result is missing.
    for (skipBlanks(text); !text.rest.empty() && text.rest.front() != '['; skipBlanks(text)) {
        if (takeNext(text, game)) {
            takeCommentsBehind(text, game);
            break;
        }
    }
    game.raw.assign(begin, text.rest.data());
    while (!game.raw.empty() && isBlankChar(game.raw.back())) {
        game.raw.pop_back();
    }
    if (game.result.empty()) {
        const std::string told = tagValue(game, "Result");
        game.result = isResultWord(told) ? resultOf(told) : "*";
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
