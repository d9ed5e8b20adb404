// One value out of a compressed stream. Reads only; every number that comes from the file is held against the sizes
// that were checked when the stream was set up, and against the end of the mapping.
#include "tablebase/internal.h"

#include "tablebase/bytes.h"

constexpr i32 damaged = -1;
// An index point leads close to the block: real files step over a few.
constexpr i32 blockStepsMax = 1 << 16;

namespace {

struct BlockPlace {
    u32 block;
    i64 value;  // number of the value within the block
};

}  // namespace

static i64 lastValueOf(const streamData& d, u32 block) {
    return littleEndian16(d.sizeTable + u64{2} * block);
}

// Steps from block to block until the value lies in the present one. False if that leads out of the table.
static bool findBlock(const streamData& d, BlockPlace& place) {
    i32 stepsLeft = blockStepsMax;
    while (place.value < 0) {
        --place.block;
        if (place.block >= d.sizeCount || --stepsLeft == 0) {
            return false;
        }
        place.value += lastValueOf(d, place.block) + 1;
    }
    while (place.block < d.sizeCount && place.value > lastValueOf(d, place.block)) {
        if (--stepsLeft == 0) {
            return false;
        }
        place.value -= lastValueOf(d, place.block) + 1;
        ++place.block;
    }
    return place.block < d.blockCount;
}

static BlockPlace placeAtIndexPoint(const streamData& d, u64 idx) {
    const u8* entry = d.indexTable + 6 * (idx >> d.indexBits);
    const i64 span = i64{1} << d.indexBits;
    const i64 fromPoint =
        static_cast<i64>(idx & static_cast<u64>(span - 1)) - span / 2;  // it lies in the middle
    return BlockPlace{littleEndian32(entry), fromPoint + littleEndian16(entry + 4)};
}

// Finds the symbol in which the value lies; `value` becomes its number there. Returns symbolCount or more if the file
// is damaged.
static u32 findSymbol(const streamData& d, u32 block, i64& value) {
    const u8* next = d.data + (u64{block} << d.blockSize);
    u64 code = u64{bigEndian32(next, d.mapEnd)} << 32 | bigEndian32(next + 4, d.mapEnd);
    next += 8;
    i32 bitCount = 0;
    for (;;) {
        i32 length = d.minCodeLength;
        while (code < d.base[length]) {
            ++length;
        }
        const u64 symbol = d.offset[length] + ((code - d.base[length]) >> (64 - length));
        if (symbol >= d.symbolCount) {
            return d.symbolCount;
        }
        const i32 span = d.symbolSpan[symbol];
        if (value <= span) {
            return static_cast<u32>(symbol);
        }
        value -= span + 1;
        code <<= length;
        bitCount += length;
        if (bitCount >= 32) {
            bitCount -= 32;
            code |= u64{bigEndian32(next, d.mapEnd)} << bitCount;
            next += 4;
        }
    }
}

// Down the pairs to the leaf that holds the value. Spans are sums of those below, so this ends.
static i32 leafValue(const streamData& d, u32 symbol, i64 value) {
    while (d.symbolSpan[symbol] != 0) {
        const u8* pair = d.symbolPairs + 3 * symbol;
        const u32 left = pairLeft(pair);
        const i32 span = d.symbolSpan[left];
        if (value <= span) {
            symbol = left;
        } else {
            value -= span + 1;
            symbol = pairRight(pair);
        }
    }
    return d.symbolPairs[3 * symbol];
}

i32 decodeStream(const streamData& d, u64 idx) {
    if (d.indexBits == 0) {
        return d.minCodeLength;
    }
    BlockPlace place = placeAtIndexPoint(d, idx);
    if (!findBlock(d, place)) {
        return damaged;
    }
    const u32 symbol = findSymbol(d, place.block, place.value);
    return symbol < d.symbolCount ? leafValue(d, symbol, place.value) : damaged;
}
