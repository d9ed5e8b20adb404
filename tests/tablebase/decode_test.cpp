// Single values out of streams made by hand, sound ones and such as lead out of their tables. The bytes lie before
// memory that may not be read.
#include "guarded_bytes.h"
#include "raw_stream.h"

using raw::indexPointPlace;
using raw::oneIndexPoint;
using raw::Stream;

namespace {

constexpr i32 damaged = -1;

// The file set up, as long as this lives.
struct SetUpTable {
    GuardedBytes bytes;
    tbEntryPiece record;
    bool accepted;

    explicit SetUpTable(const Stream& stream) : bytes(raw::wdlBytes(stream)), record{} {
        record.head.material = materialOfName("KRvK");
        record.head.file = record.file.data();
        record.head.data = bytes.file;
        accepted = setUpTableWdl(record.head);
    }
    SetUpTable(const SetUpTable&) = delete;
    SetUpTable& operator=(const SetUpTable&) = delete;
    ~SetUpTable() {
        record.head.data = MappedFile{};
        unloadTableWdl(record.head);
    }

    [[nodiscard]] i32 valueAt(u64 idx) const {
        const TableSide& side = record.file[0].side[0];
        EXPECT_LT(idx, side.tbSize);
        return decodeStream(*side.stream, idx);
    }
};

// Two values, 3 and 1, with a code of one bit each, in blocks of eight bytes: 64 values.
constexpr u32 blockSize = 3;
constexpr u32 blockValues = 64;

Stream twoValues(const std::vector<raw::IndexPoint>& points, u32 blockCount,
                 const std::vector<u32>& lastValues) {
    std::string blocks;
    for (u32 block = 0; block < blockCount; ++block) {
        blocks += std::string(8, block % 2 == 0 ? '\x0F' : '\x33');
    }
    return Stream{blockSize, oneIndexPoint, blockCount, 1, {{3, leafMark}, {1, leafMark}},
                  points,    lastValues,    blocks};
}

// What the stream above stores as number `number` of a block.
i32 valueOfBlock(u32 block, u32 number) {
    const u32 byte = block % 2 == 0 ? 0x0F : 0x33;
    return (byte >> (7 - number % 8) & 1) == 0 ? 3 : 1;
}

bool isKnown(const Stream& stream) {
    return raw::isKnown(raw::wdlBytes(stream));
}

}  // namespace

// ---- blocks ---------------------------------------------------------------------------------------------------

TEST(Decode, StepsForwardFromBlockToBlock) {
    const std::vector<u32> lastValues = {blockValues - 1, 4, 0, blockValues - 1};
    const SetUpTable table(twoValues({{0, indexPointPlace}}, 4, lastValues));
    ASSERT_TRUE(table.accepted);
    u64 idx = 0;
    for (u32 block = 0; block < 4; ++block) {
        for (u32 number = 0; number <= lastValues[block]; ++number) {
            EXPECT_EQ(table.valueAt(idx++), valueOfBlock(block, number)) << block << " " << number;
        }
    }
    EXPECT_EQ(table.valueAt(idx), damaged);
    EXPECT_EQ(table.valueAt(raw::valueCount - 1), damaged);
}

TEST(Decode, StepsBackFromBlockToBlock) {
    const std::vector<u32> lastValues = {blockValues - 1, 4, 0, blockValues - 1};
    const SetUpTable table(twoValues({{3, 0}}, 4, lastValues));
    ASSERT_TRUE(table.accepted);
    u64 idx = indexPointPlace;
    for (u32 block = 3; block-- > 0;) {
        for (u32 number = lastValues[block] + 1; number-- > 0;) {
            EXPECT_EQ(table.valueAt(--idx), valueOfBlock(block, number)) << block << " " << number;
        }
    }
    EXPECT_EQ(table.valueAt(idx - 1), damaged);
    EXPECT_EQ(table.valueAt(0), damaged);
}

// The size table may be the last thing of a file: it is not read beyond its end.
TEST(Decode, StepsForwardNoFurtherThanTheSizesGo) {
    Stream stream = twoValues({{0, indexPointPlace}}, 0, {});
    while (raw::wdlBytes(stream).size() == 64) {
        stream.lastValues.push_back(0);
    }
    stream.lastValues.pop_back();
    const SetUpTable table(stream);
    ASSERT_TRUE(table.accepted);
    EXPECT_EQ(table.valueAt(0), damaged);
    EXPECT_EQ(table.valueAt(stream.lastValues.size() - 1), damaged);
    EXPECT_EQ(table.valueAt(stream.lastValues.size()), damaged);
    EXPECT_EQ(table.valueAt(raw::valueCount - 1), damaged);
}

TEST(Decode, StepsBackOnlyFromWhereThereAreSizes) {
    for (const u32 block : {2U, 50U, 100'000'000U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(block);
        const SetUpTable table(twoValues({{block, 0}}, 1, {blockValues - 1}));
        ASSERT_TRUE(table.accepted);
        EXPECT_EQ(table.valueAt(0), damaged);
        EXPECT_EQ(table.valueAt(indexPointPlace - 1), damaged);
    }
}

TEST(Decode, TakesNoMoreStepsThanSoundFilesNeed) {
    constexpr u32 stepsMax = (1 << 16) - 1;
    constexpr u32 blockCount = stepsMax + 10;
    Stream stream = twoValues({{0, stepsMax}}, blockCount, std::vector<u32>(blockCount, 0));
    const SetUpTable forward(stream);
    ASSERT_TRUE(forward.accepted);
    EXPECT_EQ(forward.valueAt(indexPointPlace), valueOfBlock(stepsMax, 0));
    EXPECT_EQ(forward.valueAt(indexPointPlace + 1), damaged);
    stream.indexBits = 17;  // the index point lies stepsMax + 1 values from the first
    stream.indexPoints = {{blockCount - 1, 0}};
    const SetUpTable back(stream);
    ASSERT_TRUE(back.accepted);
    EXPECT_EQ(back.valueAt(1), valueOfBlock(blockCount - 1 - stepsMax, 0));
    EXPECT_EQ(back.valueAt(0), damaged);
}

// An extra entry of the size table stands for values, but for no block.
TEST(Decode, GivesNoValueOfABlockBehindTheLast) {
    const u32 last = raw::valueCount;
    const raw::IndexPoint behind{1, indexPointPlace};
    const raw::IndexPoint before{0, indexPointPlace};
    EXPECT_TRUE(isKnown(twoValues({before}, 1, {last, last})));
    Stream stream = twoValues({behind}, 2, {0, last});
    EXPECT_TRUE(isKnown(stream));
    stream.blockCount = 1;  // what was the second block is now nothing
    EXPECT_FALSE(isKnown(stream));
    stream.indexPoints = {before};
    EXPECT_FALSE(isKnown(stream)) << "by a step forward";
    stream.indexPoints = {{0x80000000U, indexPointPlace}};
    EXPECT_FALSE(isKnown(stream)) << "without a size";
}

// ---- bits -----------------------------------------------------------------------------------------------------

// The last block says that it has more values than bits: those behind the end of the file are 0.
TEST(Decode, ReadsZerosBehindTheEndOfTheFile) {
    for (u32 size = 0; size <= 4; ++size) {
        SCOPED_TRACE(size);
        Stream stream = twoValues({{0, indexPointPlace}}, 1, {1999});
        stream.blockSize = size;
        stream.blocks.resize(std::size_t{1} << size, '\x33');
        const SetUpTable table(stream);
        ASSERT_TRUE(table.accepted);
        const u64 inFile = u64{8} << size;
        for (u64 idx = 0; idx < 2000; ++idx) {
            const bool isSet =
                idx < inFile &&
                (static_cast<u8>(stream.blocks[static_cast<std::size_t>(idx / 8)]) >> (7 - idx % 8) & 1) != 0;
            EXPECT_EQ(table.valueAt(idx), isSet ? 1 : 3) << idx;
        }
    }
}

// Two bits make four codes: the two behind those of the symbols stand for nothing.
TEST(Decode, ACodeWithoutASymbolHasNoValue) {
    Stream stream = twoValues({{0, indexPointPlace}}, 1, {blockValues / 2 - 1});
    stream.codeLength = 2;
    stream.blocks = std::string(8, '\x1B');  // 00 01 10 11
    const SetUpTable table(stream);
    ASSERT_TRUE(table.accepted);
    EXPECT_EQ(table.valueAt(0), 3);
    EXPECT_EQ(table.valueAt(1), 1);
    EXPECT_EQ(table.valueAt(2), damaged);
    EXPECT_EQ(table.valueAt(3), damaged);
}
