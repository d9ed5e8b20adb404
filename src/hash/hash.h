// The two hash tables: the search's transposition table and the pawn hash.
#pragma once

#include "board/board.h"

// ---- transposition table --------------------------------------------------------------------------------------

enum HashBound : u8 {
    HASH_EXACT = 0,  // also what a never-written slot reads as
    HASH_UPPER = 1,
    HASH_LOWER = 2,
};

constexpr i32 HASH_NO_CUT = 32001;  // the slot holds this position but gives no cut-off
constexpr i32 HASH_MISS = 32002;    // the slot holds another position

struct ys_hash {
    u64 key;     // whole hashKey, 0 in an empty slot
    u8 depth;    // plies
    u8 bound;    // HashBound
    i16 value;   // centipawns; mate scores exactly as the search had them
    Mossa move;  // best move, or 0
};
static_assert(sizeof(ys_hash) == 16);

/// Frees the table and allocates `entries` empty records, said in two lines with `megabytes`. If they cannot be had: the
/// failure line alone, and a smaller table, at the worst one record. Returns the number of records: `entries`, or what
/// the smaller table has.
u64 hashAlloc(u64 entries, i32 megabytes);
/// Empties the table. `entries` is the number the caller believes in; never more than the table has are touched.
void hashClear(u64 entries);
/// Begins to fetch the slot of the position with this key, for a hashProbe that follows soon.
void hashPrefetch(u64 key);
/// Looks up the position at `board`. Copies the slot to `slotCopy` in every case, a foreign position's too. Returns a
/// score in the window's terms, HASH_NO_CUT or HASH_MISS.
i32 hashProbe(ys_hash& slotCopy, i32 depth, i32 alpha, i32 beta);
/// Stores for the position at `board`. An exact value of lesser depth than the slot's is dropped; all else replaces.
void hashStore(i32 depth, i32 value, HashBound bound, Mossa move);
/// The move of an exact entry of the position at `board`, else 0. This and hashFilled are for inspection: the search
/// does not use them.
Mossa hashExactMove();
/// Slots in use; walks the whole table.
u64 hashFilled();
/// Slots in use of a thousand, told from a sample spread over the table.
[[nodiscard]] i32 hashFilledPermille();

// ---- pawn hash ------------------------------------------------------------------------------------------------

constexpr i32 PAWN_HASH_MISS = 32002;

struct alignas(8) hashPawn {
    u64 pawnKey;      // key of the placement, 0 in an empty slot
    TBB passedPawns;  // own passed pawns, frame of the pass
    i16 pawnScore;    // centipawns for the own side
    u8 spare;         // never written
    u8 healthyPawns;  // 0 to 8; more with more than eight pawns
};
static_assert(sizeof(hashPawn) == 24);

/// Frees the table and allocates EngineOptions.pawnHashEntries empty records, said in a line. If they cannot be had:
/// the failure line alone, and a smaller table, at the worst one record.
void pawnHashAlloc();
/// Looks up the pawns of the record at `board` as its side to move sees them. Returns `pawnScore` as an unsigned
/// 16-bit number, or PAWN_HASH_MISS; `recordCopy` then holds what the slot held.
i32 pawnHashProbe(hashPawn& recordCopy);
/// Stores for the pawns of the record at `board`, over whatever the slot held.
void pawnHashStore(i16 pawnScore, TBB passedPawns, u8 healthyPawns);
/// Keys of one placement of pawns as the two sides see it.
struct PawnHashKeys {
    u64 own;    // for the side whose frame it is
    u64 other;  // for its opponent, in his frame
};
/// Squares in the frame of the own side. black  whether the own side is Black.
[[nodiscard]] PawnHashKeys pawnHashKeys(TBB ownPawns, TBB enemyPawns, bool black);
/// The slot that belongs to `key`; its `pawnKey` tells whether it is in it. Valid until the next pawnHashAlloc.
[[nodiscard]] hashPawn& pawnHashSlot(u64 key);
/// Whether the slot holds the pawns of `key`: what pawnHashProbe asks.
[[nodiscard]] inline bool holdsPawns(const hashPawn& slot, u64 key) {
    return slot.pawnKey == key;
}
/// Writes the slot for the pawns of `key`, over whatever it held: what pawnHashStore does.
inline void storePawns(hashPawn& slot, u64 key, i16 pawnScore, TBB passedPawns, u8 healthyPawns) {
    slot.pawnKey = key;
    slot.passedPawns = passedPawns;
    slot.pawnScore = pawnScore;
    slot.healthyPawns = healthyPawns;
}
/// Slots in use; walks the whole table. For inspection, as pawnHashProbe and pawnHashStore: the evaluation keeps the
/// slots of both views and goes through holdsPawns and storePawns.
u64 pawnHashFilled();
/// Empties the pawn hash. For tests and benchmarks alone: play never clears it.
void pawnHashClear();
