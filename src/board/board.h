// The position, the move and the lists of moves, and everything others may do with them.
//
// The board is always seen from the side to move: own men are `side`, own pawns move to higher squares. A square
// in a Scacchiera or a Mossa is in that frame; the real square is that square XOR 56 when Black is to move.
#pragma once

#include "platform/bits.h"

#include <array>
#include <type_traits>

// ---- pieces ---------------------------------------------------------------------------------------------------

/// What stands on a square; bit 0 is in `pbq`, bit 1 in `nbk`, bit 2 in `rqk`.
enum PieceCode : u8 { EMPTY = 0, PAWN = 1, KNIGHT = 2, BISHOP = 3, ROOK = 4, QUEEN = 5, KING = 6 };

/// Castling rights, own rights in the low nibble.
enum CastleRight : u8 { OWN_LONG = 0x01, OWN_SHORT = 0x02, OPPONENT_LONG = 0x10, OPPONENT_SHORT = 0x20 };

constexpr u8 noEpFile = 8;           // `epFile` when the last move was no double push
constexpr u8 blackToMoveFlag = 128;  // bit of `stateFlags`
constexpr u8 repetitionMask = 127;   // bits of `stateFlags`

// ---- the position ---------------------------------------------------------------------------------------------

/// A position, seen from the side to move. A record on the stack is final once it has been made.
struct Scacchiera {
    TBB side;         // men of the side to move
    TBB pbq;          // piece code bit 0, both colours
    TBB nbk;          // piece code bit 1, both colours
    TBB rqk;          // piece code bit 2, both colours
    u64 hashKey;      // Zobrist key
    u64 reserved;     // spare word: copied from record to record, neither set nor read
    u8 castleRights;  // CastleRight bits, 0 to 51
    u8 epFile;        // file 0 to 7 on which the last move was a double pawn push, else noEpFile
    u8 rule50;        // plies since the last capture or pawn move; may wrap
    u8 stateFlags;    // bit 7: Black is to move; bits 0 to 6: how often the position stood before
    i16 psqScore;     // material and piece-square balance, centipawns, own minus opponent's
};
static_assert(sizeof(Scacchiera) == 56 && std::is_trivially_copyable_v<Scacchiera>);

[[nodiscard]] constexpr TBB occupied(const Scacchiera& b) {
    return b.pbq | b.nbk | b.rqk;
}
[[nodiscard]] constexpr TBB opponent(const Scacchiera& b) {
    return occupied(b) ^ b.side;
}
[[nodiscard]] constexpr TBB pawns(const Scacchiera& b) {
    return b.pbq & ~b.nbk & ~b.rqk;
}
[[nodiscard]] constexpr TBB knights(const Scacchiera& b) {
    return b.nbk & ~b.pbq & ~b.rqk;
}
[[nodiscard]] constexpr TBB bishops(const Scacchiera& b) {
    return b.pbq & b.nbk;
}
[[nodiscard]] constexpr TBB rooks(const Scacchiera& b) {
    return b.rqk & ~b.pbq & ~b.nbk;
}
[[nodiscard]] constexpr TBB queens(const Scacchiera& b) {
    return b.pbq & b.rqk;
}
[[nodiscard]] constexpr TBB kings(const Scacchiera& b) {
    return b.nbk & b.rqk;
}
[[nodiscard]] constexpr TBB rooksAndQueens(const Scacchiera& b) {
    return b.rqk & (b.pbq | ~b.nbk);
}
[[nodiscard]] constexpr TBB bishopsAndQueens(const Scacchiera& b) {
    return b.pbq & (b.nbk | b.rqk);
}

/// Code of the piece on `square`, EMPTY to KING. A position from outside may hold 7 after impossible castling.
[[nodiscard]] constexpr i32 pieceCode(const Scacchiera& b, i32 square) {
    return static_cast<i32>((b.pbq >> square & 1) | (b.nbk >> square & 1) << 1 | (b.rqk >> square & 1) << 2);
}

[[nodiscard]] constexpr bool blackToMove(const Scacchiera& b) {
    return (b.stateFlags & blackToMoveFlag) != 0;
}

/// 0 for a position that has not stood before, 1 for the second time, and so on.
[[nodiscard]] constexpr i32 repetitionCount(const Scacchiera& b) {
    return b.stateFlags & repetitionMask;
}

/// Both nibbles exchanged: the rights as the other side sees them.
[[nodiscard]] constexpr u8 swapRights(u8 rights) {
    return static_cast<u8>(rights << 4 | rights >> 4);
}

/// Mirrors the record top to bottom and changes the side to move: bitboards, rights, score and bit 7 of the flags.
/// `epFile`, `rule50` and `hashKey` stay. Two flips give the record back bit for bit.
constexpr void flipBoard(Scacchiera& b) {
    b.side = byteSwap(b.side ^ occupied(b));
    b.pbq = byteSwap(b.pbq);
    b.nbk = byteSwap(b.nbk);
    b.rqk = byteSwap(b.rqk);
    b.castleRights = swapRights(b.castleRights);
    b.psqScore = wrap16(-b.psqScore);
    b.stateFlags ^= blackToMoveFlag;
}

/// Records that played moves may fill; parseUserMove refuses beyond.
constexpr i32 gameRecordsMax = 16384;
/// Records a search may use above the game's; `search` and `quiescence` stop deepening when they are used up.
constexpr i32 searchRecordsMax = 600;

/// The game's records from 0 up, the search's above them. Belongs to whichever thread is searching.
extern std::array<Scacchiera, gameRecordsMax + searchRecordsMax + 64> boardStack;
/// The current record. Making a move steps it up; `--board` takes a move back.
extern Scacchiera* board;

/// Whether `board` is on the stack and its flags have values that a record may have: what everybody who takes the
/// position at `board` may assume.
[[nodiscard]] inline bool boardIsRecord() {
    constexpr i32 allRights = OWN_LONG | OWN_SHORT | OPPONENT_LONG | OPPONENT_SHORT;
    return board >= boardStack.data() && board < boardStack.data() + boardStack.size() &&
           (board->castleRights & ~allRights) == 0 && board->epFile <= noEpFile;
}

// ---- moves ----------------------------------------------------------------------------------------------------

/// A move by bytes, lowest first: kind, from, to, promo. Squares are in the mover's frame. 0 is no move.
using Mossa = u32;

/// Bits 0 to 2: code of the moving piece. 8: capture. 16 and 32: the special moves.
enum MoveKind : u8 {
    MOVE_PAWN = 1,
    MOVE_KNIGHT = 2,
    MOVE_BISHOP = 3,
    MOVE_ROOK = 4,
    MOVE_QUEEN = 5,
    MOVE_KING = 6,
    CAPT_PAWN = 9,
    CAPT_KNIGHT = 10,
    CAPT_BISHOP = 11,
    CAPT_ROOK = 12,
    CAPT_QUEEN = 13,
    CAPT_KING = 14,
    PROMO = 17,
    CASTLE_SHORT = 22,
    PROMO_CAPT = 25,
    CASTLE_LONG = 38,
    EN_PASSANT = 41,
};

/// The seventeen kinds, as a set of bits.
constexpr u64 moveKinds = [] {
    u64 set = 0;
    for (const i32 kind : {MOVE_PAWN, MOVE_KNIGHT, MOVE_BISHOP, MOVE_ROOK, MOVE_QUEEN, MOVE_KING, CAPT_PAWN,
                           CAPT_KNIGHT, CAPT_BISHOP, CAPT_ROOK, CAPT_QUEEN, CAPT_KING, PROMO, CASTLE_SHORT,
                           PROMO_CAPT, CASTLE_LONG, EN_PASSANT}) {
        set |= u64{1} << kind;
    }
    return set;
}();
static_assert(popCount(moveKinds) == 17);

[[nodiscard]] constexpr bool isMoveKind(i32 kind) {
    return kind < 64 && (moveKinds >> kind & 1) != 0;
}

[[nodiscard]] constexpr i32 moveKind(Mossa m) {
    return static_cast<i32>(m & 0xFF);
}
[[nodiscard]] constexpr i32 moveFrom(Mossa m) {
    return static_cast<i32>(m >> 8 & 0xFF);
}
[[nodiscard]] constexpr i32 moveTo(Mossa m) {
    return static_cast<i32>(m >> 16 & 0xFF);
}
[[nodiscard]] constexpr i32 movePromo(Mossa m) {
    return static_cast<i32>(m >> 24);
}
[[nodiscard]] constexpr Mossa makeMossa(i32 kind, i32 from, i32 to, i32 promo = 0) {
    return static_cast<u32>(kind) | static_cast<u32>(from) << 8 | static_cast<u32>(to) << 16 |
           static_cast<u32>(promo) << 24;
}

/// Most captures, promotions and en passant moves that any placement of up to 64 men can give: every own man
/// captures in eight directions at most, every enemy man is taken from sixteen at most, promotions count fourfold.
constexpr i32 captureCapacity = 448;
/// Most quiet moves likewise, moves that stand twice in a list of checks included.
constexpr i32 quietCapacity = 768;

struct ScoredMove {
    Mossa move;
    i32 score;
};

/// Captures, promotions and en passant, with their ordering scores. Not cleared when declared: set `count` alone.
struct MoveList {
    i32 count;
    std::array<ScoredMove, captureCapacity> entries;
};

/// All other moves. Not cleared when declared: set `count` alone.
struct QuietList {
    i32 count;
    std::array<Mossa, quietCapacity> entries;
};

/// Room for every pseudo-legal move of any placement.
constexpr i32 moveCapacity = captureCapacity + quietCapacity;
using MoveArray = std::array<Mossa, moveCapacity>;

/// The entry with the highest score, the first of equals; the last entry is copied over it. `count`, at least 1,
/// stays: the caller lowers it when done with the move.
inline Mossa pickBest(MoveList& list) {
    i32 best = 0;
    for (i32 i = 1; i < list.count; ++i) {
        if (list.entries[static_cast<u32>(i)].score > list.entries[static_cast<u32>(best)].score) {
            best = i;
        }
    }
    const Mossa move = list.entries[static_cast<u32>(best)].move;
    list.entries[static_cast<u32>(best)] = list.entries[static_cast<u32>(list.count - 1)];
    return move;
}

// ---- text -------------------------------------------------------------------------------------------

/// Reads a FEN into the record at `board`, which does not move. Four fields are enough; a sixth is ignored.
/// Returns 1, or 0 if rejected: a bad side token leaves the record as it was, a later fault leaves it partly
/// written, without valid key and score. Prints nothing. Kings, pawns and rights are not checked against each other.
i32 fenToBoard(const char* fen);

/// Coordinate text of `move`, which is to be played in `position` (its colour decides the ranks): five characters,
/// the last a blank or a promotion letter, and a NUL.
void moveToText(char (&text)[6], Mossa move, const Scacchiera& position);

/// Prints the picture of the board at `board`, White at the bottom, Italian piece letters, capitals for White.
void printBoard();

// ---- making moves ---------------------------------------------------------------------------------------------

/// Plays `move` on the position at `board`.
/// move    pseudo-legal here, squares in the mover's frame. Not checked; leftInCheck tells afterwards if it was legal.
/// After:  `board` is one record up and seen from the other side, SearchInfo.nodes one more. The record below is
///         untouched, so `--board` takes the move back. Needs one free record above. Cannot fail: a `kind` that is no
///         move leaves a plain copy, unflipped.
void makeMove(Mossa move);

/// The same, without the key (the parent's stays) and the score (only negated): such a record is for looking at the
/// men, nothing may search on from it.
void makeMoveLight(Mossa move);

/// Passes: a record as of makeMove in which nothing has moved, `epFile` none, `rule50` and repetition count 0.
void makeNullMove();

/// Key of the position at `board` from scratch; does not store it.
[[nodiscard]] u64 computeKey();

// ---- attacks --------------------------------------------------------------------------------------------------

/// Enemy men that attack the king of the side to move; empty if there is none, or no king.
[[nodiscard]] TBB inCheck();

/// Men of the side to move that attack the enemy's king: not empty means that the move just made was illegal.
[[nodiscard]] TBB leftInCheck();

/// Plays a move given as text: from, to, then NUL or blank, or one of "nbrq". Returns 1 if it has been played
/// (`board` one record up), 0 if not. Looser than the rules for pawns: deliberate, the interface has checked the move.
/// Sets EngineOptions.lastUserMove as soon as the text is understood, also when the move is then refused. Refuses
/// every move when the game has gameRecordsMax records.
i32 parseUserMove(const char* text);

// ---- generators: pseudo-legal moves of the position at `board` ------------------------------------------------

/// En passant, promotions (also without capture), all other captures.
void genCaptures(MoveList& captures);
/// The same without en passant.
void genCapturesNoEp(MoveList& captures);
/// Castling and all moves that neither capture nor promote.
void genQuiets(QuietList& quiets);
/// genQuiets without pawn moves.
void genPieceQuiets(QuietList& quiets);
/// Promotions without capture, then pawn pushes. These carry a `promo` of 2 though they are none: for makeMoveLight.
void genPawnQuiets(MoveList& pushes);
/// Moves that may answer the check by `checkers` (from inCheck, not empty).
void genEvasions(TBB checkers, MoveList& captures, QuietList& quiets);
/// Quiet moves that may give check; some do not, and some stand twice.
void genChecks(QuietList& checks);

/// All pseudo-legal moves: captures by score, then quiet moves from the last generated to the first.
void orderedMoves(MoveArray& moves, i32& count);
/// The legal ones of orderedMoves, in the same order. Adds to SearchInfo.nodes.
void legalMoves(MoveArray& moves, i32& count);

// ---- static exchange ------------------------------------------------------------------------------------------

/// What `move` is worth once all exchanges on its target have been played, centipawns. `board` is unchanged; at most
/// one is added to SearchInfo.nodes.
[[nodiscard]] i32 see(Mossa move);

/// -1 if `move` loses material by `see`, else 0; does not call `see` when the victim is worth the attacker.
[[nodiscard]] i32 seeIsLosing(Mossa move);

/// Legal captures into `captures` (to be given with count 0), in reverse order of generation. Without any, `count`
/// stays as it was.
void legalCaptures(MoveList& captures);

/// Prints the exchange value of the best capture by generator score. No command calls it: for a debugger.
void seeTest();

// ---- counting -------------------------------------------------------------------------------------------------

/// Leaves of the move tree of the position at `board`, `depth` at least 1. Deliberate: a stalemate counts 1 and a
/// mate 0 at any depth, and so does a node all of whose subtrees came to 0.
u64 perft(i32 depth);
/// 1 for depth 0, else perft(depth).
u64 perftOrOne(i32 depth);
