// The pawn hash: what the evaluation has worked out for a placement of pawns. It outlives searches and games; entries
// depend on nothing but the pawns, so play never clears it. Owned by the thread that searches.
#include "hash/hash.h"

#include "frontend/frontend.h"
#include "hash/internal.h"
#include "hash/random64.h"
#include "platform/platform.h"
#include "platform/print.h"

// Serves where there is no memory for a table.
static constinit hashPawn loneRecord{};

// What is really held, whatever the options say.
static constinit hashPawn* pawnHashTable = &loneRecord;
static constinit RecordCount recordsHeld = recordCount(1);

// ---- key ------------------------------------------------------------------------------------------------------

// The key is a XOR of one number a pawn. Numbers of all 256 placements of a rank are combined beforehand, so that a
// key takes no loop over pawns. The low half of an entry is for the rank as it stands, the high half for the rank as
// the other side sees it: both views' keys come from one walk.
using RankKeys = std::array<std::array<u64, 256>, 8>;  // [rank][files]

// `first` is the entry of Random64 for a pawn on a1.
static consteval RankKeys combineByRank(u32 first) {
    RankKeys keys{};
    for (u32 rank = 0; rank < 8; ++rank) {
        for (u32 files = 1; files < 256; ++files) {
            const u32 square = rank * 8 + static_cast<u32>(std::countr_zero(files));
            const u64 here = Random64[first + square] & 0xFFFFFFFF;
            const u64 mirrored = Random64[first + (square ^ 56)] << 32;
            keys[rank][files] = keys[rank][files & (files - 1)] ^ here ^ mirrored;
        }
    }
    return keys;
}

// [0] for Black's pawns, [1] for White's, on squares of the frame.
static constinit const std::array<RankKeys, 2> pawnKeys = {combineByRank(0), combineByRank(64)};

static u64 armyKeys(TBB pawnSet, const RankKeys& keys) {
    u64 key = 0;
    for (u32 rank = 0; rank < 8; ++rank) {
        key ^= keys[rank][pawnSet >> (8 * rank) & 0xFF];
    }
    return key;
}

// Deliberate: 32 bits count, with their sign.
static u64 signExtended(u64 key) {
    return static_cast<u64>(static_cast<i64>(static_cast<i32>(static_cast<u32>(key))));
}

// Deliberate: a key does not tell whose view it is. Black's view of a placement has the key of White's view of the
// mirrored placement, and a match is trusted.
PawnHashKeys pawnHashKeys(TBB ownPawns, TBB enemyPawns, bool black) {
    const u64 both =
        armyKeys(ownPawns, pawnKeys[black ? 0 : 1]) ^ armyKeys(enemyPawns, pawnKeys[black ? 1 : 0]);
    return {signExtended(both), signExtended(both >> 32)};
}

static u64 keyAtBoard() {
    const TBB allPawns = pawns(*board);
    return pawnHashKeys(allPawns & board->side, allPawns & ~board->side, blackToMove(*board)).own;
}

// ---- records --------------------------------------------------------------------------------------------------

hashPawn& pawnHashSlot(u64 key) {
    return pawnHashTable[slotIndex(key, recordsHeld)];
}

i32 pawnHashProbe(hashPawn& recordCopy) {
    const u64 key = keyAtBoard();
    recordCopy = pawnHashSlot(key);
    return holdsPawns(recordCopy, key) ? static_cast<u16>(recordCopy.pawnScore) : PAWN_HASH_MISS;
}

void pawnHashStore(i16 pawnScore, TBB passedPawns, u8 healthyPawns) {
    const u64 key = keyAtBoard();
    storePawns(pawnHashSlot(key), key, pawnScore, passedPawns, healthyPawns);
}

u64 pawnHashFilled() {
    u64 filled = 0;
    for (u64 i = 0; i < recordsHeld.count; ++i) {
        filled += pawnHashTable[i].pawnKey != 0 ? 1 : 0;
    }
    return filled;
}

// ---- memory ---------------------------------------------------------------------------------------------------

static std::size_t tableBytes() {
    return bytesOf<hashPawn>(recordsHeld.count);
}

static void freeTable() {
    if (pawnHashTable != &loneRecord) {
        freePages(pawnHashTable, tableBytes());
    }
    pawnHashTable = &loneRecord;
    recordsHeld = recordCount(1);
    loneRecord = {};
}

static bool allocateTable(u64 entries) {
    const std::size_t bytes = bytesOf<hashPawn>(entries);
    void* memory = allocatePages(bytes, bytes <= largePagesUpTo);
    if (memory == nullptr) {
        return false;
    }
    pawnHashTable = static_cast<hashPawn*>(memory);
    recordsHeld = recordCount(entries);
    return true;
}

void pawnHashAlloc() {
    freeTable();
    const u64 wanted = EngineOptions.pawnHashEntries;
    // A table without records is no failure; the lone record serves it.
    if (wanted != 0 && !allocateTable(wanted)) {
        print("Pawn Hash Table Memory Allocation Failed!\n");
        allocateSmallerTable(wanted, defaultPawnHashEntries, allocateTable);
        return;
    }
    print("Allocated %i MB for the Pawn Hash Table\n", EngineOptions.pawnHashSize);
}

void pawnHashClear() {
    if (pawnHashTable == &loneRecord) {
        loneRecord = {};
    } else {
        zeroPages(pawnHashTable, tableBytes());
    }
}
