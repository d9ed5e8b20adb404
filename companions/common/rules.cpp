// Moves as text. Legal is what the core's own list of legal moves holds; the reasons are found by looking at the men.
#include "rules.h"

#include "board/board.h"

#include <algorithm>
#include <cctype>

std::string moveTextOf(Mossa move, const Scacchiera& position) {
    char text[6];
    moveToText(text, move, position);
    std::string result = text;
    if (result.size() == 5 && result.back() == ' ') {
        result.pop_back();
    }
    return result;
}

static std::vector<std::string> selfChecksHere(const std::vector<LegalMove>& legal) {
    MoveArray all;
    i32 count = 0;
    orderedMoves(all, count);
    std::vector<std::string> texts;
    for (i32 i = 0; i < count; ++i) {
        const Mossa move = all[static_cast<u32>(i)];
        if (std::ranges::none_of(legal, [move](const LegalMove& known) { return known.move == move; })) {
            texts.push_back(moveTextOf(move, *board));
        }
    }
    return texts;
}

Standing standingHere() {
    Standing standing{*board, {}, {}, inCheck() != 0};
    MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    for (i32 i = 0; i < count; ++i) {
        const Mossa move = moves[static_cast<u32>(i)];
        standing.legal.push_back({move, moveTextOf(move, *board)});
    }
    standing.selfCheck = selfChecksHere(standing.legal);
    return standing;
}

static bool isSquare(char file, char rank) {
    return file >= 'a' && file <= 'h' && rank >= '1' && rank <= '8';
}

bool looksLikeMove(std::string_view text) {
    if (text.size() < 4 || text.size() > 5 || !isSquare(text[0], text[1]) || !isSquare(text[2], text[3])) {
        return false;
    }
    return text.size() == 4 || std::isalpha(static_cast<unsigned char>(text[4])) != 0;
}

static std::string normalized(std::string_view text) {
    std::string result(text);
    if (result.size() == 5) {
        result[4] = static_cast<char>(std::tolower(static_cast<unsigned char>(result[4])));
    }
    return result;
}

const LegalMove* findLegal(const Standing& standing, std::string_view text) {
    const std::string wanted = normalized(text);
    const auto found =
        std::ranges::find_if(standing.legal, [&](const LegalMove& known) { return known.text == wanted; });
    return found != standing.legal.end() ? &*found : nullptr;
}

const LegalMove* findLegal(const Standing& standing, Mossa move) {
    const auto found =
        std::ranges::find_if(standing.legal, [&](const LegalMove& known) { return known.move == move; });
    return found != standing.legal.end() ? &*found : nullptr;
}

std::vector<LegalMove> legalLine(const PvLine& line) {
    Scacchiera* const root = board;
    const u32 nodes = SearchInfo.nodes;
    const i32 count = std::min(line.count, static_cast<i32>(line.argmove.size()));
    std::vector<LegalMove> moves;
    for (i32 i = 0; i < count; ++i) {
        const Standing standing = standingHere();
        // By its text: a word that an earlier line left may name another man on the same squares.
        const LegalMove* const legal =
            findLegal(standing, moveTextOf(line.argmove[static_cast<u32>(i)], *board));
        if (legal == nullptr) {
            break;
        }
        moves.push_back(*legal);
        makeMove(legal->move);
    }
    board = root;
    SearchInfo.nodes = nodes;
    return moves;
}

std::optional<i32> mateMoves(i32 score) {
    if (score >= lowestMateScore) {
        return (mateScore + 1 - score) / 2;
    }
    if (score <= -lowestMateScore) {
        return (mateScore + score) / 2;
    }
    return {};
}

// ---- reasons --------------------------------------------------------------------------------------------------

static i32 realSquare(char file, char rank) {
    return file - 'a' + 8 * (rank - '1');
}

static const char* nameOf(char letter) {
    switch (std::tolower(static_cast<unsigned char>(letter))) {
        case 'p':
            return "pawn";
        case 'n':
            return "knight";
        case 'b':
            return "bishop";
        case 'r':
            return "rook";
        case 'q':
            return "queen";
        default:
            return "king";
    }
}

std::string menOf(const Scacchiera& position) {
    const bool black = blackToMove(position);
    std::string men(64, ' ');
    for (i32 square = 0; square < 64; ++square) {
        const char letter = " pnbrqk"[pieceCode(position, square) % 7];
        const bool own = (position.side >> square & 1) != 0;
        const bool white = own != black;
        men[static_cast<u32>(black ? square ^ 56 : square)] =
            white ? static_cast<char>(std::toupper(static_cast<unsigned char>(letter))) : letter;
    }
    return men;
}

static bool contains(const std::vector<std::string>& texts, const std::string& text) {
    return std::ranges::find(texts, text) != texts.end();
}

static bool isWhite(char man) {
    return std::isupper(static_cast<unsigned char>(man)) != 0;
}

// The two squares hold what a move wants; what else is wrong with it?
static std::string whyManMayNot(const Standing& standing, const std::string& text, char man) {
    if (contains(standing.selfCheck, text)) {
        return standing.inCheck ? "in check" : "leaves the king in check";
    }
    if (findLegal(standing, text + "q") != nullptr) {
        return "the promotion piece is missing";
    }
    if (text.size() == 5 && findLegal(standing, text.substr(0, 4)) != nullptr) {
        return "this move does not promote";
    }
    if (nameOf(man) == nameOf('k') && text[1] == text[3] && std::abs(text[0] - text[2]) == 2) {
        return "castling is not possible";
    }
    return std::string("the ") + nameOf(man) + " does not move so";
}

std::string whyIllegal(const Standing& standing, std::string_view given) {
    if (given == "0000" || given == "@@@@") {
        return "a pass is not allowed";
    }
    if (!looksLikeMove(given)) {
        return "not a move";
    }
    const std::string text = normalized(given);
    const std::string men = menOf(standing.record);
    const char man = men[static_cast<u32>(realSquare(text[0], text[1]))];
    const char victim = men[static_cast<u32>(realSquare(text[2], text[3]))];
    const bool white = !blackToMove(standing.record);
    if (man == ' ') {
        return "no man on " + text.substr(0, 2);
    }
    if (isWhite(man) != white) {
        return std::string("it is ") + (white ? "White" : "Black") + "'s move";
    }
    if (victim != ' ' && isWhite(victim) == white) {
        return "own man on " + text.substr(2, 2);
    }
    return whyManMayNot(standing, text, man);
}
