// Reads PGN: splits the text into tags, moves and what is passed over, and plays the moves.
#include "pgn_reader.h"

#include "frontend/session.h"
#include "move_reader.h"

#include <algorithm>

struct PgnText {
    std::string_view rest;
    u64 line;         // of the first character of `rest`, from 1
    bool lineStarts;  // `rest` is at the start of a line
};

struct PgnGame {
    bool hasTags;
    bool hasMoves;
    bool faulty;  // its further moves do not count
    i32 ply;
};

static std::string_view take(PgnText& text, std::size_t length) {
    const std::string_view taken = text.rest.substr(0, length);
    text.line += static_cast<u64>(std::count(taken.begin(), taken.end(), '\n'));
    text.lineStarts = taken.empty() ? text.lineStarts : taken.back() == '\n';
    text.rest.remove_prefix(taken.size());
    return taken;
}

// Takes everything up to and with `last`; all there is if it does not come.
static void takeThrough(PgnText& text, char last) {
    const std::size_t at = text.rest.find(last);
    take(text, at == std::string_view::npos ? text.rest.size() : at + 1);
}

// Takes a variation with all that is inside it. Deep nesting is only counted.
static void takeVariation(PgnText& text) {
    u64 depth = 0;
    do {
        const std::size_t at = text.rest.find_first_of("(){;");
        take(text, std::min(at, text.rest.size()));
        if (text.rest.empty()) {
            return;
        }
        const char c = text.rest.front();
        if (c == '{') {
            takeThrough(text, '}');
        } else if (c == ';') {
            takeThrough(text, '\n');
        } else {
            depth += c == '(' ? 1 : -1;
            take(text, 1);
        }
    } while (depth > 0);
}

// Takes a tag, `[Name "value"]`; gives the value of a FEN tag, else an empty text.
static std::string takeTag(PgnText& text) {
    std::string value;
    bool quoted = false;
    std::size_t length = 1;
    for (; length < text.rest.size(); ++length) {
        const char c = text.rest[length];
        if (c == '"') {
            quoted = !quoted;
        } else if (quoted && c == '\\' && length + 1 < text.rest.size()) {
            value += text.rest[++length];
        } else if (quoted && c != '\n') {
            value += c;
        } else if (c == ']' || c == '\n') {
            break;
        }
    }
    const std::string_view tag = take(text, length + 1);
    return tag.starts_with("[FEN ") ? value : std::string();
}

static bool isResult(std::string_view word) {
    return word == "1-0" || word == "0-1" || word == "1/2-1/2" || word == "*";
}

static bool isBlank(char c) {
    return static_cast<u8>(c) <= ' ';
}

// Move numbers and dots before a move.
static std::string_view behindMoveNumber(std::string_view word) {
    const std::size_t digits = std::min(word.find_first_not_of("0123456789"), word.size());
    if (digits < word.size() && word[digits] != '.') {
        return word;  // a result or a castling with zeros
    }
    return word.substr(std::min(word.find_first_not_of('.', digits), word.size()));
}

// Words of signs alone, "+-" or "!?", judge a position.
static bool hasLetterOrDigit(std::string_view word) {
    return std::any_of(word.begin(), word.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    });
}

static void startGame(PgnGame& game) {
    newGame();
    game = PgnGame{};
}

struct PgnReader {
    BookBuilder& builder;
    FaultLog& log;
    const std::string& fileName;
    PgnText text;
    PgnGame game;
    u64 games;
};

static void endGame(PgnReader& reader) {
    if (reader.game.hasTags || reader.game.hasMoves) {
        ++reader.games;
    }
    startGame(reader.game);
}

static void reportGameFault(PgnReader& reader, u64 line, std::string_view word, const char* fault) {
    reportFault(reader.log, reader.fileName, line, word, fault);
    reader.game.faulty = true;
}

static void playWord(PgnReader& reader, u64 line, std::string_view word) {
    PgnGame& game = reader.game;
    game.hasMoves = true;
    if (game.faulty || game.ply >= reader.builder.maxPly) {
        return;
    }
    const ReadMove read = readMoveText(word);
    if (read.fault != nullptr) {
        reportGameFault(reader, line, word, read.fault);
        return;
    }
    countMove(reader.builder, read.move, 1);
    makeMove(read.move);
    ++game.ply;
}

static void readTag(PgnReader& reader) {
    if (reader.game.hasMoves) {
        endGame(reader);
    }
    reader.game.hasTags = true;
    const u64 line = reader.text.line;
    const std::string fen = takeTag(reader.text);
    if (!fen.empty() && fenToBoard(fen.c_str()) == 0) {
        reportGameFault(reader, line, fen, "is not a position");
    }
}

static void readWord(PgnReader& reader) {
    const u64 line = reader.text.line;
    const std::string_view rest = reader.text.rest;
    const auto end = std::find_if(rest.begin() + 1, rest.end(), [](char c) {
        return isBlank(c) || std::string_view("(){};$[]").find(c) != std::string_view::npos;
    });
    const std::string_view word = take(reader.text, static_cast<std::size_t>(end - rest.begin()));
    if (isResult(word)) {
        endGame(reader);
        return;
    }
    const std::string_view move = behindMoveNumber(word);
    if (hasLetterOrDigit(move) && move != "e.p.") {
        playWord(reader, line, move);
    }
}

// Reads what comes next, whatever it is: at least one character goes.
static void readNext(PgnReader& reader) {
    PgnText& text = reader.text;
    const char c = text.rest.front();
    if (c == '%' && text.lineStarts) {
        takeThrough(text, '\n');
    } else if (isBlank(c)) {
        take(text, 1);
    } else if (c == '{') {
        takeThrough(text, '}');
    } else if (c == ';') {
        takeThrough(text, '\n');
    } else if (c == '(') {
        takeVariation(text);
    } else if (c == '[') {
        readTag(reader);
    } else if (c == '$') {
        take(text, 1);
        take(text, std::min(text.rest.find_first_not_of("0123456789"), text.rest.size()));
    } else if (c == ')' || c == '}' || c == ']') {
        take(text, 1);
    } else {
        readWord(reader);
    }
}

u64 readPgnGames(BookBuilder& builder, FaultLog& log, const std::string& fileName, std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    PgnReader reader = {builder, log, fileName, {text, 1, true}, {}, 0};
    startGame(reader.game);
    while (!reader.text.rest.empty()) {
        readNext(reader);
    }
    endGame(reader);
    return reader.games;
}
