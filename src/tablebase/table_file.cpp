// Table files: mapping one, walking its header, and setting up a record for each stream. A file is read in place and
// not trusted: whatever does not fit makes the whole table unusable. Offsets are from the start of the file.
#include "tablebase/internal.h"

#include "platform/print.h"
#include "tablebase/bytes.h"

#include <algorithm>
#include <cstdlib>
#include <new>

constexpr u32 wdlMagic = 0x5D23E871;
constexpr u32 dtzMagic = 0xA50C66D7;
constexpr u8 splitFlag = 1;      // of byte 4: two streams a group, one for each side to move
constexpr u8 fourFilesFlag = 2;  // four groups, by the file of the leading pawn
constexpr i32 codeLengthMax = 32;
constexpr i32 blockSizeMax = 31;
constexpr i32 indexBitsMax = 31;
constexpr u32 symbolMax = 4096;
constexpr i32 spanMax = 255;
constexpr i32 noPawnOrder = 15;

// ---- reading within bounds ------------------------------------------------------------------------------------

namespace {

struct FileReader {
    const u8* data;
    u64 size;
    u64 at;
    bool fault;  // once set it stays
};

}  // namespace

// The next `count` bytes; null, and a fault, if the file has no more so many.
static const u8* take(FileReader& file, u64 count) {
    if (file.fault || count > file.size || file.at > file.size - count) {
        file.fault = true;
        return nullptr;
    }
    const u8* bytes = file.data + file.at;
    file.at += count;
    return bytes;
}

static u8 takeByte(FileReader& file) {
    const u8* byte = take(file, 1);
    return byte == nullptr ? 0 : *byte;
}

static void alignTo(FileReader& file, u64 unit) {
    file.at = (file.at + unit - 1) / unit * unit;
}

// ---- the order of the men -------------------------------------------------------------------------------------

// One side's share of the bytes that tell the order: a nibble of each.
struct MenOrder {
    i32 pivotOrder;
    i32 pawnOrder;
    std::array<u8, tbMenMax> pieces;
};

static MenOrder readMenOrder(FileReader file, const TableMaterial& material, i32 side) {
    const auto nibble = [&file, side] { return static_cast<u8>(takeByte(file) >> (4 * side) & 15); };
    MenOrder order{};
    order.pivotOrder = nibble();
    order.pawnOrder = material.pawns[1] != 0 ? nibble() : noPawnOrder;
    for (i32 i = 0; i < material.num; ++i) {
        order.pieces[i] = nibble();
    }
    return order;
}

static u64 menOrderSize(const TableMaterial& material) {
    return u64{1} + (material.pawns[1] != 0 ? 1 : 0) + material.num;
}

// Whether the men are those of the name, like men side by side.
static bool menFitName(const TableMaterial& material, const MenOrder& order) {
    std::array<bool, 16> seen{};
    for (i32 i = 0; i < material.num;) {
        const u8 piece = order.pieces[i];
        const i32 count = material.men[piece];
        if (count == 0 || seen[piece] || i + count > material.num) {
            return false;
        }
        seen[piece] = true;
        for (const i32 end = i + count; i < end; ++i) {
            if (order.pieces[i] != piece) {
                return false;
            }
        }
    }
    return true;
}

// Whether the men that the head of the index counts on come first: three unlike men, or the kings.
static bool headFitsPieces(const TableMaterial& material, const MenOrder& order) {
    const auto& pieces = order.pieces;
    if (material.headKind == 0) {
        return pieces[0] != pieces[1] && pieces[1] != pieces[2];
    }
    return (pieces[0] & ~black) == KING && (pieces[1] & ~black) == KING;
}

// Whether the leading pawns come first, those of the other side next. Men that fit the name stand by groups.
static bool headFitsPawns(const TableMaterial& material, const MenOrder& order) {
    const u8 leading = order.pieces[0];
    if ((leading & ~black) != PAWN || material.men[leading] != material.pawns[0]) {
        return false;
    }
    return material.pawns[1] == 0 || order.pieces[material.pawns[0]] == (leading ^ black);
}

// Whether each group has its own place in the index.
static bool ordersFitGroups(const TableSide& side, const MenOrder& order) {
    const i64 groups =
        std::count_if(side.groupSize.begin(), side.groupSize.end(), [](u8 n) { return n != 0; });
    if (order.pivotOrder >= groups) {
        return false;
    }
    return order.pawnOrder == noPawnOrder ||
           (order.pawnOrder < groups && order.pawnOrder != order.pivotOrder);
}

// Sets up a side but for its stream. Does not move the reader. `file` is the leading pawn's, 0 without pawns.
static bool setUpSide(const FileReader& reader, const TableMaterial& material, i32 nibbleSide, i32 file,
                      TableSide& side) {
    const MenOrder order = readMenOrder(reader, material, nibbleSide);
    const bool hasPawns = material.hasPawns != 0;
    if (!menFitName(material, order) ||
        !(hasPawns ? headFitsPawns(material, order) : headFitsPieces(material, order)) ||
        (material.pawns[1] != 0 && order.pawnOrder == noPawnOrder)) {
        return false;
    }
    side.pieces = order.pieces;
    hasPawns ? setGroupsPawn(material, side) : setGroupsPiece(material, side);
    if (!ordersFitGroups(side, order)) {
        return false;
    }
    side.tbSize = hasPawns ? computeFactorsPawn(material, side, order.pivotOrder, order.pawnOrder, file)
                           : computeFactorsPiece(material, side, order.pivotOrder);
    return true;
}

// ---- streams --------------------------------------------------------------------------------------------------

static streamData* newStream(u32 symbolCount) {
    void* memory = std::calloc(1, sizeof(streamData) + symbolCount);
    if (memory == nullptr) {
        return nullptr;
    }
    auto* stream = new (memory) streamData{};
    stream->symbolSpan = static_cast<u8*>(memory) + sizeof(streamData);
    stream->symbolCount = symbolCount;
    return stream;
}

static void freeStream(streamData*& stream) {
    std::free(stream);
    stream = nullptr;
}

namespace {

struct SpanWork {
    streamData& stream;
    std::array<bool, symbolMax> marks;  // symbols whose span is known
};

}  // namespace

// Symbols may refer to later ones. Each level adds a value to the span, so one that goes deeper than the largest span
// is too long, or goes in a circle. False if a symbol is not sound.
static bool computeSpan(SpanWork& work, u32 symbol, i32 level) {
    streamData& d = work.stream;
    if (symbol >= d.symbolCount || level > spanMax) {
        return false;
    }
    if (work.marks[symbol]) {
        return true;
    }
    const u8* pair = d.symbolPairs + u64{3} * symbol;
    const u32 left = pairLeft(pair);
    const u32 right = pairRight(pair);
    i32 span = 0;
    if (right != leafMark) {
        if (!computeSpan(work, left, level + 1) || !computeSpan(work, right, level + 1)) {
            return false;
        }
        span = d.symbolSpan[left] + d.symbolSpan[right] + 1;
    }
    if (span > spanMax) {
        return false;
    }
    d.symbolSpan[symbol] = static_cast<u8>(span);
    work.marks[symbol] = true;
    return true;
}

static bool computeSpans(streamData& stream) {
    SpanWork work{stream, {}};
    for (u32 symbol = 0; symbol < stream.symbolCount; ++symbol) {
        if (!computeSpan(work, symbol, 0)) {
            return false;
        }
    }
    return true;
}

// The code of the longest length starts at 0; each shorter length starts where the codes of the longer end.
static void computeBases(streamData& stream, i32 maxCodeLength) {
    stream.base[maxCodeLength] = 0;
    for (i32 length = maxCodeLength - 1; length >= stream.minCodeLength; --length) {
        stream.base[length] =
            (stream.base[length + 1] + stream.offset[length] - stream.offset[length + 1]) / 2;
    }
    for (i32 length = stream.minCodeLength; length <= maxCodeLength; ++length) {
        stream.base[length] <<= 64 - length;
    }
}

namespace {

// Bytes of a stream's tables, in the order in which a file holds them.
struct StreamSizes {
    u64 indexTable;
    u64 sizeTable;
    u64 data;
};

}  // namespace

static streamData* readConstantStream(FileReader& file, bool wdl) {
    const u8 value = takeByte(file);
    streamData* stream = file.fault ? nullptr : newStream(0);
    if (stream != nullptr) {
        stream->minCodeLength = wdl ? value : 0;
    }
    return stream;
}

static bool readSymbols(FileReader& file, streamData& stream) {
    stream.symbolPairs = take(file, u64{3} * stream.symbolCount);
    if (stream.symbolCount % 2 != 0) {
        take(file, 1);
    }
    return !file.fault && computeSpans(stream);
}

// Reads one pairs header. Null, and a fault, if it does not fit.
static streamData* readStreamHeader(FileReader& file, u64 tbSize, StreamSizes& sizes, u8& flags, bool wdl) {
    sizes = StreamSizes{};
    flags = takeByte(file);
    if ((flags & CONSTANT_STREAM) != 0) {
        return readConstantStream(file, wdl);
    }
    const u8* head = take(file, 9);
    if (head == nullptr) {
        return nullptr;
    }
    const i32 blockSize = head[0];
    const i32 indexBits = head[1];
    const u32 extraSizes = head[2];
    const u32 blockCount = littleEndian32(head + 3);
    const i32 maxCodeLength = head[7];
    const i32 minCodeLength = head[8];
    if (blockSize > blockSizeMax || indexBits < 1 || indexBits > indexBitsMax || minCodeLength < 1 ||
        minCodeLength > maxCodeLength || maxCodeLength > codeLengthMax) {
        return nullptr;
    }
    const i32 lengths = maxCodeLength - minCodeLength + 1;
    const u8* offsets = take(file, u64{2} * lengths);
    const u8* countBytes = take(file, 2);
    const u32 symbolCount = countBytes == nullptr ? 0 : littleEndian16(countBytes);
    if (symbolCount == 0 || symbolCount > symbolMax) {
        return nullptr;
    }
    streamData* stream = newStream(symbolCount);
    if (stream == nullptr) {
        return nullptr;
    }
    stream->mapEnd = file.data + file.size;
    stream->blockSize = blockSize;
    stream->indexBits = indexBits;
    stream->minCodeLength = minCodeLength;
    stream->blockCount = blockCount;
    stream->sizeCount = u64{blockCount} + extraSizes;
    for (i32 i = 0; i < lengths; ++i) {
        stream->offset[minCodeLength + i] = static_cast<u16>(littleEndian16(offsets + i64{2} * i));
    }
    computeBases(*stream, maxCodeLength);
    if (!readSymbols(file, *stream)) {
        freeStream(stream);
        return nullptr;
    }
    fillStreamHeads(*stream);
    sizes.indexTable = 6 * ((tbSize + (u64{1} << indexBits) - 1) >> indexBits);
    sizes.sizeTable = 2 * stream->sizeCount;
    sizes.data = u64{blockCount} << blockSize;
    return stream;
}

namespace {

// The streams of a file in its order, with the sizes of their tables.
struct StreamList {
    i32 count;
    std::array<streamData*, 8> streams;
    std::array<StreamSizes, 8> sizes;
};

}  // namespace

static bool appendStream(StreamList& list, FileReader& file, TableSide& side, u8& flags, bool wdl) {
    side.stream = readStreamHeader(file, side.tbSize, list.sizes[list.count], flags, wdl);
    list.streams[list.count++] = side.stream;
    return side.stream != nullptr;
}

// Lays the index tables, then the size tables, then the blocks, all streams in order. Constant streams have none.
static bool layTables(FileReader& file, const StreamList& list) {
    for (i32 i = 0; i < list.count; ++i) {
        list.streams[i]->indexTable = take(file, list.sizes[i].indexTable);
    }
    for (i32 i = 0; i < list.count; ++i) {
        list.streams[i]->sizeTable = take(file, list.sizes[i].sizeTable);
    }
    for (i32 i = 0; i < list.count; ++i) {
        if (list.streams[i]->indexBits != 0) {
            alignTo(file, 64);
            list.streams[i]->data = take(file, list.sizes[i].data);
        }
    }
    return !file.fault;
}

// ---- files ----------------------------------------------------------------------------------------------------

static MappedFile mapTable(const char* directory, const char* name, const char* suffix) {
    char path[tbPathSize + 32];
    std::snprintf(path, sizeof path, "%s/%s.%s", directory, name, suffix);
    MappedFile data{};
    const MapResult result = mapFile(path, data);
    if (result == MapResult::cannotOpen) {
        print("Could not open %s for reading.\n", path);
        exitNow(1);
    }
    if (result == MapResult::cannotMap) {
        print("CreateFileMapping() failed.\n");
        exitNow(1);
    }
    return data;
}

static bool magicFits(FileReader& file, u32 magic) {
    const u8* bytes = take(file, 4);
    return bytes != nullptr && littleEndian32(bytes) == magic;
}

static i32 fileGroups(u8 flags) {
    return (flags & fourFilesFlag) != 0 ? 4 : 1;
}

// All leading pawns must be of one colour: the squares are gathered by it before the group is known.
static bool leadsAlike(const TableSide& side, const TableSide& first) {
    return side.pieces[0] == first.pieces[0];
}

static bool readWdlOrders(FileReader& file, const TableMaterial& material, TableFile* files, bool split) {
    const i32 orders = material.hasPawns != 0 ? 4 : 1;
    for (i32 f = 0; f < orders; ++f) {
        for (i32 side = 0; side < (split ? 2 : 1); ++side) {
            TableSide& target = files[f].side[side];
            if (!setUpSide(file, material, side, f, target) ||
                (material.hasPawns != 0 && !leadsAlike(target, files[0].side[0]))) {
                return false;
            }
        }
        take(file, menOrderSize(material));
    }
    alignTo(file, 2);
    return !file.fault;
}

bool setUpTableWdl(tbEntry& entry) {
    FileReader file{entry.data.data, entry.data.size, 0, false};
    if (!magicFits(file, wdlMagic)) {
        return false;
    }
    const u8 flags = takeByte(file);
    const bool split = (flags & splitFlag) != 0;
    const i32 groups = fileGroups(flags);
    if ((groups > 1 && entry.material.hasPawns == 0) ||
        !readWdlOrders(file, entry.material, entry.file, split)) {
        return false;
    }
    StreamList list{};
    u8 streamFlags = 0;
    for (i32 f = 0; f < groups; ++f) {
        for (i32 side = 0; side < (split ? 2 : 1); ++side) {
            if (!appendStream(list, file, entry.file[f].side[side], streamFlags, true)) {
                return false;
            }
        }
    }
    return layTables(file, list);
}

void unloadTableWdl(tbEntry& entry) {
    const i32 files = entry.material.hasPawns != 0 ? 4 : 1;
    for (i32 f = 0; f < files; ++f) {
        for (TableSide& side : entry.file[f].side) {
            freeStream(side.stream);
            side = TableSide{};
        }
    }
    unmapFile(entry.data);
    entry.ready = 0;
}

i32 loadTableWdl(tbEntry& entry, const char* name) {
    entry.data = mapTable(tbPathWdl, name, "rtbw");
    if (!setUpTableWdl(entry)) {
        print("Corrupted table.\n");
        unloadTableWdl(entry);
        return 0;
    }
    return 1;
}

static bool readDtzOrders(FileReader& file, dtzEntry& entry) {
    const i32 orders = entry.material.hasPawns != 0 ? 4 : 1;
    for (i32 f = 0; f < orders; ++f) {
        TableSide& target = entry.file[f].side;
        if (!setUpSide(file, entry.material, 0, f, target) ||
            (entry.material.hasPawns != 0 && !leadsAlike(target, entry.file[0].side))) {
            return false;
        }
        take(file, menOrderSize(entry.material));
    }
    alignTo(file, 2);
    return !file.fault;
}

// Four lists for each group that uses them, each a length and so many bytes.
static void readValueMaps(FileReader& file, dtzEntry& entry, i32 groups) {
    const u64 start = file.at;
    entry.valueMap = file.data + std::min(start, file.size);
    for (i32 f = 0; f < groups; ++f) {
        DtzFile& group = entry.file[f];
        if ((group.flags & DTZ_MAPPED) == 0) {
            continue;
        }
        for (i32 list = 0; list < 4; ++list) {
            group.valueMapLength[list] = takeByte(file);
            group.valueMapStart[list] = static_cast<u16>(file.at - start);
            take(file, group.valueMapLength[list]);
        }
    }
    alignTo(file, 2);
}

bool setUpTableDtz(dtzEntry& entry) {
    FileReader file{entry.data.data, entry.data.size, 0, false};
    if (!magicFits(file, dtzMagic)) {
        return false;
    }
    const i32 groups = fileGroups(takeByte(file));
    if ((groups > 1 && entry.material.hasPawns == 0) || !readDtzOrders(file, entry)) {
        return false;
    }
    StreamList list{};
    for (i32 f = 0; f < groups; ++f) {
        if (!appendStream(list, file, entry.file[f].side, entry.file[f].flags, false)) {
            return false;
        }
    }
    readValueMaps(file, entry, groups);
    return layTables(file, list);
}

void closeTableDtz(dtzEntry* entry) {
    for (DtzFile& group : entry->file) {
        freeStream(group.side.stream);
    }
    unmapFile(entry->data);
    delete entry;
}

dtzEntry* openTableDtz(const TableMaterial& material, const char* name) {
    auto* entry = new (std::nothrow) dtzEntry{};
    if (entry == nullptr) {
        return nullptr;
    }
    entry->material = material;
    entry->data = mapTable(tbPathDtz, name, "rtbz");
    if (!setUpTableDtz(*entry)) {
        print("Corrupted table.\n");
        closeTableDtz(entry);
        return nullptr;
    }
    return entry;
}
