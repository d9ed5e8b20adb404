// Moves that were found for another position: key and score take what stands on the squares, whatever the kind says.
// The expected values come from the formulas written out by kind, plainly and for every kind alike.
#include "board_support.h"

#include "board/tables.h"

#include <random>

namespace {

struct Men {
    i32 moved;
    i32 captured;
};

}  // namespace

static i32 plainKingTerm(i32 men, i32 square) {
    return square < 0 ? 0 : (psqTable[6][square] * men + psqTable[7][square] * (32 - men)) >> 5;
}

static i32 squareOfKing(TBB set) {
    return set == 0 ? -1 : std::countr_zero(set);
}

// What the mover gains. `after` is the new record, which is the opponent's view.
static i32 plainGain(Mossa move, const Men& men, i32 n, const Scacchiera& after) {
    const auto& p = psqTable;
    const i32 from = moveFrom(move);
    const i32 to = moveTo(move);
    const i32 promo = movePromo(move);
    const i32 own = squareOfKing(byteSwap(kings(after) & ~after.side));
    const i32 opp = squareOfKing(kings(after) & after.side);
    const i32 enemyTerms = plainKingTerm(n, opp) - plainKingTerm(n - 1, opp);
    const i32 bothTerms = plainKingTerm(n - 1, own) - plainKingTerm(n, own) + enemyTerms;
    const i32 victim = pieceValue[men.captured] + p[men.captured][to ^ 56];
    const i32 step = p[men.moved][to] - p[men.moved][from];
    const i32 promotion = pieceValue[promo] + p[promo][to] - p[PAWN][from] - 100;
    switch (moveKind(move)) {
        case MOVE_KING:
            return plainKingTerm(n, to) - plainKingTerm(n, from);
        case CAPT_KING:
            return plainKingTerm(n - 1, to) - plainKingTerm(n, from) + victim + enemyTerms;
        case PROMO:
            return promotion;
        case PROMO_CAPT:
            return promotion + victim + bothTerms;
        case EN_PASSANT:
            return p[PAWN][to] - p[PAWN][from] + 100 + p[PAWN][(to - 8) ^ 56] + bothTerms;
        case CASTLE_SHORT:
            return plainKingTerm(n, 6) - plainKingTerm(n, 4);
        case CASTLE_LONG:
            return plainKingTerm(n, 2) - plainKingTerm(n, 4);
        default:
            return moveKind(move) < 8 ? step : step + victim + bothTerms;
    }
}

static u64 plainKey(Mossa move, const Men& men, const Scacchiera& before, const Scacchiera& after) {
    const i32 own = blackToMove(after) ? 8 : 0;
    const i32 enemy = own ^ 8;
    const i32 from = moveFrom(move);
    const i32 to = moveTo(move);
    const i32 landing = movePromo(move) != 0 ? movePromo(move) : men.moved;
    const auto& piece = zobrist.piece;
    u64 key = before.hashKey ^ piece[own + men.moved][from] ^ piece[own + landing][to];
    if (moveKind(move) == CASTLE_SHORT) {
        key ^= piece[own + ROOK][7] ^ piece[own + ROOK][5];
    }
    if (moveKind(move) == CASTLE_LONG) {
        key ^= piece[own + ROOK][0] ^ piece[own + ROOK][3];
    }
    if (men.captured != 0) {
        key ^= piece[enemy + men.captured][to ^ 56];
    }
    if (moveKind(move) == EN_PASSANT) {
        key ^= piece[enemy + PAWN][(to - 8) ^ 56];
    }
    return key ^ zobrist.castle[before.castleRights] ^ zobrist.castle[after.castleRights] ^
           zobrist.ep[before.epFile] ^ zobrist.ep[after.epFile] ^ zobrist.side;
}

static void expectPlainRecord(Mossa move) {
    const Scacchiera before = *board;
    const Men men{pieceCode(before, moveFrom(move)), pieceCode(before, moveTo(move))};
    makeMove(move);
    const i32 n = std::popcount(occupied(before));
    EXPECT_EQ(board->psqScore, wrap16(-(before.psqScore + plainGain(move, men, n, *board))));
    EXPECT_EQ(board->hashKey, plainKey(move, men, before, *board));
    --board;
}

static const char* const positions[] = {
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 b - - 0 1",
    "4k3/8/8/8/8/8/8/4K3 w - - 0 1",
};
constexpr MoveKind kinds[] = {MOVE_PAWN, MOVE_KNIGHT, MOVE_BISHOP,  MOVE_ROOK,   MOVE_QUEEN, MOVE_KING,
                              CAPT_PAWN, CAPT_KNIGHT, CAPT_BISHOP,  CAPT_ROOK,   CAPT_QUEEN, CAPT_KING,
                              PROMO,     PROMO_CAPT,  CASTLE_SHORT, CASTLE_LONG, EN_PASSANT};

// A move of this kind on squares that the kind can have, whatever stands there.
static Mossa randomMove(MoveKind kind, std::mt19937& random) {
    const i32 from = static_cast<i32>(random() % 64);
    const i32 to = static_cast<i32>(random() % 64);
    switch (kind) {
        case PROMO:
        case PROMO_CAPT:
            return makeMossa(kind, 48 + from % 8, 56 + to % 8, KNIGHT + static_cast<i32>(random() % 4));
        case CASTLE_SHORT:
            return makeMossa(kind, 4, 6);
        case CASTLE_LONG:
            return makeMossa(kind, 4, 2);
        case EN_PASSANT:
            return makeMossa(kind, 32 + from % 8, 40 + to % 8);
        default:
            return makeMossa(kind, from, to);
    }
}

TEST(StrayMove, KeyAndScoreTakeWhatStandsOnTheSquares) {
    std::mt19937 random(1);
    for (const char* fen : positions) {
        setUpPosition(fen);
        board->hashKey = computeKey();
        board->psqScore = easyVal();
        for (const MoveKind kind : kinds) {
            for (i32 round = 0; round < 200; ++round) {
                const Mossa move = randomMove(kind, random);
                SCOPED_TRACE(std::string(fen) + " " + std::to_string(move));
                ASSERT_NO_FATAL_FAILURE(expectPlainRecord(move));
            }
        }
    }
}

TEST(StrayMove, AQuietKindThatMeetsAManTakesItOutOfTheKey) {
    setUpPosition("4k3/8/5n2/8/8/8/8/4K1N1 w - - 0 1");
    board->hashKey = computeKey();
    const u64 before = board->hashKey;
    makeMove(makeMossa(MOVE_KNIGHT, 6, 45));
    EXPECT_EQ(board->hashKey, before ^ zobrist.piece[8 + KNIGHT][6] ^ zobrist.piece[8 + KNIGHT][45] ^
                                  zobrist.piece[KNIGHT][45 ^ 56] ^ zobrist.side);
}

TEST(StrayMove, AnEmptyBoardIsNoHarm) {
    for (const MoveKind kind : kinds) {
        setUpPosition("8/8/8/8/8/8/8/8 w - - 0 1");
        makeMove(makeMossa(kind, 12, 28, kind == PROMO ? QUEEN : 0));
        EXPECT_EQ(board, boardStack.data() + 1);
    }
}
