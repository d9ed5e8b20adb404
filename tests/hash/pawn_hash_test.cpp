// The pawn hash.
#include "board/board.h"
#include "board/tables.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "hash/hash.h"
#include "hash/random64.h"
#include "support/position.h"

#include <gtest/gtest.h>

#include <string>

static std::string allocate(i32 megabytes, u64 entries) {
    EngineOptions.pawnHashSize = megabytes;
    EngineOptions.pawnHashEntries = entries;
    testing::internal::CaptureStdout();
    pawnHashAlloc();
    return testing::internal::GetCapturedStdout();
}

static u64 ownKey(TBB ownPawns, TBB enemyPawns, bool black) {
    return pawnHashKeys(ownPawns, enemyPawns, black).own;
}

constexpr const char* kiwipete = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";
constexpr const char* kiwipeteBlack = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R b KQkq - 0 1";
constexpr const char* kiwipeteMirrored =
    "r3k2r/pppbbppp/2n2q1P/1P2p3/3pn3/BN2PNP1/P1PPQPB1/R3K2R b KQkq - 0 1";
constexpr const char* pawnless = "4k3/8/8/8/8/8/8/R3K3 w - - 0 1";

constexpr u64 megabyteEntries = 43690;  // 2^20 / 24

static u64 keyOf(const char* fen) {
    setUpPosition(fen);
    pawnHashStore(1, 0, 0);
    hashPawn copy{};
    EXPECT_EQ(pawnHashProbe(copy), 1);
    return copy.pawnKey;
}

// The key pawn by pawn.
static u64 keyByPawns(TBB own, TBB enemy, bool black) {
    u64 key = 0;
    for (u32 s = 0; s < 64; ++s) {
        key ^= (own >> s & 1) != 0 ? Random64[(black ? 0 : 64) + s] : 0;
        key ^= (enemy >> s & 1) != 0 ? Random64[(black ? 64 : 0) + s] : 0;
    }
    return static_cast<u64>(static_cast<i64>(static_cast<i32>(static_cast<u32>(key))));
}

TEST(Random64, BeginsAndEndsAsPublished) {
    EXPECT_EQ(Random64[0], 0x9D39247E33776D41ULL);
    EXPECT_EQ(Random64[780], 0xF8D626AAAF278509ULL);
}

TEST(PawnHashKey, IsTheXorOfOneNumberAPawnCutTo32BitsWithSign) {
    u64 state = 88172645463325252ULL;
    const auto random = [&state] {
        state ^= state << 13;
        state ^= state >> 7;
        return state ^= state << 17;
    };
    bool sawNegative = false;
    for (i32 i = 0; i < 20000; ++i) {
        const TBB own = i % 3 == 0 ? random() : random() & random() & random();
        const TBB enemy = random() & random() & ~own;
        for (const bool black : {false, true}) {
            const u64 key = ownKey(own, enemy, black);
            ASSERT_EQ(key, keyByPawns(own, enemy, black));
            ASSERT_EQ(pawnHashKeys(own, enemy, black).other,
                      keyByPawns(byteSwap(enemy), byteSwap(own), !black));
            sawNegative = sawNegative || key > 0xFFFFFFFF;
        }
    }
    EXPECT_TRUE(sawNegative);
}

TEST(PawnHashKey, OfSinglePawns) {
    // White's a2 with White to move is entry 64 + 8 of the numbers, with Black to move a7 of the frame: 64 + 48.
    const auto cut = [](u64 number) { return static_cast<u64>(static_cast<i64>(static_cast<i32>(number))); };
    EXPECT_EQ(ownKey(TBB{1} << 8, 0, false), cut(Random64[72]));
    EXPECT_EQ(ownKey(0, TBB{1} << 48, true), cut(Random64[112]));
    EXPECT_EQ(ownKey(TBB{1} << 8, 0, true), cut(Random64[8]));
}

TEST(PawnHashKey, TellsViewsAndColoursApart) {
    allocate(1, megabyteEntries);
    const u64 white = keyOf(kiwipete);
    EXPECT_NE(white, keyOf(kiwipeteBlack));
    EXPECT_NE(white, keyOf(kiwipeteMirrored));
    EXPECT_NE(keyOf(kiwipeteBlack), keyOf(kiwipeteMirrored));
}

TEST(PawnHashKey, BlacksViewSharesTheKeyOfWhitesViewOfTheMirroredPlacement) {
    const TBB own = 0x1234500;
    const TBB enemy = 0x00D0A00000000000;
    EXPECT_EQ(ownKey(own, enemy, false), ownKey(enemy, own, true));
}

TEST(PawnHash, GivesBackWhatWasStored) {
    allocate(1, megabyteEntries);
    setUpPosition(kiwipete);
    hashPawn copy{};
    EXPECT_EQ(pawnHashProbe(copy), PAWN_HASH_MISS);
    EXPECT_EQ(copy.pawnKey, 0U);
    pawnHashStore(35, 0x800000000, 7);
    EXPECT_EQ(pawnHashProbe(copy), 35);
    EXPECT_EQ(copy.passedPawns, 0x800000000U);
    EXPECT_EQ(i32{copy.pawnScore}, 35);
    EXPECT_EQ(i32{copy.healthyPawns}, 7);
}

TEST(PawnHash, AnswersTheScoreAsAnUnsignedNumber) {
    allocate(1, megabyteEntries);
    setUpPosition(kiwipete);
    pawnHashStore(-15, 0, 8);
    hashPawn copy{};
    EXPECT_EQ(pawnHashProbe(copy), 65536 - 15);
    EXPECT_EQ(i32{copy.pawnScore}, -15);
}

TEST(PawnHash, WithoutPawnsAnEmptySlotMatches) {
    allocate(1, megabyteEntries);
    setUpPosition(pawnless);
    hashPawn copy{};
    copy.healthyPawns = 9;
    EXPECT_EQ(pawnHashProbe(copy), 0);
    EXPECT_EQ(copy.passedPawns, 0U);
    EXPECT_EQ(i32{copy.healthyPawns}, 0);
}

TEST(PawnHash, AStoreReplacesWhateverTheSlotHeld) {
    allocate(0, 1);
    setUpPosition(kiwipete);
    pawnHashStore(10, 0, 1);
    setUpPosition(kiwipeteBlack);
    hashPawn copy{};
    EXPECT_EQ(pawnHashProbe(copy), PAWN_HASH_MISS);
    EXPECT_EQ(i32{copy.pawnScore}, 10) << "a miss shows what the slot held";
    pawnHashStore(20, 0, 2);
    setUpPosition(kiwipete);
    EXPECT_EQ(pawnHashProbe(copy), PAWN_HASH_MISS);
}

TEST(PawnHash, TheOtherSidesViewHasItsOwnRecord) {
    allocate(1, megabyteEntries);
    setUpPosition(kiwipete);
    pawnHashStore(10, 0, 1);
    flipBoard(*board);
    hashPawn copy{};
    EXPECT_EQ(pawnHashProbe(copy), PAWN_HASH_MISS);
    pawnHashStore(20, 0, 2);
    EXPECT_EQ(pawnHashFilled(), 2U);
    flipBoard(*board);
    EXPECT_EQ(pawnHashProbe(copy), 10);
}

TEST(PawnHash, IndexIsTheUnsignedKeyModuloTheRecords) {
    for (const u64 entries : {u64{1}, u64{2}, u64{3}, megabyteEntries, u64{11184810}}) {
        allocate(1, entries);
        const hashPawn* first = &pawnHashSlot(0);
        for (const u64 key :
             {u64{0}, u64{1}, u64{0x7FFFFFFF}, ~u64{0}, u64{0xFFFFFFFF80000000}, u64{0xFFFFFFFFABCDEF01}}) {
            EXPECT_EQ(static_cast<u64>(&pawnHashSlot(key) - first), key % entries) << entries;
        }
    }
}

TEST(PawnHash, SaysWhatItAllocates) {
    EXPECT_EQ(allocate(1, megabyteEntries), "Allocated 1 MB for the Pawn Hash Table\n");
    EXPECT_EQ(allocate(256, 11184810), "Allocated 256 MB for the Pawn Hash Table\n");
    EXPECT_EQ(pawnHashFilled(), 0U);
}

TEST(PawnHash, AllocatingAgainEmptiesIt) {
    allocate(1, megabyteEntries);
    setUpPosition(kiwipete);
    pawnHashStore(10, 0, 1);
    allocate(1, megabyteEntries);
    EXPECT_EQ(pawnHashFilled(), 0U);
}

TEST(PawnHash, ClearEmptiesItAlsoWithoutATable) {
    for (const u64 entries : {megabyteEntries, u64{0}}) {
        allocate(1, entries);
        setUpPosition(kiwipete);
        pawnHashStore(10, 0, 1);
        EXPECT_EQ(pawnHashFilled(), 1U);
        pawnHashClear();
        EXPECT_EQ(pawnHashFilled(), 0U);
    }
}

TEST(PawnHash, WithoutRecordsOneServes) {
    EXPECT_EQ(allocate(7, 0), "Allocated 7 MB for the Pawn Hash Table\n");
    setUpPosition(kiwipete);
    hashPawn copy{};
    EXPECT_EQ(pawnHashProbe(copy), PAWN_HASH_MISS);
    pawnHashStore(10, 5, 1);
    EXPECT_EQ(pawnHashProbe(copy), 10);
    EXPECT_EQ(pawnHashFilled(), 1U);
    setUpPosition(kiwipeteBlack);
    EXPECT_EQ(pawnHashProbe(copy), PAWN_HASH_MISS);
    allocate(1, megabyteEntries);
}

struct FailureCase {
    const char* name;
    u64 entries;
};

constexpr FailureCase failureCases[] = {
    {"more than there is", u64{1} << 56},
    {"more than can be counted in bytes", ~u64{0} / 2},
    {"a product that wraps to a small number", ~u64{0} / 24 + 2},
};

TEST(PawnHash, WhatCannotBeHadGivesASmallerTableThatWorks) {
    for (const FailureCase& c : failureCases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(allocate(7, c.entries), "Pawn Hash Table Memory Allocation Failed!\n");
        setUpPosition(kiwipete);
        hashPawn copy{};
        EXPECT_EQ(pawnHashProbe(copy), PAWN_HASH_MISS);
        pawnHashStore(10, 5, 1);
        EXPECT_EQ(pawnHashProbe(copy), 10);
        EXPECT_EQ(pawnHashFilled(), 1U);
    }
    allocate(1, megabyteEntries);
}

TEST(PawnHash, GoesByTheRecordsHeldWhateverTheOptionsSay) {
    allocate(1, megabyteEntries);
    EngineOptions.pawnHashEntries = ~u64{0};  // as a new reading of the configuration may set it
    setUpPosition(kiwipete);
    pawnHashStore(10, 5, 1);
    EngineOptions.pawnHashEntries = 0;
    hashPawn copy{};
    EXPECT_EQ(pawnHashProbe(copy), 10);
    EXPECT_EQ(pawnHashFilled(), 1U);
}
