// Playing single moves, the null move, and the key from scratch. The rules of a move are in make_move.h.
#include "board/make_move.h"

#include "board/board.h"

#include <algorithm>

constinit std::array<Scacchiera, gameRecordsMax + searchRecordsMax + 64> boardStack{};
constinit Scacchiera* board = boardStack.data();

// A value that is no move, such as 0: a plain copy, unflipped. The key takes what stands on the squares as the byte
// values say; the colour is read from the copy, so it is that of the side that did not move.
static void copyRecord(Mossa move, bool withKey) {
    const Scacchiera& old = *board;
    Scacchiera& next = board[1];
    next = old;
    if (withKey) {
        const i32 from = moveFrom(move) & 63;
        const i32 to = moveTo(move) & 63;
        const i32 promo = movePromo(move) & 7;
        const i32 row = blackToMove(old) ? 8 : 0;
        const i32 moved = pieceCode(old, from);
        const i32 captured = pieceCode(old, to);
        next.hashKey ^= zobrist.piece[row + moved][from] ^
                        zobrist.piece[row + (promo != 0 ? promo : moved)][to] ^ zobrist.side;
        if (captured != 0) {
            next.hashKey ^= zobrist.piece[(row ^ 8) + captured][to ^ 56];
        }
    }
    ++board;
}

// Whether the men on the move's squares are those its kind speaks of.
static bool fitsPosition(const MoveParts& move, const MenOfMove& standing) {
    const bool takesTarget = (move.kind & 8) != 0 && move.kind != EN_PASSANT;
    return standing.moved == (move.kind & 7) && (takesTarget || standing.captured == EMPTY);
}

// A move that was found for another position, as the reply of a ponder search may be. Its kind tells which squares
// change, but key and score take what stands there, and the kings as they stand afterwards: deliberate.
static void writeStrayRecord(const MoveParts& move, const MenOfMove& standing) {
    const Placement after = node::placementAfter(*board, move);
    const TBB allKings = after.nbk & after.rqk;
    NodeMoves n = nodeMoves();
    n.men = std::max(n.men, 1);  // a capture on an empty board: there is no term for fewer than no men
    n.captureKings = node::kingTermsOfCapture(n.men, kingSquare(allKings & after.side),
                                              kingSquare(byteSwap(allKings & ~after.side)));
    node::writeRecord<MakeDepth::full>(n, after, move, standing);
}

void makeMove(Mossa move) {
    assert(board + 1 < boardStack.data() + boardStack.size());
    ++SearchInfo.nodes;
    if (!isMoveKind(moveKind(move))) [[unlikely]] {
        copyRecord(move, true);
        return;
    }
    const MoveParts parts = partsOf(move);
    const MenOfMove standing{pieceCode(*board, parts.from), pieceCode(*board, parts.to)};
    if (!fitsPosition(parts, standing)) [[unlikely]] {
        writeStrayRecord(parts, standing);
        return;
    }
    node::writeRecord<MakeDepth::full>(nodeMoves(), node::placementAfter(*board, parts), parts, standing);
}

void makeMoveLight(Mossa move) {
    assert(board + 1 < boardStack.data() + boardStack.size());
    ++SearchInfo.nodes;
    if (!isMoveKind(moveKind(move))) [[unlikely]] {
        copyRecord(move, false);
        return;
    }
    const MoveParts parts = partsOf(move);
    node::writeRecord<MakeDepth::light>(NodeMoves{}, node::placementAfter(*board, parts), parts, MenOfMove{});
}

void makeNullMove() {
    assert(board + 1 < boardStack.data() + boardStack.size());
    ++SearchInfo.nodes;
    const Scacchiera& old = *board;
    Scacchiera& next = board[1];
    next = old;
    flipBoard(next);
    next.epFile = noEpFile;
    next.rule50 = 0;  // deliberate: unlike a quiet move, a pass starts the count anew
    next.stateFlags &= blackToMoveFlag;
    next.hashKey = old.hashKey ^ zobrist.side ^ zobrist.ep[old.epFile] ^ zobrist.ep[noEpFile] ^
                   zobrist.castle[old.castleRights] ^ zobrist.castle[next.castleRights];
    ++board;
}

static u64 keyOfMen(TBB men, i32 row) {
    u64 key = 0;
    while (men != 0) {
        key ^= zobrist.piece[row][popLowest(men)];
    }
    return key;
}

u64 computeKey() {
    Scacchiera b = *board;
    u64 key = 0;
    for (i32 round = 0; round < 2; ++round) {
        const i32 row = blackToMove(b) ? 0 : 8;
        key ^= keyOfMen(pawns(b) & b.side, row + PAWN) ^ keyOfMen(knights(b) & b.side, row + KNIGHT) ^
               keyOfMen(bishops(b) & b.side, row + BISHOP) ^ keyOfMen(rooks(b) & b.side, row + ROOK) ^
               keyOfMen(queens(b) & b.side, row + QUEEN) ^ keyOfMen(kings(b) & b.side, row + KING);
        flipBoard(b);
    }
    return key ^ zobrist.ep[b.epFile] ^ zobrist.castle[b.castleRights] ^ (blackToMove(b) ? 0 : zobrist.side);
}
