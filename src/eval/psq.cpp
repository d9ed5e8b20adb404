// Piece-square tables, and material and placement from scratch. Make-move keeps the same sum in `psqScore`; this file
// is what that sum must equal.
#include "eval/psq.h"

#include "board/board.h"
#include "eval/internal.h"

using SquareValues = std::array<i32, 64>;

// Centipawns, owner's frame, printed rank 8 on top, files a to h. Hand-set. The same table serves both colours.

constexpr SquareValues noPlacement{};

// Deliberate: files f to h are weaker than a to c on ranks 3 to 6, so the king's side is pushed less.
constexpr SquareValues pawnPlacement = rank8OnTop<i32>({
    0,  0,  0,  0,  0,  0,  0,  0,   // 8
    30, 30, 30, 30, 30, 30, 30, 30,  // 7
    25, 25, 25, 25, 25, 15, 15, 15,  // 6
    10, 10, 10, 16, 16, 6,  6,  6,   // 5
    6,  6,  6,  12, 12, 2,  2,  2,   // 4
    3,  3,  3,  4,  4,  1,  1,  1,   // 3
    0,  0,  0,  -2, -2, 0,  0,  0,   // 2
    0,  0,  0,  0,  0,  0,  0,  0,   // 1
});

constexpr SquareValues knightPlacement = rank8OnTop<i32>({
    -20, -5, 0,  0,  0,  0,  -5, -20,  // 8
    -5,  0,  10, 10, 10, 10, 0,  -5,   // 7
    0,   10, 15, 15, 15, 15, 10, 0,    // 6
    0,   10, 15, 20, 20, 15, 10, 0,    // 5
    0,   10, 15, 20, 20, 15, 10, 0,    // 4
    0,   10, 15, 15, 15, 15, 10, 0,    // 3
    -5,  0,  10, 10, 10, 10, 0,  -5,   // 2
    -20, -5, 0,  0,  0,  0,  -5, -20,  // 1
});

constexpr SquareValues bishopPlacement = rank8OnTop<i32>({
    -5, -5, 0,  0,  0,  0,  -5, -5,  // 8
    -5, 0,  10, 10, 10, 10, 0,  -5,  // 7
    -5, 10, 15, 15, 15, 15, 10, -5,  // 6
    -5, 10, 15, 20, 20, 15, 10, -5,  // 5
    -5, 10, 15, 20, 20, 15, 10, -5,  // 4
    -5, 10, 15, 15, 15, 15, 10, -5,  // 3
    -5, 0,  10, 10, 10, 10, 0,  -5,  // 2
    -5, -5, 0,  0,  0,  0,  -5, -5,  // 1
});

// Deliberate: b1, c1 and g1 cost, f1 does not.
constexpr SquareValues rookPlacement = rank8OnTop<i32>({
    10, 10, 10, 10, 10, 10, 10, 10,  // 8
    10, 10, 10, 10, 10, 10, 10, 10,  // 7
    0,  0,  0,  0,  0,  0,  0,  0,   // 6
    0,  0,  0,  10, 10, 0,  0,  0,   // 5
    0,  0,  0,  10, 10, 0,  0,  0,   // 4
    0,  0,  0,  0,  0,  0,  0,  0,   // 3
    0,  0,  0,  0,  0,  0,  0,  0,   // 2
    0,  -5, -5, 0,  0,  0,  -5, 0,   // 1
});

constexpr SquareValues queenPlacement = rank8OnTop<i32>({
    -4, -4, -4, -4, -4, -4, -4, -4,  // 8
    -4, 0,  0,  0,  0,  0,  0,  -4,  // 7
    -4, 0,  4,  4,  4,  4,  0,  -4,  // 6
    -4, 0,  4,  8,  8,  4,  0,  -4,  // 5
    -4, 0,  4,  8,  8,  4,  0,  -4,  // 4
    -4, 0,  4,  4,  4,  4,  0,  -4,  // 3
    -4, 0,  0,  0,  0,  0,  0,  -4,  // 2
    -4, -4, 0,  4,  0,  0,  -4, -4,  // 1
});

constexpr SquareValues kingOpening = rank8OnTop<i32>({
    -5, -5, -5, -5,  -5, -5,  -5, -5,  // 8
    -5, -5, -5, -5,  -5, -5,  -5, -5,  // 7
    -5, -5, -5, -5,  -5, -5,  -5, -5,  // 6
    -5, -5, -5, -5,  -5, -5,  -5, -5,  // 5
    -5, -5, -5, -5,  -5, -5,  -5, -5,  // 4
    -5, -5, -5, -5,  -5, -5,  -5, -5,  // 3
    -5, -5, -5, -5,  -5, -5,  -5, -5,  // 2
    -5, -5, 20, -10, 0,  -10, 30, -5,  // 1
});

constexpr SquareValues kingEnding = rank8OnTop<i32>({
    0, 0, 0,  0,  0,  0,  0,  0,  // 8
    0, 5, 5,  5,  5,  5,  5,  0,  // 7
    0, 5, 10, 10, 10, 10, 5,  0,  // 6
    0, 5, 10, 15, 15, 10, 5,  0,  // 5
    0, 5, 10, 15, 15, 10, 5,  0,  // 4
    0, 5, 10, 10, 10, 10, 5,  0,  // 3
    0, 5, 5,  5,  5,  5,  5,  0,  // 2
    0, 0, -5, 0,  0,  0,  -5, 0,  // 1
});

extern constexpr std::array<std::array<i32, 64>, 8> psqTable = {
    noPlacement,   pawnPlacement,  knightPlacement, bishopPlacement,
    rookPlacement, queenPlacement, kingOpening,     kingEnding,
};

static consteval std::array<std::array<i16, 64>, 65> termsByMen() {
    std::array<std::array<i16, 64>, 65> terms{};
    for (i32 men = 0; men <= 64; ++men) {
        for (i32 square = 0; square < 64; ++square) {
            terms[men][square] = wrap16(kingTerm(men, psqTable[6][square], psqTable[7][square]));
        }
    }
    return terms;
}

extern constexpr std::array<std::array<i16, 64>, 65> kingTerms = termsByMen();

// ---- from scratch ---------------------------------------------------------------------------------------------

static i32 placedMaterial(TBB men, PieceCode code) {
    i32 sum = 0;
    while (men != 0) {
        sum += pieceValue[code] + psqTable[code][static_cast<u32>(popLowest(men))];
    }
    return sum;
}

// Several kings of a side count as the one on the lowest square, none as no term.
static i32 ownKingTerm(const Scacchiera& b, i32 men) {
    const TBB ownKings = kings(b) & b.side;
    return ownKings == 0 ? 0 : kingTerm(men, lowestBit(ownKings));
}

static i32 ownPsqSum(const Scacchiera& b, i32 men) {
    return placedMaterial(pawns(b) & b.side, PAWN) + placedMaterial(knights(b) & b.side, KNIGHT) +
           placedMaterial(bishops(b) & b.side, BISHOP) + placedMaterial(rooks(b) & b.side, ROOK) +
           placedMaterial(queens(b) & b.side, QUEEN) + ownKingTerm(b, men);
}

i16 easyVal() {
    const i32 men = popCount(occupied(*board));
    Scacchiera view = *board;
    const i32 own = ownPsqSum(view, men);
    flipBoard(view);
    return wrap16(own - ownPsqSum(view, men));
}
