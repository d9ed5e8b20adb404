// Making and testing the moves of one node: whatever depends on the position alone is worked out once, in NodeMoves,
// and the rest of a move is a few words in registers and the stores of the new record. The loops of the move-tree
// count and of the search use this; makeMove and makeMoveLight are the same code for a single move.
#pragma once

#include "board/attacks.h"
#include "board/board.h"
#include "board/castling.h"
#include "eval/psq.h"
#include "search/search_info.h"

#include <algorithm>

#ifdef TARVELMON_CHECK_RECORDS
constexpr bool recordsAreChecked = true;
#else
constexpr bool recordsAreChecked = false;
#endif

/// Kinds of make: with key and score, or the men alone.
enum class MakeDepth : u8 { full, light };

/// What all moves of the position at `board` share.
struct NodeMoves {
    TBB occ;       // all men
    TBB checkers;  // as inCheck
    TBB mustTest;  // own men whose moves need the test of the own king: all when in check, else those pinned
    i32 men;       // number of men
    i32 captureKings;  // what a capture changes in both kings' terms, centipawns
    u64 keyBase;       // the key after a move, without its men and with rights unchanged
};

/// A move taken apart. Squares in the mover's frame.
struct MoveParts {
    i32 kind;
    i32 from;
    i32 to;
    i32 promo;
};

/// Piece codes of the two men of a move.
struct MenOfMove {
    i32 moved;
    i32 captured;  // EMPTY without a capture, and for en passant
};

[[nodiscard]] inline MoveParts partsOf(Mossa move) {
    return {moveKind(move), moveFrom(move) & 63, moveTo(move) & 63, movePromo(move) & 7};
}

/// Whether the record at `board`, just made in full by `move`, has the key and the score that its men have. Also true
/// where the record below has others itself (newGame keeps a score), where its board is none of a game (no king, several,
/// damaged by the text that set it up), and where the move does not fit the men: there key and score go their own way.
[[nodiscard]] bool madeRecordIsTrue(const MoveParts& move);

namespace node {

constexpr TBB rank2 = 0x000000000000FF00ULL;
constexpr TBB rank4 = 0x00000000FF000000ULL;

// The rights that go when a man leaves or is taken on a corner.
inline constexpr std::array<u8, 64> cornerRights = [] {
    std::array<u8, 64> rights{};
    rights[longCastling.rookFrom] = OWN_LONG;
    rights[shortCastling.rookFrom] = OWN_SHORT;
    rights[longCastling.rookFrom ^ 56] = OPPONENT_LONG;
    rights[shortCastling.rookFrom ^ 56] = OPPONENT_SHORT;
    return rights;
}();

// kingTerm of a king that may be missing.
[[nodiscard]] inline i32 kingTermOf(i32 men, i32 square) {
    return square == noSquare ? 0 : kingTerms[men][square];
}

// What the kings' terms gain for the mover when the men become one fewer. Squares in their owners' frames.
[[nodiscard]] inline i32 kingTermsOfCapture(i32 men, i32 ownKing, i32 enemyKing) {
    return kingTermOf(men - 1, ownKing) - kingTermOf(men, ownKing) + kingTermOf(men, enemyKing) -
           kingTermOf(men - 1, enemyKing);
}

// The men after a move, in the mover's frame. A `kind` that is no move gives nonsense, but touches no memory.
[[nodiscard, gnu::always_inline]] inline Placement placementAfter(const Scacchiera& b,
                                                                  const MoveParts& move) {
    const i32 kind = move.kind;
    const TBB from = TBB{1} << move.from;
    const TBB to = TBB{1} << move.to;
    const TBB fromTo = from | to;
    Placement p{b.side ^ fromTo, b.pbq, b.nbk, b.rqk};
    switch (kind >> 3) {
        case CAPT_PAWN >> 3:
            p.pbq &= ~to;
            p.nbk &= ~to;
            p.rqk &= ~to;
            [[fallthrough]];
        case MOVE_PAWN >> 3:
            // The moving piece's code picks the boards that change, without a branch on the piece.
            p.pbq ^= fromTo & (TBB{0} - (kind & 1));
            p.nbk ^= fromTo & (TBB{0} - (kind >> 1 & 1));
            p.rqk ^= fromTo & (TBB{0} - (kind >> 2 & 1));
            break;
        case CASTLE_LONG >> 3:
            p.side = b.side ^ (fromTo | rookSquares(longCastling));
            p.nbk ^= fromTo;
            p.rqk ^= fromTo | rookSquares(longCastling);
            break;
        case EN_PASSANT >> 3:
            p.pbq ^= fromTo ^ to >> 8;
            break;
        default:
            if (kind == CASTLE_SHORT) {
                p.side = b.side ^ (fromTo | rookSquares(shortCastling));
                p.nbk ^= fromTo;
                p.rqk ^= fromTo | rookSquares(shortCastling);
                break;
            }
            const i32 promo = move.promo;
            p.pbq = ((p.pbq & ~to) ^ from) | (to & (TBB{0} - (promo & 1)));
            p.nbk = (p.nbk & ~to) | (to & (TBB{0} - (promo >> 1 & 1)));
            p.rqk = (p.rqk & ~to) | (to & (TBB{0} - (promo >> 2 & 1)));
            break;
    }
    return p;
}

// Whether the mover's king is attacked in a placement still in the mover's frame. With several kings it is the one
// that leftInCheck looks at: the lowest of the frame after the flip.
[[nodiscard]] inline bool kingIsAttacked(Placement p) {
    const TBB ownKings = p.nbk & p.rqk & p.side;
    if (ownKings == 0) {
        return false;
    }
    const i32 king = lowestBit(byteSwap(ownKings)) ^ 56;
    return attackersOfKing(p, p.pbq | p.nbk | p.rqk, king) != 0;
}

// Men of both colours that stand alone between the king on `king` and a slider of `attackers`.
[[nodiscard]] inline TBB loneMenBefore(const Scacchiera& b, TBB occ, i32 king, TBB attackers) {
    TBB snipers =
        ((rookAttacks(king, 0) & rooksAndQueens(b)) | (bishopAttacks(king, 0) & bishopsAndQueens(b))) &
        attackers;
    TBB lone = 0;
    while (snipers != 0) {
        const TBB between = Between[king][popLowest(snipers)] & occ;
        if ((between & (between - 1)) == 0) {
            lone |= between;
        }
    }
    return lone;
}

// Whether the kind of move counts a repetition. Deliberate: a quiet bishop move does not look for one and keeps the
// count of the position before.
[[nodiscard]] constexpr bool countsRepetition(i32 kind) {
    return kind != MOVE_BISHOP;
}

// How often the finished record at `board` has stood before, as far back as `rule50` and the stack allow. Rights and
// en passant file are not compared: deliberate. Two plies back the mover's own men always differ.
[[nodiscard]] inline u8 repetitionsBefore(const Scacchiera& record) {
    if (record.rule50 < 4) {
        return 0;
    }
    const i64 reach = std::min<i64>(record.rule50, &record - boardStack.data());
    for (i64 back = 4; back <= reach; back += 2) {
        const Scacchiera& earlier = *(&record - back);
        if (earlier.side == record.side && earlier.pbq == record.pbq && earlier.nbk == record.nbk &&
            earlier.rqk == record.rqk) {
            return static_cast<u8>((earlier.stateFlags + 1) & repetitionMask);
        }
    }
    return 0;
}

// The mover's rights after the move, in the mover's frame.
[[nodiscard, gnu::always_inline]] inline u8 rightsAfter(u8 rights, i32 kind, i32 from, i32 to) {
    if (rights == 0) {
        return 0;
    }
    const i32 code = kind & 7;
    i32 lost = code == KING ? OWN_LONG | OWN_SHORT : 0;
    lost |= code == ROOK ? cornerRights[from] & (OWN_LONG | OWN_SHORT) : 0;
    lost |= (kind & 8) != 0 ? cornerRights[to] & (OPPONENT_LONG | OPPONENT_SHORT) : 0;
    return static_cast<u8>(rights & ~lost);
}

// The men of a move that a generator has made for the position: the kind tells what moves, and only captures look at the
// target. Castling alone asks for no king where it starts from: a right is enough.
[[nodiscard, gnu::always_inline]] inline MenOfMove menOfMove(const MoveParts& move) {
    if (move.kind == CASTLE_SHORT || move.kind == CASTLE_LONG) {
        return {pieceCode(*board, move.from), EMPTY};
    }
    return {move.kind & 7, (move.kind & 8) != 0 ? pieceCode(*board, move.to) : i32{EMPTY}};
}

// Deliberate: the rook's change counts twice; the tables make it nothing.
[[nodiscard, gnu::always_inline]] inline i32 castlingGain(const std::array<i16, 64>& kingRow,
                                                          const CastlingSquares& castling) {
    return kingRow[castling.kingTo] - kingRow[castling.kingFrom] +
           2 * (psqTable[ROOK][castling.rookTo] - psqTable[ROOK][castling.rookFrom]);
}

// What psqScore gains for the mover.
[[nodiscard, gnu::always_inline]] inline i32 scoreOfMove(const NodeMoves& n, const Placement& after,
                                                         const MoveParts& move, const MenOfMove& men) {
    const auto [kind, from, to, promo] = move;
    const auto [moved, captured] = men;
    const auto& kingRow = kingTerms[n.men];
    if (kind < 8) {
        return kind == MOVE_KING ? kingRow[to] - kingRow[from] : psqTable[moved][to] - psqTable[moved][from];
    }
    i32 gain = 0;
    switch (kind) {
        case CASTLE_SHORT:
            return castlingGain(kingRow, shortCastling);
        case CASTLE_LONG:
            return castlingGain(kingRow, longCastling);
        case PROMO:
        case PROMO_CAPT:
            gain = pieceValue[promo] + psqTable[promo][to] - psqTable[PAWN][from] - 100;
            break;
        case EN_PASSANT:
            return psqTable[PAWN][to] - psqTable[PAWN][from] + 100 + psqTable[PAWN][(to - 8) ^ 56] +
                   n.captureKings;
        case CAPT_KING:
            break;
        default:
            gain = psqTable[moved][to] - psqTable[moved][from];
            break;
    }
    if (kind == PROMO) {
        return gain;
    }
    gain += pieceValue[captured] + psqTable[captured][to ^ 56];
    if (kind == CAPT_KING || captured == KING) [[unlikely]] {
        const TBB allKings = after.nbk & after.rqk;
        const i32 enemyKing = kingSquare(byteSwap(allKings & ~after.side));
        if (kind == CAPT_KING) {
            return gain + kingTerms[n.men - 1][to] - kingRow[from] + kingTermOf(n.men, enemyKing) -
                   kingTermOf(n.men - 1, enemyKing);
        }
        return gain + kingTermsOfCapture(n.men, kingSquare(allKings & after.side), enemyKing);
    }
    return gain + n.captureKings;
}

// What the key gains by the men of the move.
[[nodiscard, gnu::always_inline]] inline u64 keyOfMove(const MoveParts& move, const MenOfMove& men,
                                                       i32 moverRow) {
    const auto [kind, from, to, promo] = move;
    const auto [moved, captured] = men;
    const i32 enemyRow = moverRow ^ 8;
    const auto& own = zobrist.piece;
    u64 key = own[moverRow + moved][from] ^ own[moverRow + (promo != 0 ? promo : moved)][to];
    if (captured != 0) {
        key ^= own[enemyRow + captured][to ^ 56];
    }
    if (kind >= PROMO) {
        if (kind == EN_PASSANT) {
            key ^= own[enemyRow + PAWN][(to - 8) ^ 56];
        } else if (kind == CASTLE_SHORT) {
            key ^= own[moverRow + ROOK][shortCastling.rookFrom] ^ own[moverRow + ROOK][shortCastling.rookTo];
        } else if (kind == CASTLE_LONG) {
            key ^= own[moverRow + ROOK][longCastling.rookFrom] ^ own[moverRow + ROOK][longCastling.rookTo];
        }
    }
    return key;
}

// Key of the position after the move, which leaves `rights` and sets `epFile`.
[[nodiscard, gnu::always_inline]] inline u64 keyAfter(const NodeMoves& n, const MoveParts& move,
                                                      const MenOfMove& men, u8 rights, u8 epFile) {
    const Scacchiera& old = *board;
    const u64 key = n.keyBase ^ keyOfMove(move, men, blackToMove(old) ? 0 : 8) ^ zobrist.ep[epFile];
    return rights == old.castleRights
               ? key
               : key ^ zobrist.castle[swapRights(old.castleRights)] ^ zobrist.castle[swapRights(rights)];
}

// Deliberate: a double push sets its file whether or not a pawn could take it.
[[nodiscard, gnu::always_inline]] inline u8 epFileAfter(i32 kind, i32 from, i32 to) {
    const bool isDoublePush =
        kind == MOVE_PAWN && (TBB{1} << to & rank4) != 0 && (TBB{1} << from & rank2) != 0;
    return isDoublePush ? static_cast<u8>(to & 7) : noEpFile;
}

// Writes the record of `move` above the current one, flipped, and steps `board` up. `after` is placementAfter.
template <MakeDepth How>
[[gnu::always_inline]] inline void writeRecord(const NodeMoves& n, const Placement& after,
                                               const MoveParts& move, const MenOfMove& men) {
    const Scacchiera& old = *board;
    Scacchiera& next = board[1];
    const i32 kind = move.kind;
    const i32 from = move.from;
    const i32 to = move.to;

    const TBB occ = after.pbq | after.nbk | after.rqk;
    next.side = byteSwap(occ ^ after.side);
    next.pbq = byteSwap(after.pbq);
    next.nbk = byteSwap(after.nbk);
    next.rqk = byteSwap(after.rqk);
    next.reserved = old.reserved;

    const u8 rights = rightsAfter(old.castleRights, kind, from, to);
    const u8 epFile = epFileAfter(kind, from, to);
    next.castleRights = swapRights(rights);
    next.epFile = epFile;

    if constexpr (How == MakeDepth::full) {
        next.hashKey = keyAfter(n, move, men, rights, epFile);
        next.psqScore = wrap16(-(old.psqScore + scoreOfMove(n, after, move, men)));
    } else {
        next.hashKey = old.hashKey;
        next.psqScore = wrap16(-old.psqScore);
    }

    const u8 colour = static_cast<u8>(~old.stateFlags & blackToMoveFlag);
    if (((kind & 8) | (kind == MOVE_PAWN) | (kind == PROMO)) != 0) {
        next.rule50 = 0;
        next.stateFlags = colour;
    } else {
        next.rule50 = static_cast<u8>(old.rule50 + 1);
        const u8 repetitions = countsRepetition(kind) ? repetitionsBefore(next)
                                                      : static_cast<u8>(old.stateFlags & repetitionMask);
        next.stateFlags = static_cast<u8>(colour | repetitions);
    }
    ++board;
    if constexpr (How == MakeDepth::full && recordsAreChecked) {
        assert(madeRecordIsTrue(move));
    }
}

}  // namespace node

/// Works out what the moves of the position at `board` share. `checkers` is what inCheck tells of it.
[[nodiscard]] inline NodeMoves nodeMoves(TBB checkers) {
    const Scacchiera& b = *board;
    NodeMoves n{};
    n.occ = occupied(b);
    n.men = popCount(n.occ);
    n.checkers = checkers;
    const TBB ownKings = kings(b) & b.side;
    const i32 ownKing = kingSquare(ownKings);
    if (ownKing != noSquare) {
        const bool testAll = checkers != 0 || (ownKings & (ownKings - 1)) != 0;
        n.mustTest = testAll ? ~TBB{0} : node::loneMenBefore(b, n.occ, ownKing, n.occ ^ b.side) & b.side;
    }
    n.captureKings = node::kingTermsOfCapture(n.men, ownKing, kingSquare(byteSwap(kings(b) & ~b.side)));
    n.keyBase = b.hashKey ^ zobrist.side ^ zobrist.ep[b.epFile] ^ zobrist.castle[b.castleRights] ^
                zobrist.castle[swapRights(b.castleRights)];
    return n;
}

[[nodiscard]] inline NodeMoves nodeMoves() {
    const Scacchiera& b = *board;
    const i32 ownKing = kingSquare(kings(b) & b.side);
    return nodeMoves(ownKing == noSquare
                         ? 0
                         : attackersOfKing(Placement{b.side, b.pbq, b.nbk, b.rqk}, occupied(b), ownKing));
}

/// Key of the position after `move`, without making it.
[[nodiscard]] inline u64 keyAfter(const NodeMoves& n, Mossa m) {
    const MoveParts move = partsOf(m);
    const auto [kind, from, to, promo] = move;
    return node::keyAfter(n, move, node::menOfMove(move),
                          node::rightsAfter(board->castleRights, kind, from, to),
                          node::epFileAfter(kind, from, to));
}

/// Plays a move, one of the seventeen kinds and pseudo-legal in the position of `n` at `board`, if it leaves no own
/// king attacked: then `board` is one record up, and the result is true. Otherwise false, and `board` stays. Either
/// way one is added to SearchInfo.nodes: the same as makeMove, leftInCheck, and the step back.
template <MakeDepth How = MakeDepth::full>
[[nodiscard, gnu::always_inline]] inline bool tryMove(const NodeMoves& n, const MoveParts& move) {
    ++SearchInfo.nodes;
    const Placement after = node::placementAfter(*board, move);
    // Only these can expose the king: it moves itself, a pinned man leaves, two pawns leave a rank at once.
    const bool mayExpose =
        (n.mustTest >> move.from & 1) != 0 || (move.kind & 7) == KING || move.kind == EN_PASSANT;
    if (mayExpose && node::kingIsAttacked(after)) {
        return false;
    }
    node::writeRecord<How>(n, after, move, node::menOfMove(move));
    return true;
}

namespace node {

// Code of its own for a kind of move, from which the compiler has left out whatever that kind does not need.
template <MakeDepth How, MoveKind Kind>
[[nodiscard, gnu::noinline]] bool tryMoveOfKind(const NodeMoves& n, Mossa move) {
    return tryMove<How>(n, MoveParts{Kind, moveFrom(move) & 63, moveTo(move) & 63, 0});
}

template <MakeDepth How>
[[nodiscard, gnu::noinline]] bool tryMoveOfOtherKind(const NodeMoves& n, Mossa move) {
    return tryMove<How>(n, partsOf(move));
}

}  // namespace node

/// tryMove by the kind of move.
template <MakeDepth How = MakeDepth::full>
[[nodiscard]] inline bool tryMove(const NodeMoves& n, Mossa move) {
    switch (moveKind(move)) {
        case MOVE_PAWN:
            return node::tryMoveOfKind<How, MOVE_PAWN>(n, move);
        case MOVE_KNIGHT:
            return node::tryMoveOfKind<How, MOVE_KNIGHT>(n, move);
        case MOVE_BISHOP:
            return node::tryMoveOfKind<How, MOVE_BISHOP>(n, move);
        case MOVE_ROOK:
            return node::tryMoveOfKind<How, MOVE_ROOK>(n, move);
        case MOVE_QUEEN:
            return node::tryMoveOfKind<How, MOVE_QUEEN>(n, move);
        case MOVE_KING:
            return node::tryMoveOfKind<How, MOVE_KING>(n, move);
        case CAPT_PAWN:
            return node::tryMoveOfKind<How, CAPT_PAWN>(n, move);
        case CAPT_KNIGHT:
            return node::tryMoveOfKind<How, CAPT_KNIGHT>(n, move);
        case CAPT_BISHOP:
            return node::tryMoveOfKind<How, CAPT_BISHOP>(n, move);
        case CAPT_ROOK:
            return node::tryMoveOfKind<How, CAPT_ROOK>(n, move);
        case CAPT_QUEEN:
            return node::tryMoveOfKind<How, CAPT_QUEEN>(n, move);
        default:
            return node::tryMoveOfOtherKind<How>(n, move);
    }
}
