// Reads moves in short notation by comparing what the text says with each legal move; nothing else decides legality.
#include "move_reader.h"

#include "board/board.h"
#include "book/book_record.h"

// What a text demands of a move; -1 where it says nothing.
struct MovePattern {
    i32 piece;
    i32 fromFile;
    i32 fromRank;
    i32 toFile;
    i32 toRank;
    i32 promo;
};

constexpr i32 unsaid = -1;

static i32 realSquare(i32 square) {
    return blackToMove(*board) ? square ^ 56 : square;
}

static bool agrees(i32 demanded, i32 actual) {
    return demanded == unsaid || demanded == actual;
}

static bool fits(const MovePattern& pattern, Mossa move) {
    const i32 from = realSquare(moveFrom(move));
    const i32 to = realSquare(moveTo(move));
    return agrees(pattern.piece, moveKind(move) & 7) && agrees(pattern.fromFile, from & 7) &&
           agrees(pattern.fromRank, from >> 3) && agrees(pattern.toFile, to & 7) &&
           agrees(pattern.toRank, to >> 3) && pattern.promo == movePromo(move);
}

static ReadMove theOnlyMove(const MovePattern& pattern) {
    MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    Mossa found = 0;
    for (i32 i = 0; i < count; ++i) {
        if (!fits(pattern, moves[i])) {
            continue;
        }
        if (found != 0) {
            return {0, "fits more than one move"};
        }
        found = moves[i];
    }
    return found != 0 ? ReadMove{found, nullptr} : ReadMove{0, "is not a legal move here"};
}

static i32 pieceOfLetter(char letter) {
    constexpr std::string_view letters = "  NBRQK";
    const std::size_t code = letters.find(letter);
    return letter != ' ' && code != std::string_view::npos ? static_cast<i32>(code) : unsaid;
}

static bool isFile(char c) {
    return c >= 'a' && c <= 'h';
}

static bool isRank(char c) {
    return c >= '1' && c <= '8';
}

static char upperCase(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Takes "=Q", "(Q)" or "Q" off the end of `text`. Returns the piece code; 0 if there is none, unsaid if it is none that
// a pawn can become.
static i32 takePromotion(std::string_view& text) {
    if (text.ends_with(')')) {
        text.remove_suffix(1);
    }
    if (text.empty() || isRank(text.back())) {
        return 0;
    }
    const i32 code = pieceOfLetter(upperCase(text.back()));
    text.remove_suffix(1);
    if (text.ends_with('=') || text.ends_with('(') || text.ends_with('/')) {
        text.remove_suffix(1);
    }
    return code == KING ? unsaid : code;
}

static ReadMove readCastling(std::string_view text) {
    const bool isLong = text.size() == 5;
    constexpr i32 fileC = 2;
    constexpr i32 fileE = 4;
    constexpr i32 fileG = 6;
    return theOnlyMove({KING, fileE, unsaid, isLong ? fileC : fileG, unsaid, 0});
}

// Whether `text` is "e2e4" or "e7e8q".
static bool isCoordinates(std::string_view text) {
    return text.size() >= 4 && text.size() <= 5 && isFile(text[0]) && isRank(text[1]) && isFile(text[2]) &&
           isRank(text[3]);
}

constexpr ReadMove unreadable = {0, "cannot be read as a move"};

static ReadMove readCoordinates(std::string_view text) {
    const i32 promo = takePromotion(text);
    if (promo == unsaid) {
        return unreadable;
    }
    return theOnlyMove({unsaid, text[0] - 'a', text[1] - '1', text[2] - 'a', text[3] - '1', promo});
}

static ReadMove readShortNotation(std::string_view text) {
    MovePattern pattern = {PAWN, unsaid, unsaid, unsaid, unsaid, 0};
    const i32 piece = pieceOfLetter(text.front());
    if (piece != unsaid) {
        pattern.piece = piece;
        text.remove_prefix(1);
    } else {
        pattern.promo = takePromotion(text);
    }
    if (pattern.promo == unsaid || text.size() < 2 || !isRank(text.back()) ||
        !isFile(text[text.size() - 2])) {
        return unreadable;
    }
    pattern.toRank = text.back() - '1';
    pattern.toFile = text[text.size() - 2] - 'a';
    text.remove_suffix(2);
    if (text.ends_with('x') || text.ends_with('-') || text.ends_with(':')) {
        text.remove_suffix(1);
    }
    if (!text.empty() && isFile(text.front())) {
        pattern.fromFile = text.front() - 'a';
        text.remove_prefix(1);
    }
    if (!text.empty() && isRank(text.front())) {
        pattern.fromRank = text.front() - '1';
        text.remove_prefix(1);
    }
    return text.empty() ? theOnlyMove(pattern) : unreadable;
}

std::string_view withoutMarks(std::string_view text) {
    const std::size_t last = text.find_last_not_of("+#!?");
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

ReadMove readMoveText(std::string_view text) {
    const std::string_view bare = withoutMarks(text);
    if (bare == "O-O" || bare == "O-O-O" || bare == "0-0" || bare == "0-0-0") {
        return readCastling(bare);
    }
    if (bare.empty()) {
        return unreadable;
    }
    return isCoordinates(bare) ? readCoordinates(bare) : readShortNotation(bare);
}

static i32 castlingRook(Mossa move) {
    return moveKind(move) == CASTLE_SHORT ? 7 : 0;
}

u16 bookMoveOf(Mossa move) {
    const bool castles = moveKind(move) == CASTLE_SHORT || moveKind(move) == CASTLE_LONG;
    const i32 to = castles ? castlingRook(move) : moveTo(move);
    const i32 promotion = movePromo(move) == 0 ? 0 : movePromo(move) - PAWN;
    return makeBookMove(realSquare(moveFrom(move)), realSquare(to), promotion);
}
