// The transposition table: what a probe returns, what a store replaces, and that a clear leaves nothing.
#include "board/board.h"
#include "frontend/session.h"
#include "hash/hash.h"
#include "platform/platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr u64 smallTable = 4096;
constexpr Mossa firstMove = makeMossa(MOVE_KNIGHT, 6, 21);
constexpr Mossa secondMove = makeMossa(PROMO_CAPT, 54, 63, QUEEN);
constexpr Mossa widestMove = makeMossa(EN_PASSANT, 39, 46);

// splitmix64: keys that spread over the table.
u64 keyNumber(u64 n) {
    u64 z = n * 0x9E3779B97F4A7C15ULL + 0x2545F4914F6CDD1DULL;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

// Both operations take the key from the position at `board`.
void storeAt(u64 key, i32 depth, i32 value, HashBound bound, Mossa move) {
    board->hashKey = key;
    hashStore(depth, value, bound, move);
}

struct Probed {
    i32 result;
    ys_hash slot;
};

Probed probeAt(u64 key, i32 depth, i32 alpha, i32 beta) {
    board->hashKey = key;
    Probed probed{};
    probed.slot.bound = HASH_LOWER;  // so that a slot left uncopied shows
    probed.result = hashProbe(probed.slot, depth, alpha, beta);
    return probed;
}

u64 heldRecords = 0;  // of the table allocated last

std::string allocate(u64 entries, i32 megabytes) {
    testing::internal::CaptureStdout();
    heldRecords = hashAlloc(entries, megabytes);
    return testing::internal::GetCapturedStdout();
}

class TranspositionTable : public testing::Test {
  protected:
    void SetUp() override {
        newGame();
        allocate(smallTable, 0);
    }
    void TearDown() override { allocate(1, 0); }
};

TEST_F(TranspositionTable, AnEmptySlotMissesAndReadsAsExactZero) {
    const Probed probed = probeAt(keyNumber(1), 0, -100, 100);
    EXPECT_EQ(probed.result, HASH_MISS);
    EXPECT_EQ(probed.slot.key, 0U);
    EXPECT_EQ(probed.slot.bound, HASH_EXACT);
    EXPECT_EQ(probed.slot.depth, 0);
    EXPECT_EQ(probed.slot.value, 0);
    EXPECT_EQ(probed.slot.move, 0U);
}

TEST_F(TranspositionTable, AStoredRecordComesBackWhole) {
    for (const Mossa move : {Mossa{0}, firstMove, secondMove, widestMove, makeMossa(CASTLE_LONG, 4, 2)}) {
        storeAt(keyNumber(2), 200, -19998, HASH_LOWER, move);
        const ys_hash slot = probeAt(keyNumber(2), 255, 0, 1).slot;
        EXPECT_EQ(slot.key, keyNumber(2));
        EXPECT_EQ(slot.depth, 200);
        EXPECT_EQ(slot.value, -19998);
        EXPECT_EQ(slot.bound, HASH_LOWER);
        EXPECT_EQ(slot.move, move);
        hashClear(smallTable);
    }
}

TEST_F(TranspositionTable, AForeignSlotIsCopiedAllTheSame) {
    storeAt(keyNumber(3), 7, 42, HASH_UPPER, firstMove);
    const Probed probed = probeAt(keyNumber(3) + smallTable, 0, -100, 100);
    EXPECT_EQ(probed.result, HASH_MISS);
    EXPECT_EQ(probed.slot.key, keyNumber(3));
    EXPECT_EQ(probed.slot.bound, HASH_UPPER);
    EXPECT_EQ(probed.slot.move, firstMove);
}

struct ProbeCase {
    const char* name;
    HashBound bound;
    i32 value;
    i32 storedDepth;
    i32 askedDepth;
    i32 alpha;
    i32 beta;
    i32 expected;
};

constexpr ProbeCase probeCases[] = {
    {"exact, inside", HASH_EXACT, 50, 5, 5, 0, 100, 50},
    {"exact, above the window", HASH_EXACT, 500, 5, 5, 0, 100, 500},
    {"exact, below the window", HASH_EXACT, -500, 5, 5, 0, 100, -500},
    {"exact, asked deeper", HASH_EXACT, 50, 5, 6, 0, 100, HASH_NO_CUT},
    {"exact, asked shallower", HASH_EXACT, 50, 5, 4, 0, 100, 50},
    {"lower bound below alpha gives alpha", HASH_LOWER, 100, 5, 5, 150, 200, 150},
    {"lower bound at alpha gives alpha", HASH_LOWER, 100, 5, 5, 100, 200, 100},
    {"lower bound above beta", HASH_LOWER, 100, 5, 5, 50, 90, 90},
    {"lower bound at beta", HASH_LOWER, 100, 5, 5, 50, 100, 100},
    {"lower bound inside", HASH_LOWER, 100, 5, 5, 50, 150, HASH_NO_CUT},
    {"upper bound above beta", HASH_UPPER, 100, 5, 5, 50, 90, HASH_NO_CUT},
    {"upper bound inside", HASH_UPPER, 100, 5, 5, 50, 150, HASH_NO_CUT},
    {"upper bound at alpha", HASH_UPPER, 100, 5, 5, 100, 150, 100},
    {"upper bound below alpha", HASH_UPPER, 100, 5, 5, 120, 150, 120},
    {"upper bound of too little depth", HASH_UPPER, 100, 5, 6, 120, 150, HASH_NO_CUT},
    {"a depth beyond 127 is unsigned", HASH_EXACT, 9, 200, 150, 0, 100, 9},
};

TEST_F(TranspositionTable, AProbeAnswersByBoundDepthAndWindow) {
    for (const ProbeCase& c : probeCases) {
        SCOPED_TRACE(c.name);
        hashClear(smallTable);
        storeAt(keyNumber(4), c.storedDepth, c.value, c.bound, firstMove);
        const Probed probed = probeAt(keyNumber(4), c.askedDepth, c.alpha, c.beta);
        EXPECT_EQ(probed.result, c.expected);
        EXPECT_EQ(probed.slot.move, firstMove);
    }
}

TEST_F(TranspositionTable, AMateScoreIsReturnedUnchanged) {
    storeAt(keyNumber(5), 3, 19995, HASH_EXACT, firstMove);
    EXPECT_EQ(probeAt(keyNumber(5), 3, -32000, 32000).result, 19995);
}

TEST_F(TranspositionTable, ABoundReplacesWhateverThereIs) {
    storeAt(keyNumber(6), 20, 5, HASH_EXACT, firstMove);
    storeAt(keyNumber(6) + smallTable, 1, 7, HASH_UPPER, secondMove);
    EXPECT_EQ(probeAt(keyNumber(6), 0, 0, 1).result, HASH_MISS);
    const ys_hash slot = probeAt(keyNumber(6) + smallTable, 0, 0, 1).slot;
    EXPECT_EQ(slot.depth, 1);
    EXPECT_EQ(slot.move, secondMove);
}

TEST_F(TranspositionTable, AnExactValueOfLesserDepthIsDropped) {
    storeAt(keyNumber(7), 6, 5, HASH_LOWER, firstMove);
    storeAt(keyNumber(7), 5, 9, HASH_EXACT, secondMove);
    EXPECT_EQ(probeAt(keyNumber(7), 0, 0, 1).slot.value, 5);
    storeAt(keyNumber(7) + smallTable, 5, 9, HASH_EXACT, secondMove);
    EXPECT_EQ(probeAt(keyNumber(7), 0, 0, 1).slot.value, 5);
    storeAt(keyNumber(7) + smallTable, 6, 9, HASH_EXACT, secondMove);
    EXPECT_EQ(probeAt(keyNumber(7) + smallTable, 6, 0, 1).result, 9);
}

TEST_F(TranspositionTable, TheDepthOfAClearedRecordDoesNotKeepAnExactValueOut) {
    storeAt(keyNumber(8), 60, 5, HASH_EXACT, firstMove);
    hashClear(smallTable);
    storeAt(keyNumber(8), 1, 9, HASH_EXACT, 0);
    const Probed probed = probeAt(keyNumber(8), 1, 0, 100);
    EXPECT_EQ(probed.result, 9);
    EXPECT_EQ(probed.slot.move, 0U);
}

TEST_F(TranspositionTable, NoMoveKeepsTheOldOneOfTheSamePosition) {
    storeAt(keyNumber(9), 5, 10, HASH_UPPER, firstMove);
    storeAt(keyNumber(9), 6, 20, HASH_LOWER, 0);
    EXPECT_EQ(probeAt(keyNumber(9), 0, 0, 1).slot.move, firstMove);
    storeAt(keyNumber(9), 6, 20, HASH_EXACT, 0);
    EXPECT_EQ(probeAt(keyNumber(9), 0, 0, 1).slot.move, firstMove);
    storeAt(keyNumber(9) + smallTable, 6, 20, HASH_LOWER, 0);
    EXPECT_EQ(probeAt(keyNumber(9) + smallTable, 0, 0, 1).slot.move, 0U);
}

// ---- the slot of a key ----------------------------------------------------------------------------------------

TEST_F(TranspositionTable, TheSlotIsTheKeyModuloTheNumberOfRecords) {
    for (const u64 entries :
         {u64{1}, u64{2}, u64{3}, u64{7}, u64{4096}, u64{65536}, u64{262143}, u64{1000003}}) {
        SCOPED_TRACE(entries);
        allocate(entries, 0);
        std::unordered_map<u64, u64> keyAt;
        const auto checkKey = [&](u64 key) {
            const u64 before = probeAt(key, 0, 0, 1).slot.key;
            const auto found = keyAt.find(key % entries);
            EXPECT_EQ(before, found == keyAt.end() ? 0 : found->second);
            storeAt(key, 1, 0, HASH_LOWER, firstMove);
            keyAt[key % entries] = key;
        };
        for (u64 n = 1; n < 20000; ++n) {
            checkKey(keyNumber(n));
        }
        for (const u64 multiple : {u64{1}, u64{2}, ~u64{0} / entries - 1, ~u64{0} / entries}) {
            for (const u64 offset : {~u64{0}, u64{0}, u64{1}}) {
                checkKey(multiple * entries + offset);
            }
        }
        checkKey(~u64{0});
    }
}

// ---- clearing -------------------------------------------------------------------------------------------------

// A generation number comes round after some thousand clears: nothing of its last time may be left then.
TEST_F(TranspositionTable, NothingOutlivesAClearHoweverOftenItIsCleared) {
    constexpr u64 entries = 50000;
    constexpr i32 clears = 5000;
    constexpr u64 keysPerClear = 40;
    allocate(entries, 0);
    for (i32 i = 0; i < clears; ++i) {
        hashClear(entries);
        for (u64 n = 0; n < keysPerClear; ++n) {
            const Probed probed = probeAt(keyNumber(n), 0, 0, 1);
            ASSERT_EQ(probed.result, HASH_MISS) << i;
            ASSERT_EQ(probed.slot.key, 0U) << i;
            storeAt(keyNumber(n), 9, 1, HASH_EXACT, secondMove);
        }
    }
}

// Stores another position in the slot next to the key's, so that the page has been written since the last clear.
void storeBeside(u64 key, u64 entries) {
    storeAt((key % entries) ^ 1, 1, 1, HASH_LOWER, 0);
}

// Writes records `age` clears after the allocation and looks for them after each of the next 4200.
void expectNoneComesBack(u64 entries, i32 age) {
    constexpr u64 records = 200;
    allocate(entries, 0);
    for (i32 i = 0; i < age; ++i) {
        hashClear(entries);
    }
    for (u64 n = 0; n < records; ++n) {
        storeAt(keyNumber(n), 9, 1, HASH_EXACT, secondMove);
    }
    for (i32 i = 0; i < 4200; ++i) {
        hashClear(entries);
        for (u64 n = 0; n < records; ++n) {
            storeBeside(keyNumber(n), entries);
            ASSERT_NE(probeAt(keyNumber(n), 0, 0, 1).slot.key, keyNumber(n)) << i;
        }
    }
}

TEST_F(TranspositionTable, RecordsWrittenOnceAreGoneInEveryLaterGeneration) {
    for (const u64 entries :
         {u64{50000}, u64{6000000}}) {  // below and above the size up to which pages are kept
        for (const i32 age : {0, 1, 1000, 2045, 2046, 2047, 2048}) {
            SCOPED_TRACE(entries);
            SCOPED_TRACE(age);
            expectNoneComesBack(entries, age);
        }
    }
}

TEST_F(TranspositionTable, FilledCountsTheRecordsOfThisGeneration) {
    EXPECT_EQ(hashFilled(), 0U);
    for (u64 key = 1; key <= 10; ++key) {
        storeAt(key, 1, 1, HASH_EXACT, 0);
    }
    EXPECT_EQ(hashFilled(), 10U);
    hashClear(smallTable);
    EXPECT_EQ(hashFilled(), 0U);
    storeAt(5, 1, 1, HASH_EXACT, 0);
    EXPECT_EQ(hashFilled(), 1U);
}

TEST_F(TranspositionTable, PermilleIsToldFromASampleOfTheTable) {
    EXPECT_EQ(hashFilledPermille(), 0);
    for (u64 key = 1; key <= smallTable / 2; ++key) {
        storeAt(key, 1, 1, HASH_EXACT, 0);
    }
    EXPECT_NEAR(hashFilledPermille(), 500, 20);
    hashClear(smallTable);
    EXPECT_EQ(hashFilledPermille(), 0);
}

TEST_F(TranspositionTable, TheExactMoveNeedsAnExactRecordOfThePosition) {
    storeAt(keyNumber(10), 3, 1, HASH_EXACT, firstMove);
    EXPECT_EQ(hashExactMove(), firstMove);
    storeAt(keyNumber(10), 4, 1, HASH_LOWER, firstMove);
    EXPECT_EQ(hashExactMove(), 0U);
    storeAt(keyNumber(10), 4, 1, HASH_EXACT, firstMove);
    board->hashKey += smallTable;
    EXPECT_EQ(hashExactMove(), 0U);
}

// ---- sizes ----------------------------------------------------------------------------------------------------

TEST_F(TranspositionTable, AllocationTellsSizeAndRecords) {
    EXPECT_EQ(allocate(262144, 4), "Allocated 4 MB for the Hash Table\nHash Record allocated: 262144\n");
    EXPECT_EQ(heldRecords, 262144U);
}

constexpr const char* failureLine = "Hash Table Memory Allocation Failed!\n";

TEST_F(TranspositionTable, WithoutRecordsOneServes) {
    EXPECT_EQ(allocate(0, 0), "Allocated 0 MB for the Hash Table\nHash Record allocated: 0\n");
    for (const u64 believed : {u64{0}, u64{1} << 20, ~u64{0}}) {
        hashClear(believed);
        EXPECT_EQ(probeAt(keyNumber(11), 0, 0, 100).result, HASH_MISS);
        storeAt(keyNumber(11), 3, 50, HASH_EXACT, firstMove);
        EXPECT_EQ(probeAt(keyNumber(11), 3, 0, 100).result, 50);
        EXPECT_EQ(hashFilled(), 1U);
        storeAt(keyNumber(12), 3, 60, HASH_LOWER, firstMove);
        EXPECT_EQ(probeAt(keyNumber(11), 3, 0, 100).result, HASH_MISS);
    }
}

struct OddSize {
    const char* name;
    u64 entries;
    i32 megabytes;
};

constexpr OddSize oddSizes[] = {
    {"2 to the power 60, whose bytes are 0 in 64 bits", u64{1} << 60, 2147483647},
    {"all ones, as from a negative size", ~u64{0}, -1},
    {"2147483647 MB", u64{2147483647} << 16, 2147483647},
    {"whose bytes are 64 kB in 64 bits", (u64{1} << 60) + 4096, 64},
};

TEST_F(TranspositionTable, WhatCannotBeHadGivesASmallerTableThatWorks) {
    for (const OddSize& size : oddSizes) {
        SCOPED_TRACE(size.name);
        EXPECT_EQ(allocate(size.entries, size.megabytes), failureLine);
        EXPECT_GE(heldRecords, 1024U);
        EXPECT_LE(heldRecords, 268435456U);
        for (const u64 believed : {size.entries, ~u64{0}}) {
            hashClear(believed);
            for (u64 n = 0; n < 100; ++n) {
                storeAt(keyNumber(n), 3, 50, HASH_EXACT, firstMove);
                EXPECT_EQ(probeAt(keyNumber(n), 3, 0, 100).result, 50);
            }
        }
    }
    EXPECT_EQ(allocate(smallTable, 0), "Allocated 0 MB for the Hash Table\nHash Record allocated: 4096\n");
    EXPECT_EQ(hashFilled(), 0U);
}

TEST_F(TranspositionTable, AClearOfMoreRecordsThanThereAreStaysInside) {
    hashClear(u64{1} << 40);
    for (u64 n = 0; n < 1000; ++n) {
        storeAt(keyNumber(n), 3, 50, HASH_EXACT, firstMove);
        EXPECT_EQ(probeAt(keyNumber(n), 3, 0, 100).result, 50);
    }
}

TEST_F(TranspositionTable, AClearOfFewerRecordsLeavesNoneInUseBeyond) {
    for (const u64 entries : {u64{1}, u64{0}}) {  // one record is always in use
        hashClear(entries);
        storeAt(13, 3, 50, HASH_EXACT, firstMove);
        EXPECT_EQ(probeAt(14, 3, 0, 100).slot.key, 13U) << entries;
    }
}

TEST(TranspositionTableDeathTest, BeforeTheFirstAllocationOneRecordServes) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";  // begins anew, without what other tests allocated
    EXPECT_EXIT(
        {
            newGame();
            hashClear(5);
            storeAt(13, 3, 50, HASH_EXACT, firstMove);
            _exit(probeAt(14, 3, 0, 100).slot.key == 13 && hashFilled() == 1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

// ---- cost -----------------------------------------------------------------------------------------------------

struct MemoryInUse {
    u64 addresses;
    u64 resident;
};

// In bytes, 0 where the system does not tell.
MemoryInUse memoryInUse() {
    std::ifstream statm("/proc/self/statm");
    MemoryInUse pages{};
    statm >> pages.addresses >> pages.resident;
    return {pages.addresses * 4096, pages.resident * 4096};
}

TEST_F(TranspositionTable, AllocationGivesTheFormerTableBack) {
    constexpr u64 allocations = 500;
    const u64 before = memoryInUse().addresses;
    for (u64 i = 0; i < allocations; ++i) {
        allocate(smallTable, 0);
    }
    EXPECT_LT(memoryInUse().addresses, before + allocations * 4096 / 4) << "not a page of each is left";
}

TEST_F(TranspositionTable, ClearsOfTheDefaultTableCostNeitherTimeNorMemory) {
    constexpr u64 defaultEntries = 268435456;
    constexpr i32 clears = 200;
    constexpr u64 memoryLimit = 32U << 20;
    const std::string said = allocate(defaultEntries, 4096);
    if (said.starts_with(failureLine)) {
        GTEST_SKIP() << "no 4 GB of addresses here";
    }
    const u64 before = memoryInUse().resident;
    const std::clock_t start = std::clock();
    for (i32 i = 0; i < clears; ++i) {
        hashClear(defaultEntries);
        for (u64 n = 0; n < 1000; ++n) {
            EXPECT_EQ(probeAt(keyNumber(n), 1, 0, 1).result, HASH_MISS);
        }
        storeAt(keyNumber(static_cast<u64>(i)), 1, 1, HASH_EXACT, 0);
    }
    // Writing to all of it takes half a minute and more.
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    EXPECT_LT(seconds, 10.0) << "of the processor: a clear takes milliseconds";
    EXPECT_LT(memoryInUse().resident, before + memoryLimit);
}

// Bytes on large pages, 0 where the system does not tell.
u64 bytesOnLargePages() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    std::string word;
    while (rollup >> word) {
        if (word == "AnonHugePages:") {
            u64 kilobytes = 0;
            rollup >> kilobytes;
            return kilobytes * 1024;
        }
    }
    return 0;
}

bool largePagesCanBeMade() {
    constexpr std::size_t bytes = 2 * largePageBytes;
    void* memory = allocatePages(bytes, false);
    const auto start =
        (reinterpret_cast<std::uintptr_t>(memory) + largePageBytes - 1) & ~(largePageBytes - 1);
    *reinterpret_cast<u8*>(start) = 1;
    const bool made = allowLargePages(memory, bytes) && makeLargePage(reinterpret_cast<void*>(start)) &&
                      bytesOnLargePages() >= largePageBytes && *reinterpret_cast<u8*>(start) == 1;
    freePages(memory, bytes);
    return made;
}

// A record on each page, as the hashes of a long search would be.
void writeToPages(u64 first, u64 last) {
    for (u64 page = first; page < last; ++page) {
        storeAt(page * (4096 / sizeof(ys_hash)) + 1, 3, 50, HASH_EXACT, firstMove);
    }
}

TEST_F(TranspositionTable, ALongSearchPutsALargeTableOnLargePagesAndKeepsItsRecords) {
    if (!largePagesCanBeMade()) {
        GTEST_SKIP() << "the system makes no large pages";
    }
    constexpr u64 pages = 65536;
    constexpr u64 megabyte = 1U << 20;
    static_cast<void>(allocate(pages * (4096 / sizeof(ys_hash)), 256));
    const u64 before = bytesOnLargePages();
    writeToPages(0, 15000);
    EXPECT_EQ(bytesOnLargePages(), before) << "a short search leaves the memory small";
    writeToPages(15000, 20000);
    EXPECT_GT(bytesOnLargePages(), before + 100 * megabyte);
    for (u64 page = 0; page < pages; ++page) {
        ASSERT_EQ(probeAt(page * (4096 / sizeof(ys_hash)) + 1, 3, 0, 100).result,
                  page < 20000 ? 50 : HASH_MISS);
    }
    hashClear(pages * (4096 / sizeof(ys_hash)));
    EXPECT_EQ(hashFilled(), 0U);
    EXPECT_GT(bytesOnLargePages(), before + 100 * megabyte) << "and a clear leaves it large";
}

}  // namespace
