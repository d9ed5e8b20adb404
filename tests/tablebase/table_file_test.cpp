// Files that the tests write themselves are read back value by value; files that are damaged are refused, or at worst
// give a failed probe.
#include <algorithm>
#include <random>
#include "guarded_bytes.h"
#include "raw_stream.h"
#include "real_tables.h"
#include "support/test_data.h"
#include "table_folder.h"

using writer::FilePlan;
using writer::StreamPlan;

namespace {

tbEntry& entryOf(const std::string& name) {
    tbEntry* entry = lookupTable(materialOfName(name.c_str()).key);
    if (entry == nullptr) {
        ADD_FAILURE() << name << " is not registered";
        std::abort();
    }
    return *entry;
}

// Loads the table; what is printed.
std::string load(const std::string& name, i32& loaded) {
    testing::internal::CaptureStdout();
    loaded = loadTableWdl(entryOf(name), name.c_str());
    entryOf(name).ready = static_cast<u8>(loaded);
    return testing::internal::GetCapturedStdout();
}

// Values in runs of up to `runMax`, of `valueCount` kinds.
std::vector<u8> randomValues(std::size_t count, i32 valueCount, std::size_t runMax, u32 seed) {
    std::mt19937 random(seed);
    std::vector<u8> values;
    while (values.size() < count) {
        const std::size_t length = std::min(random() % runMax + 1, count - values.size());
        values.insert(values.end(), length, static_cast<u8>(random() % static_cast<u32>(valueCount)));
    }
    return values;
}

StreamPlan planOf(const std::vector<u8>& values) {
    return StreamPlan{writer::runsOf(values), 0, false, 6, 12, 4, 3, false, false};
}

void expectValues(const TableSide& side, const std::vector<u8>& values) {
    ASSERT_NE(side.stream, nullptr);
    ASSERT_EQ(side.tbSize, values.size());
    i64 wrong = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        wrong += decodeStream(*side.stream, i) == values[i] ? 0 : 1;
    }
    EXPECT_EQ(wrong, 0);
}

// Bytes of the order of men for KRvK and the like.
std::string threeMenOrder(i32 man) {
    return orderOf({0, man, KING, 8 + KING});
}

constexpr std::size_t threeMenSize = 31332;

FilePlan splitPlan(const StreamPlan& first, const StreamPlan& second) {
    return FilePlan{writer::wdlMagic, 1, {threeMenOrder(ROOK)}, {first, second}, {}};
}

}  // namespace

// ---- reading back ---------------------------------------------------------------------------------------------

namespace {

struct StreamCase {
    const char* name;
    i32 valueCount;
    std::size_t runMax;
    i32 blockSize;
    i32 indexBits;
    i32 pairDepth;
    i32 mixedPairs;
    bool equalLengths;
    bool reverseLeaves;
};

constexpr StreamCase streamCases[] = {
    {"SingleValuesInSmallBlocks", 5, 1, 4, 6, 0, 0, false, false},
    {"OneCodeLength", 5, 3, 5, 10, 1, 4, true, false},
    {"OneCodeLengthAndPairsBeforeTheirParts", 5, 3, 5, 10, 3, 4, true, true},
    {"ManyCodeLengths", 5, 200, 6, 12, 8, 10, false, false},
    {"ManyCodeLengthsAndPairsBeforeTheirParts", 5, 200, 6, 12, 8, 10, false, true},
    {"SymbolsOf256Values", 2, 3000, 6, 15, 8, 0, false, false},
    {"IndexPointsCloserThanBlocks", 5, 400, 10, 3, 5, 2, false, false},
    {"IndexPointsFartherThanTheTable", 5, 40, 5, 20, 5, 2, false, false},
    {"BlocksOfOneByte", 2, 20, 0, 8, 3, 0, false, false},
    {"EverythingInOneBlock", 3, 60, 16, 16, 6, 3, false, false},
    {"TwoHundredValues", 200, 2, 7, 9, 1, 50, false, false},
};

}  // namespace

class WrittenStream : public testing::TestWithParam<StreamCase> {};

TEST_P(WrittenStream, IsReadBackValueByValue) {
    const StreamCase& c = GetParam();
    const TableFolder folder;
    std::vector<u8> values[2];
    StreamPlan plans[2];
    for (u32 side = 0; side < 2; ++side) {
        values[side] = randomValues(threeMenSize, c.valueCount, c.runMax, side + 1);
        plans[side] = StreamPlan{writer::runsOf(values[side]),
                                 0,
                                 false,
                                 c.blockSize,
                                 c.indexBits,
                                 c.pairDepth,
                                 c.mixedPairs,
                                 c.equalLengths,
                                 c.reverseLeaves};
    }
    folder.write("KRvK.rtbw", writer::fileBytes(splitPlan(plans[0], plans[1])));
    tables::registerFolder(folder.path.string());
    i32 loaded = 0;
    EXPECT_EQ(load("KRvK", loaded), "");
    ASSERT_EQ(loaded, 1);
    const tbEntry& entry = entryOf("KRvK");
    expectValues(entry.file->side[0], values[0]);
    expectValues(entry.file->side[1], values[1]);
}

INSTANTIATE_TEST_SUITE_P(TableFile, WrittenStream, testing::ValuesIn(streamCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(TableFile, AConstantStreamNeedsNoTables) {
    const TableFolder folder;
    const std::vector<u8> values = randomValues(threeMenSize, 5, 9, 1);
    folder.write("KRvK.rtbw", writer::fileBytes(splitPlan(constantPlan(3), planOf(values))));
    folder.write("KQvK.rtbw",
                 writer::fileBytes(
                     {writer::wdlMagic, 1, {threeMenOrder(QUEEN)}, {planOf(values), constantPlan(4)}, {}}));
    tables::registerFolder(folder.path.string());
    i32 loaded = 0;
    ASSERT_EQ(load("KRvK", loaded), "");
    ASSERT_EQ(load("KQvK", loaded), "");
    expectValues(entryOf("KRvK").file->side[0], std::vector<u8>(threeMenSize, 3));
    expectValues(entryOf("KRvK").file->side[1], values);
    expectValues(entryOf("KQvK").file->side[0], values);
    expectValues(entryOf("KQvK").file->side[1], std::vector<u8>(threeMenSize, 4));
}

TEST(TableFile, ATableThatIsNotSplitHasOneStream) {
    const TableFolder folder;
    const std::vector<u8> values = randomValues(threeMenSize, 5, 9, 1);
    FilePlan plan{writer::wdlMagic, 0, {threeMenOrder(ROOK)}, {planOf(values)}, {}};
    folder.write("KRvK.rtbw", writer::fileBytes(plan));
    tables::registerFolder(folder.path.string());
    i32 loaded = 0;
    EXPECT_EQ(load("KRvK", loaded), "");
    ASSERT_EQ(loaded, 1);
    expectValues(entryOf("KRvK").file->side[0], values);
    EXPECT_EQ(entryOf("KRvK").file->side[1].stream, nullptr);
    // its other side to move cannot be probed
    i32 wdl = 0;
    EXPECT_TRUE(tables::wdlOf("8/8/3k4/8/8/8/8/K5R1 w - -", wdl));
    EXPECT_FALSE(tables::wdlOf("8/8/3k4/8/8/8/8/K5R1 b - -", wdl));
}

TEST(TableFile, APawnTableHasStreamsByFileAndSide) {
    const TableFolder folder;
    constexpr u64 size = 6 * 63 * 62;
    FilePlan plan{writer::wdlMagic, 3, {}, {}, {}};
    std::vector<std::vector<u8>> values;
    for (u32 f = 0; f < 4; ++f) {
        // each file has its own place for the leading pawn, each side its own order of the kings
        const char pivot = static_cast<char>(f % 3 | (f + 1) % 3 << 4);
        plan.orders.push_back({pivot, 0x11, static_cast<char>(0xE6), 0x6E});
        for (u32 side = 0; side < 2; ++side) {
            values.push_back(randomValues(size, 5, 30, 10 * f + side));
            plan.streams.push_back(planOf(values.back()));
        }
    }
    folder.write("KPvK.rtbw", writer::fileBytes(plan));
    tables::registerFolder(folder.path.string());
    i32 loaded = 0;
    EXPECT_EQ(load("KPvK", loaded), "");
    ASSERT_EQ(loaded, 1);
    for (u32 f = 0; f < 4; ++f) {
        for (u32 side = 0; side < 2; ++side) {
            SCOPED_TRACE("file " + std::to_string(f) + " side " + std::to_string(side));
            const TableSide& read = entryOf("KPvK").file[f].side[side];
            expectValues(read, values[2 * f + side]);
            EXPECT_EQ(read.pieces[1], side == 0 ? 6 : 14);
        }
    }
}

// More values than 32 bits can number: long runs keep the file small.
TEST(TableFile, IndicesBeyond32BitsAreReadFullDepth) {
    const TableFolder folder;
    constexpr u64 size = u64{31332} * 61 * 60 * 59;
    std::vector<writer::Run> runs;
    std::mt19937_64 random(1);
    for (u64 left = size; left > 0;) {
        const u64 count = std::min(left, random() % 40'000'000 + 1);
        runs.push_back({static_cast<u8>(runs.size() * 3 % 5), count});
        left -= count;
    }
    const std::string order = orderOf({3, KING, 8 + KING, QUEEN, ROOK, BISHOP, 8 + KNIGHT});
    const StreamPlan stream{runs, 0, false, 6, 24, 8, 0, false, false};
    folder.write("KQRBvKN.rtbw",
                 writer::fileBytes({writer::wdlMagic, 1, {order}, {stream, constantPlan(0)}, {}}));
    tables::registerFolder(folder.path.string());
    i32 loaded = 0;
    EXPECT_EQ(load("KQRBvKN", loaded), "");
    ASSERT_EQ(loaded, 1);
    const TableSide& side = entryOf("KQRBvKN").file->side[0];
    ASSERT_EQ(side.tbSize, size);
    u64 start = 0;
    i64 wrong = 0;
    for (const writer::Run& run : runs) {
        for (const u64 i : {start, start + run.count / 2, start + run.count - 1}) {
            wrong += decodeStream(*side.stream, i) == run.value ? 0 : 1;
        }
        start += run.count;
    }
    EXPECT_EQ(wrong, 0);
}

// ---- probes of written files ----------------------------------------------------------------------------------

namespace {

// Squares of K, man, k for the order of threeMenOrder, from an index of all placements.
struct Placement {
    i32 man;
    i32 king;
    i32 enemyKing;
};

template <typename Visit>
void forEachPlacement(Visit visit) {
    for (i32 man = 0; man < 64; ++man) {
        for (i32 king = 0; king < 64; ++king) {
            for (i32 enemyKing = 0; enemyKing < 64; ++enemyKing) {
                if (man != king && man != enemyKing && king != enemyKing) {
                    visit(Placement{man, king, enemyKing});
                }
            }
        }
    }
}

std::string fenOf(const Placement& p, char man, bool whiteMoves) {
    std::string squares(64, '1');
    squares[p.man] = man;
    squares[p.king] = 'K';
    squares[p.enemyKing] = 'k';
    std::string fen;
    for (i32 rank = 7; rank >= 0; --rank) {
        fen += squares.substr(static_cast<std::size_t>(rank) * 8, 8) + (rank != 0 ? "/" : "");
    }
    return fen + (whiteMoves ? " w - -" : " b - -");
}

// What a DTZ table stores of a distance.
u8 storedOf(i32 dtz, bool inPlies) {
    const i32 plies = std::abs(dtz) - 1;
    return static_cast<u8>(dtz == 0 ? 0 : inPlies ? plies : plies / 2);
}

struct DtzCase {
    const char* name;
    bool whiteStored;
    bool mapped;
    bool inPlies;
};

constexpr DtzCase dtzCases[] = {
    {"FirstSideInPlies", true, false, true},    {"SecondSideInPlies", false, false, true},
    {"FirstSideInPairs", true, false, false},   {"SecondSideInPairs", false, false, false},
    {"FirstSideThroughMaps", true, true, true}, {"SecondSideThroughMaps", false, true, false},
};

// A value map that undoes what the writer does to the stored numbers: number n is stored as 99 - n.
std::vector<std::string> reversedMaps(u8 winLast, u8 lossLast) {
    const auto reversed = [](u8 last) {
        std::string list;
        for (i32 n = 0; n <= 99; ++n) {
            list += static_cast<char>(99 - n <= last ? 99 - n : 0);
        }
        return list;
    };
    return {reversed(winLast), reversed(lossLast), "", ""};
}

}  // namespace

class WrittenDtz : public testing::TestWithParam<DtzCase> {};

// The distances of a real table, stored anew for either side to move, are the same for both sides when probed.
TEST_P(WrittenDtz, GivesTheDistancesOfTheRealTableForBothSides) {
    const DtzCase& c = GetParam();
    const TableFolder folder;
    tables::registerFolder(testDataPath("syzygy"));
    const TableMaterial material = materialOfName("KRvK");
    TableSide layout{};
    layout.pieces = {ROOK, KING, 8 + KING};
    setGroupsPiece(material, layout);
    layout.tbSize = computeFactorsPiece(material, layout, 0);
    std::vector<u8> stored(static_cast<std::size_t>(layout.tbSize));
    std::vector<std::pair<std::string, i32>> expected;
    forEachPlacement([&](const Placement& p) {
        // every index has a placement with the man in this quarter; other squares are for the comparison
        const bool inQuarter = p.man % 8 < 4 && p.man / 8 < 4;
        const bool compared = p.man % 13 == 3;
        if (!inQuarter && !compared) {
            return;
        }
        for (const bool whiteMoves : {true, false}) {
            const std::string fen = fenOf(p, 'R', whiteMoves);
            setUpPosition(fen);
            if (!mayBeProbed(*board) || leftInCheck() != 0) {
                continue;
            }
            const tables::Values real = tables::probe(fen);
            if (compared) {
                expected.push_back({fen, real.dtz});
            }
            if (whiteMoves == c.whiteStored) {
                TablePos pos{p.man, p.king, p.enemyKing};
                const u8 number = storedOf(real.dtz, c.inPlies);
                const u64 idx = indexPieces(material, layout, pos);
                stored[static_cast<std::size_t>(idx)] = static_cast<u8>(c.mapped ? 99 - number : number);
            }
        }
    });
    StreamPlan stream = planOf(stored);
    stream.flags = static_cast<u8>((c.whiteStored ? 0 : DTZ_SIDE) | (c.mapped ? DTZ_MAPPED : 0) |
                                   (c.inPlies ? DTZ_WIN_PLIES | DTZ_LOSS_PLIES : 0));
    FilePlan plan{writer::dtzMagic, 0, {threeMenOrder(ROOK)}, {stream}, {}};
    if (c.mapped) {
        plan.valueMaps.push_back(reversedMaps(99, 99));
    }
    folder.write("KRvK.rtbz", writer::fileBytes(plan));
    folder.write("KRvK.rtbw", realBytes("KRvK.rtbw"));
    tables::registerFolder(folder.path.string());
    i64 wrong = 0;
    for (const auto& [fen, dtz] : expected) {
        const tables::Values found = tables::probe(fen);
        // the real table has pairs of plies where that is shorter
        wrong += found.dtzKnown && std::abs(found.dtz - dtz) <= 1 && (found.dtz > 0) == (dtz > 0) ? 0 : 1;
    }
    EXPECT_EQ(wrong, 0) << "of " << expected.size();
}

INSTANTIATE_TEST_SUITE_P(TableFile, WrittenDtz, testing::ValuesIn(dtzCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(TableFile, EachResultHasItsOwnValueMap) {
    const TableFolder folder;
    folder.write("KRvK.rtbw", realBytes("KRvK.rtbw"));
    FilePlan plan{writer::dtzMagic, 0, {threeMenOrder(ROOK)}, {constantPlan(0)}, {}};
    plan.streams[0].flags = DTZ_MAPPED | DTZ_WIN_PLIES | DTZ_LOSS_PLIES;
    plan.valueMaps.push_back({"\x0A", "\x14", "\x1E", "\x28"});
    folder.write("KRvK.rtbz", writer::fileBytes(plan));
    tables::registerFolder(folder.path.string());
    setUpPosition("8/8/3k4/8/8/8/8/K5R1 w - -");
    const auto stored = [](i32 wdl) {
        i32 success = 1;
        const i32 dtz = probeDtzTable(wdl, success);
        EXPECT_EQ(success, 1);
        return dtz;
    };
    EXPECT_EQ(stored(2), 10);
    EXPECT_EQ(stored(-2), 20);
    EXPECT_EQ(stored(1), 2 * 30);  // never in plies
    EXPECT_EQ(stored(-1), 2 * 40);
}

TEST(TableFile, AStoredNumberBeyondItsValueMapFails) {
    const TableFolder folder;
    folder.write("KRvK.rtbw", realBytes("KRvK.rtbw"));
    std::vector<u8> numbers(threeMenSize, 1);
    numbers[0] = 0;
    FilePlan plan{writer::dtzMagic, 0, {threeMenOrder(ROOK)}, {planOf(numbers)}, {}};
    plan.streams[0].flags = DTZ_MAPPED;
    plan.valueMaps.push_back({"\x0A", "\x14\x15", "", ""});
    folder.write("KRvK.rtbz", writer::fileBytes(plan));
    tables::registerFolder(folder.path.string());
    setUpPosition("8/8/3k4/8/8/8/8/K5R1 w - -");
    i32 success = 1;
    EXPECT_EQ(probeDtzTable(-2, success), 42);
    EXPECT_EQ(success, 1);
    EXPECT_EQ(probeDtzTable(2, success), 0);
    EXPECT_EQ(success, 0);
}

TEST(TableFile, AFailedTableOfDistancesGivesTheLeastDistanceOfTheResult) {
    const TableFolder folder;
    folder.write("KRvK.rtbw", realBytes("KRvK.rtbw"));
    folder.write("KRvK.rtbz", "no table");
    tables::registerFolder(folder.path.string());
    const tables::Values won = tables::probe("4k3/8/4K3/8/8/8/8/7R w - - 0 1");
    EXPECT_TRUE(won.wdlKnown);
    EXPECT_FALSE(won.dtzKnown);
    EXPECT_EQ(won.dtz, 1);
    const tables::Values lost = tables::probe("4k3/8/4K3/8/8/8/8/7R b - - 0 1");
    EXPECT_FALSE(lost.dtzKnown);
    EXPECT_EQ(lost.dtz, -1);
    const tables::Values withEp = tables::probe("4k3/8/4K3/8/8/8/8/7R w - d6 0 1");
    EXPECT_FALSE(withEp.dtzKnown);
    EXPECT_EQ(withEp.dtz, 0) << "the step for en passant gives a failed probe up";
}

TEST(TableFile, ATableThatStoresNeitherSideEndsTheProbe) {
    const TableFolder folder;
    // a symmetric pawn table whose flag says "the other side" for both
    const std::string order = orderOf({0, 1, PAWN, 8 + PAWN, KING, 8 + KING});
    FilePlan wdl{writer::wdlMagic, 2, {order, order, order, order}, {}, {}};
    FilePlan dtz{writer::dtzMagic, 2, {order, order, order, order}, {}, {}};
    for (i32 f = 0; f < 4; ++f) {
        wdl.streams.push_back(constantPlan(0));
        dtz.streams.push_back(constantPlan(0));
        dtz.streams.back().flags = DTZ_SIDE;
    }
    folder.write("KPvKP.rtbw", writer::fileBytes(wdl));
    folder.write("KPvKP.rtbz", writer::fileBytes(dtz));
    for (const char* name : {"KQvK", "KRvK", "KBvK", "KNvK", "KPvK"}) {
        folder.write(std::string(name) + ".rtbw", realBytes(std::string(name) + ".rtbw"));
    }
    tables::registerFolder(folder.path.string());
    const tables::Values values = tables::probe("8/3p4/3k4/8/8/8/P7/K7 w - -");
    EXPECT_TRUE(values.wdlKnown);
    EXPECT_EQ(values.wdl, -2);
    EXPECT_FALSE(values.dtzKnown);
}

// ---- damaged files --------------------------------------------------------------------------------------------

namespace {

struct Damage {
    const char* name;
    std::size_t offset;  // in KRvK.rtbw
    const char* bytes;
    std::size_t count;
};

// KRvK.rtbw: 5 order bytes, pad, the constant stream of White at 10, the header of Black's at 12.
constexpr Damage damages[] = {
    {"the magic", 0, "\x70", 1},
    {"four files without pawns", 4, "\x03", 1},
    {"the head in no place", 5, "\x77", 1},
    {"a man that is none", 6, "\x77", 1},
    {"a man of another kind", 6, "\x55", 1},
    {"the same man twice", 7, "\x44", 1},
    {"blocks of 2 to 32 bytes", 13, "\x20", 1},
    {"no index bits", 14, "\x00", 1},
    {"32 index bits", 14, "\x20", 1},
    {"more blocks than the file holds", 16, "\x00\x00\x00\x7F", 4},
    {"codes of 33 bits", 20, "\x21", 1},
    {"the shortest code longer than the longest", 20, "\x01\x02", 2},
    {"codes without bits", 21, "\x00", 1},
};

// The message and the treatment of a table that cannot be used.
void expectCorrupted(const std::string& bytes) {
    const TableFolder folder;
    folder.write("KRvK.rtbw", bytes);
    tables::registerFolder(folder.path.string());
    for (const char* fen : {"8/8/3k4/8/8/8/8/K5R1 w - -", "8/8/3k4/8/8/8/8/K5R1 w - -",
                            "k5r1/8/8/8/8/3K4/8/8 b - -", "8/8/3k4/8/8/8/8/K5R1 b - -"}) {
        const bool isFirst = lookupTable(materialOfName("KRvK").key) != nullptr;
        testing::internal::CaptureStdout();
        setUpPosition(fen);
        i32 success = 1;
        EXPECT_EQ(probeWdl(success), 0);
        EXPECT_EQ(success, 0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), isFirst ? "Corrupted table.\n" : "");
    }
    EXPECT_EQ(lookupTable(materialOfName("KRvK").key), nullptr);
    EXPECT_EQ(lookupTable(materialOfName("KRvK").key2), nullptr);
}

}  // namespace

TEST(DamagedTable, IsReportedOnceAndOutOfTheRegistryUnderBothColours) {
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.name);
        std::string bytes = realBytes("KRvK.rtbw");
        ASSERT_GT(bytes.size(), damage.offset + damage.count);
        bytes.replace(damage.offset, damage.count, damage.bytes, damage.count);
        expectCorrupted(bytes);
    }
}

TEST(DamagedTable, ThatIsCutShortIsReported) {
    const std::string bytes = realBytes("KRvK.rtbw");
    const std::size_t endOfData = 128 + 64;  // a checksum follows that nobody needs
    ASSERT_GT(bytes.size(), endOfData);
    for (std::size_t size = 1; size < endOfData; size += size < 70 ? 1 : 9) {
        SCOPED_TRACE(size);
        expectCorrupted(bytes.substr(0, size));
    }
}

// ---- damaged symbols ------------------------------------------------------------------------------------------

namespace {

// One block with the symbols, all of whose tables are there.
std::string bytesWithSymbols(const std::vector<raw::Symbol>& symbols) {
    u32 codeLength = 1;
    while (std::size_t{1} << codeLength < symbols.size()) {
        ++codeLength;
    }
    return raw::wdlBytes({6,
                          raw::oneIndexPoint,
                          1,
                          codeLength,
                          symbols,
                          {{0, raw::indexPointPlace}},
                          {raw::valueCount},
                          std::string(64, '\0')});
}

// A value, and so many symbols that each stand for the one before them twice.
std::vector<raw::Symbol> doublings(u32 count) {
    std::vector<raw::Symbol> symbols = {{3, leafMark}};
    for (u32 i = 0; i < count; ++i) {
        symbols.push_back({i, i});
    }
    return symbols;
}

}  // namespace

TEST(DamagedTable, WithMoreSymbolsThanTwelveBitsCanNumberIsReported) {
    EXPECT_TRUE(raw::isKnown(bytesWithSymbols(std::vector<raw::Symbol>(4096, {3, leafMark}))));
    for (const std::size_t count : {4097u, 5000u, 65535u}) {
        SCOPED_TRACE(count);
        expectCorrupted(bytesWithSymbols(std::vector<raw::Symbol>(count, {3, leafMark})));
    }
    expectCorrupted(bytesWithSymbols({}));
}

TEST(DamagedTable, WithASymbolOfTooManyValuesIsReported) {
    EXPECT_TRUE(raw::isKnown(bytesWithSymbols(doublings(8))));
    expectCorrupted(bytesWithSymbols(doublings(9)));
    std::vector<raw::Symbol> oneTooMany = doublings(8);
    oneTooMany.push_back({8, 0});
    expectCorrupted(bytesWithSymbols(oneTooMany));
}

TEST(DamagedTable, WithASymbolThatLeadsNowhereIsReported) {
    const raw::Symbol value{3, leafMark};
    expectCorrupted(bytesWithSymbols({value, {1, 0}}));          // to itself
    expectCorrupted(bytesWithSymbols({{1, 2}, {2, 0}, value}));  // in a circle
    expectCorrupted(bytesWithSymbols({value, {2, 0}}));          // behind the last
    expectCorrupted(bytesWithSymbols({value, {0, 0xFFE}}));
    EXPECT_TRUE(raw::isKnown(bytesWithSymbols({{1, 2}, {2, 2}, value})));
}

// ---- damaged tables -------------------------------------------------------------------------------------------

TEST(DamagedTable, ThatIsLongerThanItNeedBeIsRead) {
    const TableFolder folder;
    folder.write("KRvK.rtbw", realBytes("KRvK.rtbw") + std::string(5000, '\x55'));
    tables::registerFolder(folder.path.string());
    i32 wdl = 0;
    EXPECT_TRUE(tables::wdlOf("8/8/3k4/8/8/8/8/K5R1 b - -", wdl));
    EXPECT_EQ(wdl, -2);
}

TEST(DamagedTable, ThatIsEmptyEndsTheProcess) {
    const TableFolder folder;
    folder.write("KRvK.rtbw", "");
    tables::registerFolder(folder.path.string());
    setUpPosition("8/8/3k4/8/8/8/8/K5R1 w - -");
    i32 success = 0;
    EXPECT_EXIT(static_cast<void>(probeWdl(success)), testing::ExitedWithCode(1), "");
}

TEST(DamagedTable, ThatHasGoneSinceTheStartEndsTheProcess) {
    const TableFolder folder;
    folder.write("KRvK.rtbw", realBytes("KRvK.rtbw"));
    tables::registerFolder(folder.path.string());
    std::filesystem::remove(folder.path / "KRvK.rtbw");
    setUpPosition("8/8/3k4/8/8/8/8/K5R1 w - -");
    i32 success = 0;
    EXPECT_EXIT(static_cast<void>(probeWdl(success)), testing::ExitedWithCode(1), "");
}

TEST(DistanceTables, StayMappedWhicheverColourHasTheStrongerSide) {
    const TableFolder folder;
    for (const char* name : {"KRvK.rtbw", "KRvK.rtbz", "KQvK.rtbw", "KQvK.rtbz"}) {
        folder.write(name, realBytes(name));
    }
    tables::registerFolder(folder.path.string());
    const auto tableAtFront = [](const char* fen) {
        EXPECT_TRUE(tables::probe(fen).dtzKnown) << fen;
        return dtzCache[0].entry;
    };
    const dtzEntry* rook = tableAtFront("8/8/3k4/8/8/8/8/K5R1 w - -");
    const dtzEntry* queen = tableAtFront("k5q1/8/8/8/8/3K4/8/8 b - -");
    for (i32 round = 0; round < 3; ++round) {
        EXPECT_EQ(tableAtFront("k5r1/8/8/8/8/3K4/8/8 b - -"), rook);
        EXPECT_EQ(tableAtFront("k5q1/8/8/8/8/3K4/8/8 b - -"), queen);
        EXPECT_EQ(tableAtFront("8/8/3k4/8/8/8/8/K5R1 w - -"), rook);
        EXPECT_EQ(tableAtFront("8/8/3k4/8/8/8/8/K5Q1 w - -"), queen);
    }
    EXPECT_EQ(
        std::ranges::count_if(dtzCache, [](const dtzCacheRecord& record) { return record.entry != nullptr; }),
        2);
}

TEST(DamagedTable, OfDistancesFailsTheProbeOfDistancesAlone) {
    const TableFolder folder;
    folder.write("KRvK.rtbw", realBytes("KRvK.rtbw"));
    folder.write("KRvK.rtbz", realBytes("KRvK.rtbw"));  // the magic of the other kind
    tables::registerFolder(folder.path.string());
    testing::internal::CaptureStdout();
    for (i32 i = 0; i < 3; ++i) {
        const tables::Values values = tables::probe("8/8/3k4/8/8/8/8/K5R1 w - -");
        EXPECT_EQ(values.wdl, 2);
        EXPECT_TRUE(values.wdlKnown);
        EXPECT_FALSE(values.dtzKnown);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Corrupted table.\n");
}

namespace {

// Whether the bytes are taken as the DTZ file of a table; values all over it are then decoded.
bool isTakenAsDtz(const char* name, std::string_view bytes) {
    const GuardedBytes guarded(bytes);
    dtzCacheRecord& record = dtzCache[0];
    const TableMaterial material = materialOfName(name);
    record = dtzCacheRecord{material.key, material.key2, new dtzEntry{}};
    record.entry->material = material;
    record.entry->data = guarded.file;
    const bool taken = setUpTableDtz(*record.entry);
    for (const DtzFile& group : record.entry->file) {
        for (u64 i = 0; taken && group.side.stream != nullptr && i < 500; ++i) {
            const i32 value = decodeStream(*group.side.stream, group.side.tbSize * i / 500);
            EXPECT_TRUE(value >= 0 && value <= 255) << value;
        }
    }
    record.entry->data = MappedFile{};
    unloadTableDtz(record);
    return taken;
}

// Every size that ends in the header, then some.
std::vector<std::size_t> cutSizes(std::size_t size) {
    constexpr std::size_t headerSize = 1200;
    std::vector<std::size_t> sizes;
    for (std::size_t cut = 0; cut < size; cut += cut < headerSize ? 1 : 17) {
        sizes.push_back(cut);
    }
    return sizes;
}

// A DTZ file for KRvK whose numbers go through value maps.
std::string mappedDtz() {
    StreamPlan stream = planOf(randomValues(threeMenSize, 40, 9, 1));
    stream.flags = DTZ_MAPPED;
    const std::string list(100, '\x05');
    return writer::fileBytes(
        {writer::dtzMagic, 0, {threeMenOrder(ROOK)}, {stream}, {{list, list, list, list}}});
}

}  // namespace

TEST(DamagedTable, OfDistancesThatIsCutShortIsReported) {
    constexpr std::size_t checksumSize = 16;  // at the end of real files; nobody needs it
    struct {
        const char* name;
        std::string bytes;
        std::size_t idle;  // bytes at the end
    } const files[] = {
        {"KRvK", realBytes("KRvK.rtbz"), checksumSize},
        {"KPvK", realBytes("KPvK.rtbz"), checksumSize},
        {"KQvK", realBytes("KQvK.rtbz"), checksumSize},
        {"KRvK", mappedDtz(), 0},
    };
    for (const auto& [name, bytes, idle] : files) {
        const std::size_t needed = bytes.size() - idle;
        SCOPED_TRACE(std::string(name) + " of " + std::to_string(bytes.size()));
        EXPECT_TRUE(isTakenAsDtz(name, bytes));
        EXPECT_TRUE(isTakenAsDtz(name, bytes.substr(0, needed)));
        EXPECT_FALSE(isTakenAsDtz(name, bytes.substr(0, needed - 1)));
        for (const std::size_t size : cutSizes(needed)) {
            EXPECT_FALSE(isTakenAsDtz(name, bytes.substr(0, size))) << size;
        }
    }
}

TEST(DamagedTable, OfDistancesThatIsCutShortFailsTheProbeOfDistancesAlone) {
    const std::string bytes = realBytes("KRvK.rtbz");
    for (std::size_t size = 1; size < bytes.size() - 16; size += size / 4 + 1) {
        SCOPED_TRACE(size);
        const TableFolder folder;
        folder.write("KRvK.rtbw", realBytes("KRvK.rtbw"));
        folder.write("KRvK.rtbz", bytes.substr(0, size));
        tables::registerFolder(folder.path.string());
        testing::internal::CaptureStdout();
        for (i32 i = 0; i < 2; ++i) {
            const tables::Values values = tables::probe("8/8/3k4/8/8/8/8/K5R1 w - -");
            EXPECT_TRUE(values.wdlKnown);
            EXPECT_FALSE(values.dtzKnown);
        }
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Corrupted table.\n");
    }
}

// Any byte of a file may be anything: what counts is that the process lives and that no value lies out of range.
TEST(DamagedTable, WithAnyByteChangedNeverGivesAValueOutOfRange) {
    std::mt19937 random(3);
    for (const char* name : {"KRvK", "KQvK", "KBvKN", "KPvK"}) {
        const std::string wdl = realBytes(std::string(name) + ".rtbw");
        for (i32 round = 0; round < 60; ++round) {
            const TableFolder folder;
            std::string bytes = wdl;
            // the header more often than the blocks
            const std::size_t reach =
                round % 2 == 0 ? std::min<std::size_t>(bytes.size(), 200) : bytes.size();
            for (i32 change = 0; change <= round % 4; ++change) {
                bytes[random() % reach] = static_cast<char>(random());
            }
            folder.write(std::string(name) + ".rtbw", bytes);
            tables::registerFolder(folder.path.string());
            testing::internal::CaptureStdout();
            for (const char* fen :
                 {"8/8/3k4/8/8/8/8/K5R1 w - -", "8/8/3k4/8/8/8/8/K5Q1 b - -", "8/8/3k4/8/5n2/8/8/K5B1 w - -",
                  "8/8/3k4/8/5p2/8/8/K7 w - -", "8/8/3k4/8/8/8/6P1/K7 b - -"}) {
                setUpPosition(fen);
                i32 success = 0;
                const i32 value = probeWdl(success);
                EXPECT_TRUE(value >= -2 && value <= 2);
            }
            testing::internal::GetCapturedStdout();
        }
    }
}
