// The rules of plain_rules.h, as plain as can be; made millions of times.
#include "plain_rules.h"

#include <algorithm>
#include <cstdlib>

namespace plain {

namespace {

struct Step {
    i32 file;
    i32 rank;
};

constexpr std::array<Step, 4> straight = {{{1, 0}, {-1, 0}, {0, 1}, {0, -1}}};
constexpr std::array<Step, 4> diagonal = {{{1, 1}, {1, -1}, {-1, 1}, {-1, -1}}};
constexpr std::array<Step, 8> jumps = {
    {{1, 2}, {2, 1}, {-1, 2}, {-2, 1}, {1, -2}, {2, -1}, {-1, -2}, {-2, -1}}};

// The square reached by a step, or noSquare beyond the board's edge.
i32 stepFrom(i32 square, Step step) {
    const i32 file = square % 8 + step.file;
    const i32 rank = square / 8 + step.rank;
    return file < 0 || file > 7 || rank < 0 || rank > 7 ? noSquare : rank * 8 + file;
}

bool isWhite(char man) {
    return man >= 'A' && man <= 'Z';
}
bool isBlack(char man) {
    return man >= 'a' && man <= 'z';
}
constexpr char caseBit = 'a' - 'A';
char kindOf(char man) {
    return static_cast<char>(man & ~caseBit);
}
char ofColour(char kind, bool white) {
    return static_cast<char>(white ? kind & ~caseBit : kind | caseBit);
}

template <std::size_t Count>
bool rayMeets(const Position& p, i32 square, const std::array<Step, Count>& steps, char slider, char queen) {
    for (const Step step : steps) {
        i32 to = stepFrom(square, step);
        while (to != noSquare && p.men[to] == '.') {
            to = stepFrom(to, step);
        }
        if (to != noSquare && (p.men[to] == slider || p.men[to] == queen)) {
            return true;
        }
    }
    return false;
}

template <std::size_t Count>
bool stepMeets(const Position& p, i32 square, const std::array<Step, Count>& steps, char man) {
    return std::any_of(steps.begin(), steps.end(), [&](Step step) {
        const i32 to = stepFrom(square, step);
        return to != noSquare && p.men[to] == man;
    });
}

struct MoveMaker {
    const Position& before;
    std::vector<Successor>& list;
};

void addIfLegal(const MoveMaker& maker, Position after, bool zeroing, bool capture) {
    after.whiteMoves = !maker.before.whiteMoves;
    if (!inCheck(after, maker.before.whiteMoves)) {
        maker.list.push_back({after, zeroing, capture});
    }
}

// Puts `man` from `from` on `to`, whatever stands there.
Position moved(const Position& p, i32 from, i32 to, char man) {
    Position after = p;
    after.men[from] = '.';
    after.men[to] = man;
    after.epSquare = noSquare;
    return after;
}

void addPieceMove(const MoveMaker& maker, i32 from, i32 to) {
    const bool capture = maker.before.men[to] != '.';
    addIfLegal(maker, moved(maker.before, from, to, maker.before.men[from]), capture, capture);
}

bool isOwn(const Position& p, i32 square) {
    return p.whiteMoves ? isWhite(p.men[square]) : isBlack(p.men[square]);
}
bool isEnemy(const Position& p, i32 square) {
    return p.whiteMoves ? isBlack(p.men[square]) : isWhite(p.men[square]);
}

template <std::size_t Count>
void addSteps(const MoveMaker& maker, i32 from, const std::array<Step, Count>& steps, bool slides) {
    for (const Step step : steps) {
        i32 to = stepFrom(from, step);
        while (to != noSquare && !isOwn(maker.before, to)) {
            addPieceMove(maker, from, to);
            if (!slides || maker.before.men[to] != '.') {
                break;
            }
            to = stepFrom(to, step);
        }
    }
}

void addPawnTo(const MoveMaker& maker, i32 from, i32 to, bool capture) {
    const bool white = maker.before.whiteMoves;
    if (to / 8 == 0 || to / 8 == 7) {
        for (const char kind : {'Q', 'R', 'B', 'N'}) {
            addIfLegal(maker, moved(maker.before, from, to, ofColour(kind, white)), true, capture);
        }
        return;
    }
    Position after = moved(maker.before, from, to, ofColour('P', white));
    if (std::abs(to - from) == 16) {
        after.epSquare = (from + to) / 2;
    }
    if (capture && maker.before.men[to] == '.') {
        after.men[white ? to - 8 : to + 8] = '.';
    }
    addIfLegal(maker, after, true, capture);
}

void addPawnMoves(const MoveMaker& maker, i32 from) {
    const Position& p = maker.before;
    const i32 up = p.whiteMoves ? 1 : -1;
    const i32 one = stepFrom(from, {0, up});
    if (one != noSquare && p.men[one] == '.') {
        addPawnTo(maker, from, one, false);
        const i32 two = stepFrom(one, {0, up});
        if (from / 8 == (p.whiteMoves ? 1 : 6) && p.men[two] == '.') {
            addPawnTo(maker, from, two, false);
        }
    }
    for (const i32 file : {-1, 1}) {
        const i32 to = stepFrom(from, {file, up});
        if (to != noSquare && (isEnemy(p, to) || to == p.epSquare)) {
            addPawnTo(maker, from, to, true);
        }
    }
}

void addMovesOf(const MoveMaker& maker, i32 from) {
    switch (kindOf(maker.before.men[from])) {
        case 'K':
            addSteps(maker, from, straight, false);
            addSteps(maker, from, diagonal, false);
            break;
        case 'Q':
            addSteps(maker, from, straight, true);
            addSteps(maker, from, diagonal, true);
            break;
        case 'R':
            addSteps(maker, from, straight, true);
            break;
        case 'B':
            addSteps(maker, from, diagonal, true);
            break;
        case 'N':
            addSteps(maker, from, jumps, false);
            break;
        default:
            addPawnMoves(maker, from);
            break;
    }
}

// A double step that could have been the last move: the squares it passed are empty.
i32 possibleEpSquare(const Position& p) {
    const char pawn = p.whiteMoves ? 'p' : 'P';
    const i32 down = p.whiteMoves ? 8 : -8;  // towards where the pawn came from
    const i32 rank = p.whiteMoves ? 4 : 3;
    for (i32 square = rank * 8; square < rank * 8 + 8; ++square) {
        if (p.men[square] == pawn && p.men[square + down] == '.' && p.men[square + 2 * down] == '.') {
            return square + down;
        }
    }
    return noSquare;
}

// Whether the position before the double step was legal too: then the side to move now was not left in check by others
// than the pawn. Enough for the probes, which take any en passant right as it stands.
void maybeGrantEp(Position& p, std::mt19937_64& random) {
    if (random() % 3 == 0) {
        p.epSquare = possibleEpSquare(p);
    }
}

}  // namespace

Position emptyPosition() {
    Position p{};
    p.men.fill('.');
    p.whiteMoves = true;
    p.epSquare = noSquare;
    return p;
}

bool isAttacked(const Position& p, i32 square, bool byWhite) {
    const auto man = [byWhite](char kind) { return ofColour(kind, byWhite); };
    const i32 down = byWhite ? -1 : 1;
    const std::array<Step, 2> pawnSteps = {{{-1, down}, {1, down}}};
    return rayMeets(p, square, straight, man('R'), man('Q')) ||
           rayMeets(p, square, diagonal, man('B'), man('Q')) || stepMeets(p, square, jumps, man('N')) ||
           stepMeets(p, square, straight, man('K')) || stepMeets(p, square, diagonal, man('K')) ||
           stepMeets(p, square, pawnSteps, man('P'));
}

bool inCheck(const Position& p, bool white) {
    const auto king = std::find(p.men.begin(), p.men.end(), white ? 'K' : 'k');
    return king != p.men.end() && isAttacked(p, static_cast<i32>(king - p.men.begin()), !white);
}

std::vector<Successor> legalSuccessors(const Position& p) {
    std::vector<Successor> list;
    const MoveMaker maker{p, list};
    for (i32 square = 0; square < 64; ++square) {
        if (isOwn(p, square)) {
            addMovesOf(maker, square);
        }
    }
    return list;
}

std::string fenOf(const Position& p, i32 rule50) {
    std::string fen;
    for (i32 rank = 7; rank >= 0; --rank) {
        i32 empty = 0;
        for (i32 file = 0; file < 8; ++file) {
            const char man = p.men[rank * 8 + file];
            if (man == '.') {
                ++empty;
                continue;
            }
            fen += empty != 0 ? std::to_string(empty) : "";
            fen += man;
            empty = 0;
        }
        fen += empty != 0 ? std::to_string(empty) : "";
        fen += rank != 0 ? "/" : "";
    }
    fen += p.whiteMoves ? " w - " : " b - ";
    if (p.epSquare == noSquare) {
        fen += '-';
    } else {
        fen += static_cast<char>('a' + p.epSquare % 8);
        fen += static_cast<char>('1' + p.epSquare / 8);
    }
    return fen + " " + std::to_string(rule50) + " 1";
}

bool isLegal(const Position& p) {
    for (i32 square = 0; square < 64; ++square) {
        if (kindOf(p.men[square]) == 'P' && (square < 8 || square >= 56)) {
            return false;
        }
    }
    return !inCheck(p, !p.whiteMoves);
}

std::string menOfName(std::string_view name) {
    std::string men;
    bool white = true;
    for (const char letter : name) {
        if (letter == 'v') {
            white = false;
        } else {
            men += ofColour(letter, white);
        }
    }
    return men;
}

std::string swappedName(std::string_view name) {
    const std::size_t v = name.find('v');
    return std::string(name.substr(v + 1)) + "v" + std::string(name.substr(0, v));
}

Position randomPosition(std::string_view men, std::mt19937_64& random) {
    for (;;) {
        Position p = emptyPosition();
        for (const char man : men) {
            i32 square = static_cast<i32>(random() % 64);
            while (p.men[square] != '.') {
                square = static_cast<i32>(random() % 64);
            }
            p.men[square] = man;
        }
        p.whiteMoves = random() % 2 == 0;
        if (isLegal(p)) {
            maybeGrantEp(p, random);
            return p;
        }
    }
}

}  // namespace plain
