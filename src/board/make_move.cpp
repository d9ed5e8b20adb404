// Playing single moves, the null move, and the key from scratch. The rules of a move are in node_moves.h.
#include "board/board.h"
#include "board/node_moves.h"

constinit std::array<Scacchiera, gameRecordsMax + searchRecordsMax + 64> boardStack{};
constinit Scacchiera* board = boardStack.data();

[[nodiscard]] static constexpr bool isMoveKind(i32 kind) {
    switch (kind) {
        case MOVE_PAWN:
        case MOVE_KNIGHT:
        case MOVE_BISHOP:
        case MOVE_ROOK:
        case MOVE_QUEEN:
        case MOVE_KING:
        case CAPT_PAWN:
        case CAPT_KNIGHT:
        case CAPT_BISHOP:
        case CAPT_ROOK:
        case CAPT_QUEEN:
        case CAPT_KING:
        case PROMO:
        case CASTLE_SHORT:
        case PROMO_CAPT:
        case CASTLE_LONG:
        case EN_PASSANT:
            return true;
        default:
            return false;
    }
}

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

void makeMove(Mossa move) {
    assert(board + 1 < boardStack.data() + boardStack.size());
    ++SearchInfo.nodes;
    if (!isMoveKind(moveKind(move))) [[unlikely]] {
        copyRecord(move, true);
        return;
    }
    node::writeRecord<MakeDepth::full>(nodeMoves(), node::placementAfter(*board, partsOf(move)),
                                       partsOf(move));
}

void makeMoveLight(Mossa move) {
    assert(board + 1 < boardStack.data() + boardStack.size());
    ++SearchInfo.nodes;
    if (!isMoveKind(moveKind(move))) [[unlikely]] {
        copyRecord(move, false);
        return;
    }
    node::writeRecord<MakeDepth::light>(NodeMoves{}, node::placementAfter(*board, partsOf(move)),
                                        partsOf(move));
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
