// Positions by chance, the same in every run: from random games, and by throwing men on a board.
#pragma once

#include "board/board.h"
#include "board/tables.h"
#include "eval_support.h"
#include "frontend/session.h"

#include <array>

struct RandomNumbers {
    u64 state;

    u64 next() {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state;
    }
    /// 0 to limit - 1.
    i32 below(i32 limit) { return static_cast<i32>(next() % static_cast<u64>(limit)); }
};

/// What may stand on a thrown board.
struct ThrowRules {
    i32 menAtMost;
    bool anyKings;       // none or several of a side; else one each
    bool pawnsAnywhere;  // ranks 1 and 8 too
    i32 queensInTen;     // of ten other men
};

constexpr ThrowRules ordinaryMen = {32, false, false, 2};
constexpr ThrowRules fewMen = {8, false, false, 2};
constexpr ThrowRules manyQueens = {40, false, false, 8};
constexpr ThrowRules noQueens = {28, false, false, 0};
constexpr ThrowRules wildMen = {64, true, true, 3};

inline void putMan(Scacchiera& b, i32 square, i32 code, bool own) {
    const TBB bit = squareBit(square);
    b.side |= own ? bit : 0;
    b.pbq |= (code & 1) != 0 ? bit : 0;
    b.nbk |= (code & 2) != 0 ? bit : 0;
    b.rqk |= (code & 4) != 0 ? bit : 0;
}

inline i32 emptySquare(RandomNumbers& random, const Scacchiera& b) {
    i32 square = random.below(64);
    while ((occupied(b) >> square & 1) != 0) {
        square = (square + 1) % 64;
    }
    return square;
}

inline i32 throwCode(RandomNumbers& random, const ThrowRules& rules, i32 square) {
    const bool pawnFits = rules.pawnsAnywhere || (square >= 8 && square < 56);
    if (pawnFits && random.below(2) == 0) {
        return PAWN;
    }
    if (rules.anyKings && random.below(16) == 0) {
        return KING;
    }
    return random.below(10) < rules.queensInTen ? QUEEN : KNIGHT + random.below(3);
}

/// Puts a thrown board at `board` (record 0), either side to move, with its true psqScore.
inline void throwPosition(RandomNumbers& random, const ThrowRules& rules) {
    newGame();
    Scacchiera b{};
    b.epFile = noEpFile;
    b.stateFlags = random.below(2) == 0 ? blackToMoveFlag : u8{0};
    if (!rules.anyKings) {
        putMan(b, emptySquare(random, b), KING, true);
        putMan(b, emptySquare(random, b), KING, false);
    }
    const i32 men = random.below(rules.menAtMost - 1);
    for (i32 i = 0; i < men; ++i) {
        const i32 square = emptySquare(random, b);
        putMan(b, square, throwCode(random, rules, square), random.below(2) == 0);
    }
    *board = b;
    board->psqScore = easyVal();
}

inline void putIfFree(Scacchiera& b, TBB square, i32 code, bool own) {
    if (square != 0 && (occupied(b) & square) == 0) {
        putMan(b, lowestBit(square), code, own);
    }
}

/// Puts at `board` a king with a square near it under attack from all sides: up to two pawns, a king, sliders on all
/// lines and knights, so that the square often has eight attackers and more.
inline void throwSiege(RandomNumbers& random) {
    using geometry::step;
    newGame();
    Scacchiera b{};
    b.epFile = noEpFile;
    b.stateFlags = random.below(2) == 0 ? blackToMoveFlag : u8{0};
    const i32 king = random.below(64);
    putMan(b, king, KING, true);
    if (random.below(3) == 0) {
        putMan(b, emptySquare(random, b), KING, true);
    }
    const i32 file = king % 8 - 1 + random.below(3);
    const i32 rank = king / 8 - 1 + random.below(4);
    const i32 target = (rank & 7) * 8 + (file & 7);
    for (const i32 side : {-1, 1}) {
        putIfFree(b, random.below(5) == 0 ? 0 : step(target, side, 1), PAWN, false);
    }
    putIfFree(b, step(target, random.below(3) - 1, random.below(3) - 1), KING, false);
    for (i32 line = 0; line < 9; ++line) {
        const i32 distance = 1 + random.below(3);
        const bool straight = line % 2 != 0;
        const i32 code = random.below(3) == 0 ? QUEEN : straight ? ROOK : BISHOP;
        const TBB square = step(target, (line % 3 - 1) * distance, (line / 3 - 1) * distance);
        putIfFree(b, random.below(6) == 0 || line == 4 ? 0 : square, code, false);
    }
    for (i32 jump = 0; jump < random.below(6); ++jump) {
        TBB squares = KnightAttacks[static_cast<u32>(target)];
        for (i32 skip = random.below(popCount(squares)); skip > 0; --skip) {
            (void)popLowest(squares);
        }
        putIfFree(b, squares, KNIGHT, false);
    }
    if (random.below(2) == 0) {
        flipBoard(b);
    }
    *board = b;
    board->psqScore = easyVal();
}

/// Plays a random legal move on the position at `board`; false if there is none.
inline bool playRandomMove(RandomNumbers& random) {
    static MoveArray moves;
    i32 count = 0;
    legalMoves(moves, count);
    if (count == 0) {
        return false;
    }
    makeMove(moves[static_cast<u32>(random.below(count))]);
    return true;
}

/// Calls visit() at each of `wanted` positions of random games from the start position, of up to 150 plies each.
template <typename Visit>
void visitRandomGames(RandomNumbers& random, i32 wanted, Visit visit) {
    i32 visited = 0;
    while (visited < wanted && !testing::Test::HasFailure()) {
        newGame();
        board->psqScore = 0;
        for (i32 ply = 0;
             ply < 150 && visited < wanted && !testing::Test::HasFailure() && playRandomMove(random); ++ply) {
            visit();
            ++visited;
        }
    }
}

/// Calls visit() at `each` thrown boards of every kind.
template <typename Visit>
void visitThrownBoards(RandomNumbers& random, i32 each, Visit visit) {
    for (const ThrowRules& rules : {ordinaryMen, fewMen, manyQueens, noQueens, wildMen}) {
        for (i32 i = 0; i < each && !testing::Test::HasFailure(); ++i) {
            throwPosition(random, rules);
            visit();
        }
    }
}

/// The men as four words, for a failure's message.
inline std::string recordText(const Scacchiera& b) {
    std::array<char, 120> text{};
    std::snprintf(text.data(), text.size(), "side %llx pbq %llx nbk %llx rqk %llx flags %d",
                  static_cast<unsigned long long>(b.side), static_cast<unsigned long long>(b.pbq),
                  static_cast<unsigned long long>(b.nbk), static_cast<unsigned long long>(b.rqk),
                  b.stateFlags);
    return text.data();
}
