// Terms of knights, bishops, rooks and queens, and of pieces left hanging.
//
// Several rules ask about the men still to come in an upward walk over the own men of the kind, the present one
// included, and not about the present one alone. That is deliberate: such a rule counts once for each man up to the
// highest one it is true for, see stepsMeeting.
#include "eval/internal.h"

#include "board/tables.h"
#include "eval/masks.h"

// In how many steps of an upward walk over `men` the men still to come, the present one included, meet `targets`.
static i32 stepsMeeting(TBB men, TBB targets) {
    const TBB met = men & targets;
    return met == 0 ? 0 : popCount(men & ~TBB{0} >> std::countl_zero(met));
}

// ---- shared by the kinds --------------------------------------------------------------------------------------

constexpr i32 lowMobility = 10;  // centipawns off for a piece with few squares
constexpr i32 outpost = 15;      // centipawns; deliberate: rooks have it too

// A piece shut in: where it stands, and the enemy pawns that do it.
struct Trap {
    TBB square;
    TBB enemyPawns;  // any of these
};

template <std::size_t Count>
static TBB trapSquares(const std::array<Trap, Count>& traps, TBB enemyPawns) {
    TBB set = 0;
    for (const Trap& trap : traps) {
        set |= (trap.enemyPawns & enemyPawns) != 0 ? trap.square : 0;
    }
    return set;
}

// An attacker's set goes to the union of its kind and, if it reaches there, to the count around the enemy's king.
static void noteAttacks(Pass& pass, TBB& ofKind, TBB attacked) {
    ofKind |= attacked;
    pass.zoneAttackers += (attacked & pass.enemyKingZone) != 0 ? 1 : 0;
}

// ---- knights --------------------------------------------------------------------------------------------------

constexpr i32 trappedKnight = 20;      // centipawns off
constexpr i32 superfluousKnight = 10;  // centipawns off
constexpr i32 knightFewSquares = 3;

constexpr std::array<Trap, 4> knightTraps = {{
    {squares("a7"), squares("a6", "b7")},
    {squares("a8"), squares("a7", "c7")},
    {squares("h7"), squares("h6", "g7")},
    {squares("h8"), squares("f7", "h7")},
}};
constexpr TBB knightTrapSquares = squares("a7", "a8", "h7", "h8");

// Centipawns a knight by number of own pawns: knights like a full board.
constexpr std::array<i32, 9> knightPawnAdjust = {-20, -16, -12, -8, -4, 0, 4, 8, 12};

i32 knightTerms(Pass& pass) {
    const TBB men = pass.ownKnights;
    i32 score = popCount(men) * knightPawnAdjust[pass.pawnSets.countIndex] +
                outpost * stepsMeeting(men, pass.pawnSets.outposts);
    if ((men & knightTrapSquares) != 0) {
        score -= trappedKnight * stepsMeeting(men, trapSquares(knightTraps, pass.enemyPawns));
    }
    for (TBB rest = men; rest != 0; rest &= rest - 1) {
        const TBB attacked = KnightAttacks[static_cast<u32>(lowestBit(rest))];
        score -= popCount(attacked & ~pass.own) <= knightFewSquares ? lowMobility : 0;
        score -= (attacked & rest) != 0 ? superfluousKnight : 0;
        noteAttacks(pass, pass.attacks.byMinor, attacked);
    }
    return score;
}

// ---- bishops --------------------------------------------------------------------------------------------------

constexpr i32 trappedBishop = 100;    // centipawns off
constexpr i32 openLongDiagonal = 10;  // centipawns
constexpr i32 bishopPair = 30;        // centipawns; deliberate: nothing looks at their colours
constexpr i32 bishopFewSquares = 5;
constexpr i32 pawnForLoneBishop = 3;  // centipawns a pawn off the bishop's colour, off for one on it

constexpr std::array<Trap, 2> bishopTraps = {{
    {squares("a7"), squares("b6")},
    {squares("h7"), squares("g6")},
}};
constexpr TBB bishopTrapSquares = squares("a7", "h7");

constexpr TBB longDiagonal = 0x8040201008040201;      // a1 to h8
constexpr TBB longAntiDiagonal = 0x0102040810204080;  // h1 to a8
constexpr TBB darkSquares = 0xAA55AA55AA55AA55;       // those of a1's colour

// Deliberate: the long diagonal is asked of the bishops still to come, the pawns of the present bishop's own line.
static i32 longDiagonalTerm(TBB rest, u32 square, TBB allPawns) {
    i32 score = 0;
    score += (rest & longAntiDiagonal) != 0 && (antiDiagonalThrough[square] & allPawns) == 0
                 ? openLongDiagonal
                 : 0;
    score += (rest & longDiagonal) != 0 && (diagonalThrough[square] & allPawns) == 0 ? openLongDiagonal : 0;
    return score;
}

static i32 loneBishopTerm(TBB bishop, TBB ownPawns) {
    const TBB itsColour = (bishop & darkSquares) != 0 ? darkSquares : ~darkSquares;
    return pawnForLoneBishop * (popCount(ownPawns & ~itsColour) - popCount(ownPawns & itsColour));
}

// Deliberate: three or more bishops get neither term.
static i32 bishopCountTerm(const Pass& pass) {
    switch (popCount(pass.ownBishops)) {
        case 1:
            return loneBishopTerm(pass.ownBishops, pass.ownPawns);
        case 2:
            return bishopPair;
        default:
            return 0;
    }
}

i32 bishopTerms(Pass& pass) {
    const TBB men = pass.ownBishops;
    i32 score = bishopCountTerm(pass) + outpost * stepsMeeting(men, pass.pawnSets.outposts);
    if ((men & bishopTrapSquares) != 0) {
        score -= trappedBishop * stepsMeeting(men, trapSquares(bishopTraps, pass.enemyPawns));
    }
    for (TBB rest = men; rest != 0; rest &= rest - 1) {
        const i32 square = lowestBit(rest);
        const TBB attacked = bishopAttacks(square, pass.occ);
        score -= popCount(attacked) <= bishopFewSquares ? lowMobility : 0;
        score += longDiagonalTerm(rest, static_cast<u32>(square), pass.allPawns);
        noteAttacks(pass, pass.attacks.byMinor, attacked);
    }
    return score;
}

// ---- rooks ----------------------------------------------------------------------------------------------------

constexpr i32 rookFewSquares = 7;
constexpr i32 rookOpenFile = 10;       // centipawns
constexpr i32 rookHalfOpenFile = 5;    // centipawns
constexpr i32 rookOnSeventh = 20;      // centipawns
constexpr i32 rookShutInByKing = 30;   // centipawns off
constexpr i32 rookAndPassedPawn = 15;  // centipawns a pawn, for a rook behind it, off for one in front
constexpr TBB rank7 = rank8 >> 8;

// Centipawns a rook by number of own pawns: rooks like an empty board.
constexpr std::array<i32, 9> rookPawnAdjust = {15, 12, 9, 6, 3, 0, -3, -6, -9};

// The files a rook looks at by its own file. Deliberate: the mask of its file is cut to 32 bits and sign-extended, so
// file h takes in ranks 5 to 8 of every file.
constexpr std::array<u32, 8> rookFiles = [] {
    std::array<u32, 8> table{};
    for (u32 file = 0; file < 8; ++file) {
        table[file] =
            filesOf(static_cast<TBB>(static_cast<i64>(static_cast<i32>(static_cast<u32>(fileMask[file])))));
    }
    return table;
}();
static_assert(rookFiles[0] == 0x01 && rookFiles[6] == 0x40 && rookFiles[7] == 0xFF);

// Where the own king shuts a rook in.
static TBB shutInSquares(i32 king) {
    const TBB kingBit = king == noSquare ? 0 : squareBit(king);
    if ((kingBit & squares("f1", "g1")) != 0) {
        return squares("g1", "h1", "h2");
    }
    return (kingBit & squares("b1", "c1")) != 0 ? squares("a1", "b1", "a2") : 0;
}

// Open and half-open files, once for each rook.
static i32 rookFileTerm(const Pass& pass) {
    const u32 open = ~pass.pawnSets.filesWithPawns & 0xFF;
    const u32 halfOpen = pass.pawnSets.halfOpenFiles;
    i32 score = 0;
    for (TBB rest = pass.ownRooks; rest != 0; rest &= rest - 1) {
        const u32 files = rookFiles[static_cast<u32>(fileOf(lowestBit(rest)))];
        score += (files & open) != 0 ? rookOpenFile : 0;
        score += (files & halfOpen) != 0 ? rookHalfOpenFile : 0;
    }
    return score;
}

static i32 rookBehindPassedPawnTerm(const Pass& pass) {
    i32 score = 0;
    for (TBB passed = pass.passedPawns; passed != 0; passed &= passed - 1) {
        const i32 pawn = lowestBit(passed);
        const TBB onFile = pass.ownRooks & fileMask[static_cast<u32>(fileOf(pawn))];
        const TBB below = squareBit(pawn) - 1;
        const TBB above = ~below & ~squareBit(pawn);
        score += rookAndPassedPawn * (popCount(onFile & below) - popCount(onFile & above));
    }
    return score;
}

static i32 rookMobilityTerm(Pass& pass) {
    i32 score = 0;
    for (TBB rest = pass.ownRooks; rest != 0; rest &= rest - 1) {
        const TBB attacked = rookAttacks(lowestBit(rest), pass.occ);
        score -= popCount(attacked) <= rookFewSquares ? lowMobility : 0;
        noteAttacks(pass, pass.attacks.byRook, attacked);
    }
    return score;
}

i32 rookTerms(Pass& pass) {
    const TBB men = pass.ownRooks;
    if (men == 0) {
        return 0;
    }
    i32 score = popCount(men) * rookPawnAdjust[pass.pawnSets.countIndex] +
                outpost * stepsMeeting(men, pass.pawnSets.outposts) + rookMobilityTerm(pass);
    if (pass.allPawns == 0) {
        return score;  // deliberate: without any pawn a rook gets nothing more
    }
    score += rookFileTerm(pass) + rookBehindPassedPawnTerm(pass);
    score -= rookShutInByKing * popCount(men & shutInSquares(pass.ownKing));
    if (pass.enemyKing != noSquare && rankOf(pass.enemyKing) == 7) {
        score += rookOnSeventh * popCount(men & rank7);
    }
    return score;
}

// ---- queens ---------------------------------------------------------------------------------------------------

constexpr i32 queenFewSquares = 7;

i32 queenTerms(Pass& pass) {
    i32 score = 0;
    for (TBB rest = pass.ownQueens; rest != 0; rest &= rest - 1) {
        const TBB attacked = queenAttacks(lowestBit(rest), pass.occ);
        score -= popCount(attacked) <= queenFewSquares ? lowMobility : 0;
        noteAttacks(pass, pass.attacks.byQueen, attacked);
    }
    return score;
}

// ---- hanging pieces -------------------------------------------------------------------------------------------

// Centipawns off. Deliberate: rook and queen pay less than the minor pieces.
constexpr i32 hangingMinor = 20;
constexpr i32 hangingMajor = 10;

i32 hangingTerms(const Pass& pass, const Pass& enemy) {
    const TBB hanging = byteSwap(attackedByAny(enemy.attacks)) & ~attackedByAny(pass.attacks);
    return -hangingMinor * popCount(hanging & (pass.ownKnights | pass.ownBishops)) -
           hangingMajor * popCount(hanging & (pass.ownRooks | pass.ownQueens));
}
