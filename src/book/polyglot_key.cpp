// The key under which a book holds a position, worked out from the men: a scheme of its own, apart from hashKey.
#include "book/book.h"

#include "board/board.h"
#include "hash/random64.h"

// Where the kinds of numbers begin in Random64.
constexpr u32 pieceNumbers = 0;
constexpr u32 castlingNumbers = 768;  // White short, White long, Black short, Black long
constexpr u32 epNumbers = 772;
constexpr u32 turnNumber = 780;

constexpr TBB rank6FilesBToH = 0xFE0000000000;
constexpr TBB rank6FilesAToG = 0x7F0000000000;

// `real` is in White's frame.
static u64 placementTerm(const Scacchiera& real) {
    u64 term = 0;
    for (TBB rest = occupied(real); rest != 0;) {
        const i32 square = popLowest(rest);
        const i32 code = pieceCode(real, square);
        if (code > KING) {
            continue;  // impossible castling can leave such a man; the format has no number for it
        }
        const i32 white = static_cast<i32>(real.side >> square & 1);
        const i32 piece = 2 * (code - PAWN) + white;
        term ^= Random64[pieceNumbers + static_cast<u32>(64 * piece + square)];
    }
    return term;
}

// `real` is in White's frame.
static u64 castlingTerm(const Scacchiera& real) {
    constexpr std::array<CastleRight, 4> order = {OWN_SHORT, OWN_LONG, OPPONENT_SHORT, OPPONENT_LONG};
    u64 term = 0;
    for (u32 i = 0; i < order.size(); ++i) {
        term ^= (real.castleRights & order[i]) != 0 ? Random64[castlingNumbers + i] : 0;
    }
    return term;
}

// Deliberate: asks for a pawn on the square that the push passed over, which is empty after a real push. So a position
// reached by play never has the term, and books must be written with these keys.
static u64 epTerm(const Scacchiera& own) {
    if (own.epFile >= noEpFile) {
        return 0;
    }
    const TBB target = squareBit(40 + own.epFile);
    const TBB attacked = (own.side << 9 & rank6FilesBToH) | (own.side << 7 & rank6FilesAToG);
    return (target & attacked & pawns(own)) != 0 ? Random64[epNumbers + own.epFile] : 0;
}

u64 polyglotKey() {
    Scacchiera real = *board;
    if (blackToMove(real)) {
        flipBoard(real);
    }
    const u64 turnTerm = blackToMove(*board) ? 0 : Random64[turnNumber];
    return placementTerm(real) ^ castlingTerm(real) ^ epTerm(*board) ^ turnTerm;
}
