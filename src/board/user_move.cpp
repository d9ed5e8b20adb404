// Moves that come as text from a person, the protocol or the book. They do not go through the generators: the move is
// built from the man on its square and a set of targets, more loosely than the rules for pawns.
#include "board/board.h"
#include "board/castling.h"
#include "board/generation.h"
#include "frontend/frontend.h"

#include <cstring>

// Where one kind of move may go.
struct Destinations {
    TBB targets;
    i32 kind;
};
using DestinationsByKind = std::array<Destinations, 5>;

// Byte 4 of the text as a piece code; -1 if it is no promotion.
static i32 promotionOf(char letter) {
    switch (letter) {
        case '\0':
        case ' ':
            return 0;
        case 'n':
            return KNIGHT;
        case 'b':
            return BISHOP;
        case 'r':
            return ROOK;
        case 'q':
            return QUEEN;
        default:
            return -1;
    }
}

// Any two bytes give a square: the text has been looked at before, or is trusted.
static i32 squareOf(char file, char rank) {
    return (static_cast<u8>(file) + 8 * static_cast<u8>(rank) - 489) & 63;
}

static DestinationsByKind destinationsOfKing(const Scacchiera& b, i32 from) {
    const generation::CastlingTests castling = generation::castlingTests(b);
    return {{{KingAttacks[from] & ~occupied(b), MOVE_KING},
             {KingAttacks[from] & opponent(b), CAPT_KING},
             {0, 0},
             {castling.shortPasses ? squareBit(shortCastling.kingTo) : 0, CASTLE_SHORT},
             {castling.longPasses ? squareBit(longCastling.kingTo) : 0, CASTLE_LONG}}};
}

static DestinationsByKind destinationsOfPiece(const Scacchiera& b, TBB reach, i32 quietKind) {
    return {{{reach & ~occupied(b), quietKind}, {reach & opponent(b), quietKind | 8}}};
}

// Deliberate: pushes are those of all own pawns, not of the one on `from`; captures run round the board's edge; a
// promotion letter promotes anywhere.
static DestinationsByKind destinationsOfPawn(const Scacchiera& b, i32 from, bool promotes) {
    const TBB empty = ~occupied(b);
    const TBB single = (pawns(b) & b.side) << 8 & empty;
    const TBB pushes = from >> 3 == 1 ? single | (single << 8 & empty) : single;
    const TBB captures = squareBit(from) << 7 | squareBit(from) << 9;
    return {{{pushes, promotes ? PROMO : MOVE_PAWN},
             {captures & opponent(b), promotes ? PROMO_CAPT : CAPT_PAWN},
             {captures & generation::epTarget(b), EN_PASSANT}}};
}

// The destinations of the own man on `from`; all empty if there is none.
static DestinationsByKind destinationsOf(const Scacchiera& b, i32 from, bool promotes) {
    const TBB own = squareBit(from) & b.side;
    const TBB occ = occupied(b);
    if ((kings(b) & own) != 0) {
        return destinationsOfKing(b, from);
    }
    if ((queens(b) & own) != 0) {
        return destinationsOfPiece(b, queenAttacks(from, occ), MOVE_QUEEN);
    }
    if ((rooks(b) & own) != 0) {
        return destinationsOfPiece(b, rookAttacks(from, occ), MOVE_ROOK);
    }
    if ((bishops(b) & own) != 0) {
        return destinationsOfPiece(b, bishopAttacks(from, occ), MOVE_BISHOP);
    }
    if ((knights(b) & own) != 0) {
        return destinationsOfPiece(b, KnightAttacks[from], MOVE_KNIGHT);
    }
    if ((pawns(b) & own) != 0) {
        return destinationsOfPawn(b, from, promotes);
    }
    return {};
}

i32 parseUserMove(const char* text) {
    if (board - boardStack.data() >= gameRecordsMax) {
        return 0;
    }
    char bytes[6] = {};
    std::strncpy(bytes, text, 5);
    const i32 promo = promotionOf(bytes[4]);
    if (promo < 0) {
        return 0;
    }
    const i32 frame = blackToMove(*board) ? 56 : 0;
    const i32 from = squareOf(bytes[0], bytes[1]) ^ frame;
    const i32 to = squareOf(bytes[2], bytes[3]) ^ frame;
    for (const Destinations& way : destinationsOf(*board, from, promo != 0)) {
        if ((way.targets >> to & 1) == 0) {
            continue;
        }
        EngineOptions.lastUserMove = makeMossa(way.kind, from, to, promo);
        makeMove(EngineOptions.lastUserMove);
        if (leftInCheck() != 0) {
            --board;
            return 0;
        }
        return 1;
    }
    return 0;
}
