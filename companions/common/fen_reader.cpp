// A FEN is taken apart, each field checked, and put together again in the one form that the core reads without loss.
#include "fen_reader.h"

#include "board/board.h"
#include "words.h"

#include <algorithm>
#include <cctype>
#include <vector>

// More plies without a capture than any rule counts, and few enough for the record's byte with a long game behind.
constexpr i32 highestClock = 120;

constexpr i32 highestNumber = 9999;

namespace {

struct Fields {
    std::string men;  // 64 letters, a1 first, '.' empty
    bool white = true;
    std::string rights;
    std::string enPassant = "-";
    i32 clock = 0;
    i32 number = 1;
};

}  // namespace

// ---- placement ------------------------------------------------------------------------------------------------

// Letters of one rank, file a first; empty if they are not eight.
static std::string readRank(std::string_view text) {
    std::string rank;
    for (const char c : text) {
        if (c >= '1' && c <= '8') {
            rank.append(static_cast<std::size_t>(c - '0'), '.');
        } else if (std::string_view("pnbrqkPNBRQK").find(c) != std::string_view::npos) {
            rank.push_back(c);
        } else {
            return {};
        }
    }
    return rank.size() == 8 ? rank : std::string{};
}

static std::string readPlacement(std::string_view text, std::string& men) {
    std::vector<std::string> ranks;
    while (true) {
        const std::size_t end = text.find('/');
        ranks.push_back(readRank(text.substr(0, end)));
        if (ranks.back().empty() || ranks.size() > 8) {
            return "the board is not eight ranks of eight squares";
        }
        if (end == std::string_view::npos) {
            break;
        }
        text.remove_prefix(end + 1);
    }
    if (ranks.size() != 8) {
        return "the board is not eight ranks of eight squares";
    }
    men.clear();
    for (auto rank = ranks.rbegin(); rank != ranks.rend(); ++rank) {
        men += *rank;
    }
    return {};
}

static std::string checkMen(const std::string& men) {
    if (std::ranges::count(men, 'K') != 1 || std::ranges::count(men, 'k') != 1) {
        return "each side needs one king";
    }
    const std::string rims = men.substr(0, 8) + men.substr(56);
    if (rims.find_first_of("pP") != std::string::npos) {
        return "a pawn stands on the first or last rank";
    }
    return {};
}

// ---- the other fields -----------------------------------------------------------------------------------------

static char manOn(const std::string& men, std::string_view square) {
    return men[static_cast<u32>(square[0] - 'a' + 8 * (square[1] - '1'))];
}

struct Right {
    char letter;
    char rookFile;  // the same right as other dialects write it
    const char* king;
    const char* rook;
};

static bool isAtHome(const std::string& men, const Right& right) {
    const bool white = std::isupper(static_cast<unsigned char>(right.letter)) != 0;
    return manOn(men, right.king) == (white ? 'K' : 'k') && manOn(men, right.rook) == (white ? 'R' : 'r');
}

// Rights that can be; in the order KQkq whatever the order given.
static std::string readRights(std::string_view text, const std::string& men) {
    static constexpr Right all[] = {
        {'K', 'H', "e1", "h1"}, {'Q', 'A', "e1", "a1"}, {'k', 'h', "e8", "h8"}, {'q', 'a', "e8", "a8"}};
    std::string rights;
    for (const Right& right : all) {
        const bool wanted = text.find(right.letter) != std::string_view::npos ||
                            text.find(right.rookFile) != std::string_view::npos;
        if (wanted && isAtHome(men, right)) {
            rights.push_back(right.letter);
        }
    }
    return rights.empty() ? "-" : rights;
}

static bool isRightsField(std::string_view text) {
    return text == "-" || (!text.empty() && text.find_first_not_of("KQkqHAha") == std::string_view::npos);
}

// The square, if a pawn can just have passed over it; else "-".
static std::string readEnPassant(std::string_view text, const Fields& fields) {
    const char rank = fields.white ? '6' : '3';
    if (text.size() != 2 || text[0] < 'a' || text[0] > 'h' || text[1] != rank) {
        return "-";
    }
    const char pawnRank = fields.white ? '5' : '4';
    const char originRank = fields.white ? '7' : '2';
    const bool passed = manOn(fields.men, text) == '.' &&
                        manOn(fields.men, std::string{text[0], originRank}) == '.' &&
                        manOn(fields.men, std::string{text[0], pawnRank}) == (fields.white ? 'p' : 'P');
    return passed ? std::string(text) : "-";
}

static bool isEnPassantField(std::string_view text) {
    return text == "-" ||
           (text.size() == 2 && text[0] >= 'a' && text[0] <= 'h' && (text[1] == '3' || text[1] == '6'));
}

// ---- the whole ------------------------------------------------------------------------------------------------

static std::string readFields(std::string_view text, Fields& fields) {
    Words words{text};
    std::string fault = readPlacement(words.next(), fields.men);
    if (fault.empty()) {
        fault = checkMen(fields.men);
    }
    if (!fault.empty()) {
        return fault;
    }
    const std::string_view side = words.next();
    if (side != "w" && side != "b" && !side.empty()) {
        return "the side to move is neither w nor b";
    }
    fields.white = side != "b";
    const std::string_view rights = words.next();
    if (!rights.empty() && !isRightsField(rights)) {
        return "the castling rights are not of KQkq";
    }
    fields.rights = readRights(rights, fields.men);
    const std::string_view enPassant = words.next();
    if (!enPassant.empty() && !isEnPassantField(enPassant)) {
        return "the en passant field is no square";
    }
    fields.enPassant = readEnPassant(enPassant, fields);
    fields.clock = static_cast<i32>(std::clamp(numberOr(words.next(), 0), i64{0}, i64{highestClock}));
    fields.number = static_cast<i32>(std::clamp(numberOr(words.next(), 1), i64{1}, i64{highestNumber}));
    return {};
}

static std::string writePlacement(const std::string& men) {
    std::string text;
    for (u32 rank = 8; rank-- > 0;) {
        i32 empty = 0;
        for (const char man : men.substr(std::size_t{rank} * 8, 8)) {
            if (man == '.') {
                ++empty;
                continue;
            }
            text += empty > 0 ? std::to_string(empty) : "";
            empty = 0;
            text.push_back(man);
        }
        text += empty > 0 ? std::to_string(empty) : "";
        text += rank > 0 ? "/" : "";
    }
    return text;
}

static std::string write(const Fields& fields) {
    return writePlacement(fields.men) + (fields.white ? " w " : " b ") + fields.rights + " " +
           fields.enPassant + " " + std::to_string(fields.clock) + " " + std::to_string(fields.number);
}

// The core finds attacks only at `board`: the last record of the stack, which no search reaches, is lent for it.
static bool kingCanBeTaken(const std::string& fen) {
    Scacchiera* const former = board;
    board = &boardStack.back();
    const bool taken = fenToBoard(fen.c_str()) == 0 || leftInCheck() != 0;
    board = former;
    return taken;
}

FenReading readFen(std::string_view text) {
    Fields fields;
    const std::string fault = readFields(text, fields);
    if (!fault.empty()) {
        return {{}, fault};
    }
    const std::string fen = write(fields);
    if (kingCanBeTaken(fen)) {
        return {{}, "the side to move can take the king"};
    }
    return {fen, {}};
}
