// The transposition table: one flat array, one record an index, no buckets and no ages. Emptying it at each think would
// cost a pass over gigabytes, so a stored record carries the number of its generation in bits that a move never has,
// and one of another generation reads as an empty slot. Memory is taken from the system only where a record is stored.
#include "hash/hash.h"

#include "board/board.h"
#include "hash/internal.h"
#include "platform/platform.h"
#include "platform/print.h"

#include <algorithm>
#include <cstring>

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

// Records of one page, by which it is noted where this generation has written. Slots of other pages are empty: they
// need not be looked at, which spares the first searches in a large table most of their page faults.
constexpr u64 pageRecords = 4096 / sizeof(ys_hash);
constexpr u64 pagesPerWord = 64;

// Pages are given back in stretches of this size, a multiple of every page size.
constexpr u64 stretchBytes = 65536;

// What the table is while there is none: it works, and holds the last position stored.
static constinit ys_hash soleRecord{};
static constinit u64 solePage = 0;

static constinit ys_hash* hashTable = &soleRecord;
static constinit u64* writtenPages = &solePage;              // a bit for each page of `hashTable`
static constinit u64 heldEntries = 1;                        // records that `hashTable` has
static constinit RecordCount recordsInUse = recordCount(1);  // not more than those held
static constinit Mossa generation = firstGeneration;         // spread over the spare bits
static constinit u64 generationNumber = 1;

// A search that writes to more pages than this will go on for long.
constexpr u64 pagesOfShortSearch = 16384;
// From then on a large page is made each time so many more have been written to: fast enough to spare most of the small
// pages their fault, slow enough for the clock, which is read every few hundred stores.
constexpr u64 pagesPerLargePage = 16;

// A table beyond largePagesUpTo comes on small pages, and is put on large ones bit by bit while a long search runs.
struct LargePagesRecord {
    bool begun;
    bool ended;  // the system can do no more
    u64 offset;  // bytes of the table behind which none has been made yet
};
static constinit LargePagesRecord largePages{};
static constinit u64 pagesWritten = 0;  // by this generation

// ---- memory ---------------------------------------------------------------------------------------------------

static void useEntries(u64 entries) {
    recordsInUse = recordCount(std::clamp(entries, u64{1}, heldEntries));
}

static void holdTable(ys_hash* table, u64* pages, u64 entries) {
    hashTable = table;
    writtenPages = pages;
    heldEntries = entries;
    largePages = {};
    pagesWritten = 0;
    useEntries(entries);
}

static std::size_t tableBytes() {
    return bytesOf<ys_hash>(heldEntries);
}

static std::size_t pageWordBytes(u64 entries) {
    return bytesOf<u64>(entries / (pageRecords * pagesPerWord) + 1);
}

static void freeTable() {
    if (hashTable != &soleRecord) {
        freePages(hashTable, tableBytes());
        freePages(writtenPages, pageWordBytes(heldEntries));
    }
    soleRecord = {};
    solePage = 0;
    holdTable(&soleRecord, &solePage, 1);
}

// True if both the table and its page bits could be had.
static bool allocateTable(u64 entries) {
    const std::size_t bytes = bytesOf<ys_hash>(entries);
    void* table = allocatePages(bytes, bytes <= largePagesUpTo);
    if (table == nullptr) {
        return false;
    }
    void* pages = allocatePages(pageWordBytes(entries), false);
    if (pages == nullptr) {
        freePages(table, bytes);
        return false;
    }
    holdTable(static_cast<ys_hash*>(table), static_cast<u64*>(pages), entries);
    return true;
}

u64 hashAlloc(u64 entries, i32 megabytes) {
    freeTable();
    // A table without records is no failure; the sole record serves it.
    if (entries != 0 && !allocateTable(entries)) {
        print("Hash Table Memory Allocation Failed!\n");
        allocateSmallerTable(entries, defaultHashEntries, allocateTable);
        return heldEntries;
    }
    print("Allocated %i MB for the Hash Table\n", megabytes);
    print("Hash Record allocated: %lld\n", static_cast<long long>(entries));
    return entries;
}

// Zeroes one part in `generations` of the table, another one in each generation: when a generation comes round again
// none of its old records is left. A part is the share of the whole table, and it is cleared at the head of its
// generation, so that no clear ever has to go over all of it.
static void zeroStretchesOfGeneration() {
    if (hashTable == &soleRecord) {
        soleRecord = {};
        return;
    }
    const u64 bytes = tableBytes();
    const u64 stretches = (bytes + stretchBytes - 1) / stretchBytes;
    const u64 first = stretches * (generationNumber - 1) / (generations - 1) * stretchBytes;
    const u64 last = std::min(stretches * generationNumber / (generations - 1) * stretchBytes, bytes);
    if (first >= last) {
        return;
    }
    u8* const start = reinterpret_cast<u8*>(hashTable) + first;
    const std::size_t length = static_cast<std::size_t>(last - first);
    if (bytes <= largePagesUpTo || largePages.begun) {
        std::memset(start, 0, length);  // giving it back would break up a large page
    } else {
        zeroPages(start, length);
    }
}

void hashClear(u64 entries) {
    useEntries(entries);
    generation = generationAfter(generation);
    generationNumber = generation == firstGeneration ? 1 : generationNumber + 1;
    zeroStretchesOfGeneration();
    std::fill_n(writtenPages, pageWordBytes(heldEntries) / sizeof(u64), u64{0});
    pagesWritten = 0;
}

static void beginLargePages() {
    const std::size_t bytes = tableBytes();
    const u64 misaligned = reinterpret_cast<std::uintptr_t>(hashTable) % largePageBytes;
    largePages.begun = true;
    largePages.offset = (largePageBytes - misaligned) % largePageBytes;
    largePages.ended = bytes <= largePagesUpTo || !allowLargePages(hashTable, bytes);
}

static void makeNextLargePage() {
    if (!largePages.begun) {
        beginLargePages();
    }
    if (largePages.ended || largePages.offset + largePageBytes > tableBytes()) {
        return;
    }
    u8* const next = reinterpret_cast<u8*>(hashTable) + largePages.offset;
    *static_cast<volatile u8*>(next) = *next;  // what has never been touched cannot be put together
    largePages.offset += largePageBytes;
    largePages.ended = !makeLargePage(next);
}

// ---- records --------------------------------------------------------------------------------------------------

static u64 slotIndex(u64 key) {
    return slotIndex(key, recordsInUse);
}

static bool isCurrent(const ys_hash& stored) {
    return (stored.move & generationBits) == generation;
}

static bool pageIsWritten(u64 index) {
    const u64 page = index / pageRecords;
    return (writtenPages[page / pagesPerWord] >> (page % pagesPerWord) & 1) != 0;
}

[[gnu::noinline]] static void countWrittenPage() {
    ++pagesWritten;
    if (pagesWritten > pagesOfShortSearch && pagesWritten % pagesPerLargePage == 0) {
        makeNextLargePage();
    }
}

static void notePage(u64 index) {
    const u64 page = index / pageRecords;
    u64& word = writtenPages[page / pagesPerWord];
    const u64 bit = u64{1} << (page % pagesPerWord);
    if ((word & bit) == 0) {
        word |= bit;
        countWrittenPage();
    }
}

// The slot as it is meant: empty if its record is of another generation.
static ys_hash readSlot(u64 index) {
    if (!pageIsWritten(index)) {
        return {};
    }
    ys_hash slot = hashTable[index];
    if (!isCurrent(slot)) {
        return {};
    }
    slot.move &= moveBits;
    return slot;
}

void hashPrefetch(u64 key) {
    const u64 index = slotIndex(key);
    if (pageIsWritten(index)) {
        __builtin_prefetch(&hashTable[index]);
    }
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
    assert(boardIsRecord() && value == wrap16(value) && bound <= HASH_LOWER && (move & generationBits) == 0);
    const u64 index = slotIndex(board->hashKey);
    const ys_hash slot = readSlot(index);
    if (bound == HASH_EXACT && depth < slot.depth) {
        return;
    }
    const Mossa kept = move == 0 && slot.key == board->hashKey ? slot.move : move;
    notePage(index);
    hashTable[index] = {board->hashKey, static_cast<u8>(depth), bound, wrap16(value),
                        (kept & moveBits) | generation};
}

Mossa hashExactMove() {
    const ys_hash slot = readSlot(slotIndex(board->hashKey));
    return slot.key == board->hashKey && slot.bound == HASH_EXACT ? slot.move : 0;
}

i32 hashFilledPermille() {
    constexpr u64 sample = 1000;
    i32 filled = 0;
    for (u64 i = 0; i < sample; ++i) {
        filled += readSlot(i * recordsInUse.count / sample).key != 0 ? 1 : 0;
    }
    return filled;
}

u64 hashFilled() {
    u64 filled = 0;
    for (u64 i = 0; i < heldEntries; ++i) {
        filled += readSlot(i).key != 0 ? 1 : 0;
    }
    return filled;
}
