// The transposition table: one flat array, one record an index, no buckets and no ages. Emptying it at each think would
// cost a pass over gigabytes, so a stored record carries the number of its generation in bits that a move never has,
// and one of another generation reads as an empty slot.
#include "board/board.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "platform/print.h"

#include <algorithm>

// The bits of a move that can be set; the eleven others hold the generation.
constexpr Mossa moveBits = makeMossa(63, 63, 63, 7);
constexpr Mossa generationBits = ~moveBits;
constexpr u64 generations = u64{1} << std::popcount(generationBits);
static_assert(generations == 2048);

// Memory that was never written reads as generation 0, so that one is never used.
constexpr Mossa generationAfter(Mossa generation) {
    const Mossa next = (generation - generationBits) & generationBits;
    return next != 0 ? next : generationAfter(0);
}
constexpr Mossa firstGeneration = generationAfter(0);

// Pages are given back in stretches of this size, a multiple of every page size.
constexpr u64 stretchBytes = 65536;

// What the table is while there is none: it works, and holds the last position stored.
static constinit ys_hash soleRecord{};

static constinit ys_hash* hashTable = &soleRecord;
static constinit u64 heldEntries = 1;                 // records that `hashTable` has
static constinit u64 hashEntries = 1;                 // records in use, not more than those held
static constinit u64 reciprocal = ~u64{0};            // (2^64 - 1) / hashEntries
static constinit Mossa generation = firstGeneration;  // spread over the spare bits
static constinit u64 generationNumber = 1;

// ---- memory ---------------------------------------------------------------------------------------------------

static void useEntries(u64 entries) {
    hashEntries = std::clamp(entries, u64{1}, heldEntries);
    reciprocal = ~u64{0} / hashEntries;
}

static void holdTable(ys_hash* table, u64 entries) {
    hashTable = table;
    heldEntries = entries;
    useEntries(entries);
}

static void freeTable() {
    if (hashTable != &soleRecord) {
        freePages(hashTable, heldEntries * sizeof(ys_hash));
    }
    soleRecord = {};
    holdTable(&soleRecord, 1);
}

void hashAlloc(u64 entries, i32 megabytes) {
    constexpr u64 entriesMax = SIZE_MAX / sizeof(ys_hash);
    freeTable();
    // A table without records is no failure; the sole record serves it.
    if (entries != 0) {
        void* memory = entries <= entriesMax ? allocatePages(entries * sizeof(ys_hash), true) : nullptr;
        if (memory == nullptr) {
            print("Hash Table Memory Allocation Failed!\n");
            return;
        }
        holdTable(static_cast<ys_hash*>(memory), entries);
    }
    print("Allocated %i MB for the Hash Table\n", megabytes);
    print("Hash Record allocated: %lld\n", static_cast<long long>(entries));
}

// Zeroes one part in `generations` of the table, another one in each generation: when a generation comes round again
// none of its old records is left. A part is the share of the whole table, and it is cleared at the head of its
// generation, so that no clear ever has to go over all of it.
static void zeroStretchesOfGeneration() {
    if (hashTable == &soleRecord) {
        soleRecord = {};
        return;
    }
    const u64 bytes = heldEntries * sizeof(ys_hash);
    const u64 stretches = (bytes + stretchBytes - 1) / stretchBytes;
    const u64 first = stretches * (generationNumber - 1) / (generations - 1) * stretchBytes;
    const u64 last = std::min(stretches * generationNumber / (generations - 1) * stretchBytes, bytes);
    if (first < last) {
        zeroPages(reinterpret_cast<u8*>(hashTable) + first, last - first);
    }
}

void hashClear(u64 entries) {
    useEntries(entries);
    generation = generationAfter(generation);
    generationNumber = generation == firstGeneration ? 1 : generationNumber + 1;
    zeroStretchesOfGeneration();
}

// ---- records --------------------------------------------------------------------------------------------------

__extension__ using u128 = unsigned __int128;

// `key` modulo the number of records, exactly: the quotient by the reciprocal is right or one too small.
static u64 slotIndex(u64 key) {
    const u64 quotient = static_cast<u64>(u128{key} * reciprocal >> 64);
    const u64 remainder = key - quotient * hashEntries;
    return remainder < hashEntries ? remainder : remainder - hashEntries;
}

static bool isCurrent(const ys_hash& stored) {
    return (stored.move & generationBits) == generation;
}

// The slot as it is meant: empty if its record is of another generation.
static ys_hash readSlot(u64 index) {
    ys_hash slot = hashTable[index];
    if (!isCurrent(slot)) {
        return {};
    }
    slot.move &= moveBits;
    return slot;
}

void hashPrefetch(u64 key) {
    __builtin_prefetch(&hashTable[slotIndex(key)]);
}

i32 hashProbe(ys_hash& slotCopy, i32 depth, i32 alpha, i32 beta) {
    const ys_hash slot = readSlot(slotIndex(board->hashKey));
    slotCopy = slot;
    if (slot.key != board->hashKey) {
        return HASH_MISS;
    }
    if (slot.depth < depth) {
        return HASH_NO_CUT;
    }
    if (slot.bound == HASH_EXACT) {
        return slot.value;
    }
    if (slot.bound == HASH_LOWER && slot.value >= beta) {
        return beta;
    }
    // Deliberate: a lower bound, too.
    if (slot.value <= alpha) {
        return alpha;
    }
    return HASH_NO_CUT;
}

void hashStore(i32 depth, i32 value, HashBound bound, Mossa move) {
    const u64 index = slotIndex(board->hashKey);
    const ys_hash slot = readSlot(index);
    if (bound == HASH_EXACT && depth < slot.depth) {
        return;
    }
    const Mossa kept = move == 0 && slot.key == board->hashKey ? slot.move : move;
    hashTable[index] = {board->hashKey, static_cast<u8>(depth), bound, wrap16(value),
                        (kept & moveBits) | generation};
}

Mossa hashExactMove() {
    const ys_hash slot = readSlot(slotIndex(board->hashKey));
    return slot.key == board->hashKey && slot.bound == HASH_EXACT ? slot.move : 0;
}

u64 hashFilled() {
    u64 filled = 0;
    for (u64 i = 0; i < heldEntries; ++i) {
        filled += isCurrent(hashTable[i]) && hashTable[i].key != 0 ? 1 : 0;
    }
    return filled;
}
