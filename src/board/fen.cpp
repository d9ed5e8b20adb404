// Reading positions: the FEN reader. The board is built in White's frame and flipped at the
// end for Black. Squares are not checked against the rules: whatever a text sets up is played.
#include "board/board.h"
#include "eval/psq.h"

#include <cstring>
#include <string_view>

static constexpr std::size_t longestFen = 215;

// Takes the next run of characters without `separator` off the front of `text`; empty at the end.
static std::string_view nextToken(std::string_view& text, char separator) {
    const std::size_t first = text.find_first_not_of(separator);
    if (first == std::string_view::npos) {
        text = {};
        return {};
    }
    const std::size_t last = text.find(separator, first);
    const std::string_view token = text.substr(first, last == std::string_view::npos ? last : last - first);
    text.remove_prefix(first + token.size());
    return token;
}

static void clearCode(Scacchiera& b, i32 square) {
    const TBB keep = ~squareBit(square);
    b.pbq &= keep;
    b.nbk &= keep;
    b.rqk &= keep;
}

static void putPiece(Scacchiera& b, i32 square, i32 code, bool white) {
    b.pbq |= static_cast<TBB>(code & 1) << square;
    b.nbk |= static_cast<TBB>(code >> 1 & 1) << square;
    b.rqk |= static_cast<TBB>(code >> 2 & 1) << square;
    b.side |= static_cast<TBB>(white) << square;
}

static i32 codeOfLetter(char letter) {
    static constexpr std::string_view letters = "pnbrqk";
    const std::size_t index = letters.find(letter);
    return index == std::string_view::npos ? EMPTY : static_cast<i32>(index) + 1;
}

// One rank, file a first. Returns false if a character is unknown or the eighth file is not reached. Deliberate:
// nothing behind the eighth file is looked at, and a digit may run over the end of the rank; it empties the squares
// it reaches in the rank read before, whose `side` bits stay.
static bool readRank(Scacchiera& b, std::string_view group, i32 rank) {
    i32 file = 0;
    for (const char c : group) {
        if (file >= 8) {
            break;
        }
        if (c >= '1' && c <= '8') {
            for (i32 i = 0; i < c - '0' && rank * 8 + file + i < 64; ++i) {
                clearCode(b, rank * 8 + file + i);
            }
            file += c - '0';
            continue;
        }
        const bool white = c >= 'A' && c <= 'Z';
        const i32 code = codeOfLetter(white ? static_cast<char>(c - 'A' + 'a') : c);
        if (code == EMPTY) {
            return false;
        }
        putPiece(b, rank * 8 + file, code, white);
        ++file;
    }
    return file >= 8;
}

static bool readPlacement(Scacchiera& b, std::string_view placement) {
    for (i32 rank = 7; rank >= 0; --rank) {
        if (!readRank(b, nextToken(placement, '/'), rank)) {
            return false;
        }
    }
    return true;
}

static bool readRights(Scacchiera& b, std::string_view token) {
    if (token.empty()) {
        return false;
    }
    b.castleRights = 0;
    if (token == "-") {
        return true;
    }
    for (const char c : token) {
        switch (c) {
            case 'Q':
                b.castleRights |= OWN_LONG;
                break;
            case 'K':
                b.castleRights |= OWN_SHORT;
                break;
            case 'q':
                b.castleRights |= OPPONENT_LONG;
                break;
            case 'k':
                b.castleRights |= OPPONENT_SHORT;
                break;
            default:
                return false;
        }
    }
    return true;
}

// The usual conversion: leading space, a sign, digits up to the first other byte; saturates at 32 bits.
static i32 toInteger(std::string_view token) {
    std::size_t i = 0;
    while (i < token.size() && (token[i] == ' ' || (token[i] >= '\t' && token[i] <= '\r'))) {
        ++i;
    }
    const bool negative = i < token.size() && token[i] == '-';
    if (i < token.size() && (token[i] == '-' || token[i] == '+')) {
        ++i;
    }
    i64 value = 0;
    for (; i < token.size() && token[i] >= '0' && token[i] <= '9' && value <= INT32_MAX; ++i) {
        value = value * 10 + (token[i] - '0');
    }
    value = value > INT32_MAX ? INT32_MAX : value;
    return static_cast<i32>(negative ? -value : value);
}

static bool readClock(Scacchiera& b, std::string_view token) {
    const i32 clock = toInteger(token);
    if (clock < 0) {
        return false;
    }
    b.rule50 = static_cast<u8>(clock);
    return true;
}

static bool readEnPassant(Scacchiera& b, std::string_view token, bool black) {
    if (token == "-") {
        b.epFile = noEpFile;
        return true;
    }
    if (token.size() < 2 || token[0] < 'a' || token[0] > 'h' || token[1] != (black ? '3' : '6')) {
        return false;
    }
    b.epFile = static_cast<u8>(token[0] - 'a');
    return true;
}

i32 fenToBoard(const char* fen) {
    const std::size_t length = std::strlen(fen);
    if (length > longestFen) {
        return 0;
    }
    std::string_view text(fen, length);
    const std::string_view placement = nextToken(text, ' ');
    const std::string_view side = nextToken(text, ' ');
    const std::string_view rights = nextToken(text, ' ');
    const std::string_view enPassant = nextToken(text, ' ');
    const std::string_view clock = nextToken(text, ' ');
    if (side != "w" && side != "b") {
        return 0;
    }
    const bool black = side == "b";

    Scacchiera& b = *board;
    b.side = b.pbq = b.nbk = b.rqk = 0;
    if (!readPlacement(b, placement) || !readRights(b, rights) || !readClock(b, clock)) {
        return 0;
    }
    b.stateFlags = 0;
    if (black) {
        flipBoard(b);
        b.stateFlags = blackToMoveFlag;
    }
    if (!readEnPassant(b, enPassant, black)) {
        return 0;
    }
    b.hashKey = computeKey();
    b.psqScore = easyVal();
    return 1;
}
