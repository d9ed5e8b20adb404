// Short notation is found by looking at all legal moves: which others of the same man reach the same square?
#include "san.h"

#include "search/search_info.h"

#include <algorithm>

static i32 boardSquare(i32 square) {
    return blackToMove(*board) ? square ^ 56 : square;
}

static char fileLetter(i32 square) {
    return static_cast<char>('a' + (square & 7));
}

static char rankDigit(i32 square) {
    return static_cast<char>('1' + (square >> 3));
}

static bool isCastling(Mossa move) {
    return moveKind(move) == CASTLE_SHORT || moveKind(move) == CASTLE_LONG;
}

// What of its origin a move of a piece has to tell: nothing, the file, the rank or both.
static std::string originOf(Mossa move) {
    MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    const i32 from = boardSquare(moveFrom(move));
    bool ambiguous = false;
    bool sameFile = false;
    bool sameRank = false;
    for (i32 i = 0; i < count; ++i) {
        const Mossa other = moves[static_cast<u32>(i)];
        if (isCastling(other) || (moveKind(other) & 7) != (moveKind(move) & 7) ||
            moveTo(other) != moveTo(move) || moveFrom(other) == moveFrom(move)) {
            continue;
        }
        const i32 otherFrom = boardSquare(moveFrom(other));
        ambiguous = true;
        sameFile = sameFile || (otherFrom & 7) == (from & 7);
        sameRank = sameRank || otherFrom >> 3 == from >> 3;
    }
    std::string text;
    if (ambiguous && (!sameFile || sameRank)) {
        text += fileLetter(from);
    }
    if (sameFile) {
        text += rankDigit(from);
    }
    return text;
}

static std::string bareSan(Mossa move) {
    if (isCastling(move)) {
        return moveKind(move) == CASTLE_SHORT ? "O-O" : "O-O-O";
    }
    constexpr const char* letters = "  NBRQK";
    const i32 man = moveKind(move) & 7;
    const i32 to = boardSquare(moveTo(move));
    const bool captures = (moveKind(move) & 8) != 0;
    std::string text;
    if (man != PAWN) {
        text += letters[man];
        text += originOf(move);
    } else if (captures) {
        text += fileLetter(boardSquare(moveFrom(move)));
    }
    text += captures ? "x" : "";
    text += fileLetter(to);
    text += rankDigit(to);
    if (movePromo(move) != 0) {
        text += '=';
        text += letters[movePromo(move)];
    }
    return text;
}

// "+", "#" or nothing, with the move made on the board.
static const char* checkMark() {
    if (inCheck() == 0) {
        return "";
    }
    MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    return count == 0 ? "#" : "+";
}

std::string sanOf(Mossa move) {
    const u32 nodes = SearchInfo.nodes;  // which making moves counts
    std::string text = bareSan(move);
    makeMove(move);
    text += checkMark();
    --board;
    SearchInfo.nodes = nodes;
    return text;
}

std::vector<std::string> sanLine(const std::vector<Mossa>& moves) {
    Scacchiera* const root = board;
    const u32 nodes = SearchInfo.nodes;
    std::vector<std::string> texts;
    texts.reserve(moves.size());
    for (const Mossa move : moves) {
        texts.push_back(sanOf(move));
        makeMove(move);
    }
    board = root;
    SearchInfo.nodes = nodes;
    return texts;
}
