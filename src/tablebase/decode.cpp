// One value out of a compressed stream. Reads only; every number that comes from the file is held against the sizes
// that were checked when the stream was set up, and against the end of the mapping.
#include "tablebase/internal.h"

#include "tablebase/bytes.h"

#include <algorithm>

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

namespace {

// The symbol at the head of a bit stream. Its number is symbolCount or more if the file is damaged.
struct FirstCode {
    u64 symbol;
    i32 length;  // bits
};

// What is left of a block.
struct BitStream {
    u64 code;      // the next bits, from the highest down
    i32 bitCount;  // bits used since the last refill, below 32
    const u8* next;
};

}  // namespace

// The first symbol, whose code is known to have at least `length` bits.
static FirstCode readCode(const streamData& d, u64 code, i32 length) {
    while (code < d.base[length]) {
        ++length;
    }
    return FirstCode{d.offset[length] + ((code - d.base[length]) >> (64 - length)), length};
}

static StreamHead headOf(const streamData& d, u64 code) {
    StreamHead head{};
    for (;;) {
        const FirstCode first = readCode(d, code, d.minCodeLength);
        if (head.length == 0) {
            head.firstLength =
                static_cast<u8>(std::min(first.length, std::max(headBits + 1, d.minCodeLength)));
        }
        if (head.length + first.length > headBits || first.symbol >= d.symbolCount) {
            return head;
        }
        head.values = static_cast<u16>(head.values + d.symbolSpan[first.symbol] + 1);
        head.length = static_cast<u8>(head.length + first.length);
        code <<= first.length;
    }
}

void fillStreamHeads(streamData& d) {
    for (u32 bits = 0; bits < d.heads.size(); ++bits) {
        d.heads[bits] = headOf(d, u64{bits} << (64 - headBits));
    }
}

static BitStream startOfBlock(const streamData& d, u32 block) {
    const u8* start = d.data + (u64{block} << d.blockSize);
    const u64 code = u64{bigEndian32(start, d.mapEnd)} << 32 | bigEndian32(start + 4, d.mapEnd);
    return BitStream{code, 0, start + 8};
}

static void skipBits(const streamData& d, BitStream& stream, i32 count) {
    stream.code <<= count;
    stream.bitCount += count;
    if (stream.bitCount >= 32) {
        stream.bitCount -= 32;
        stream.code |= u64{bigEndian32(stream.next, d.mapEnd)} << stream.bitCount;
        stream.next += 4;
    }
}

// Finds the symbol in which the value lies; `value` becomes its number there. Returns symbolCount if the file is
// damaged.
static u32 findSymbol(const streamData& d, u32 block, i32& value) {
    BitStream stream = startOfBlock(d, block);
    for (;;) {
        const StreamHead head = d.heads[static_cast<u32>(stream.code >> (64 - headBits))];
        if (head.length != 0 && value >= head.values) {
            value -= head.values;
            skipBits(d, stream, head.length);
            continue;
        }
        const FirstCode first = readCode(d, stream.code, head.firstLength);
        if (first.symbol >= d.symbolCount) {
            return d.symbolCount;
        }
        const i32 span = d.symbolSpan[first.symbol];
        if (value <= span) {
            return static_cast<u32>(first.symbol);
        }
        value -= span + 1;
        skipBits(d, stream, first.length);
    }
}

// Down the pairs to the leaf that holds the value. A pair spans more than each of its halves, so this ends. Left or
// right cannot be predicted, so there is no branch on it.
static i32 leafValue(const streamData& d, u32 symbol, i32 value) {
    while (d.symbolSpan[symbol] != 0) {
        const u8* pair = d.symbolPairs + u64{3} * symbol;
        const u32 left = pairLeft(pair);
        const i32 leftValues = d.symbolSpan[left] + 1;
        const bool isRight = value >= leftValues;
        value -= leftValues & -static_cast<i32>(isRight);
        symbol = left ^ ((left ^ pairRight(pair)) & (0U - static_cast<u32>(isRight)));
    }
    return d.symbolPairs[u64{3} * symbol];
}

i32 decodeStream(const streamData& d, u64 idx) {
    if (d.indexBits == 0) {
        return d.minCodeLength;
    }
    BlockPlace place = placeAtIndexPoint(d, idx);
    if (!findBlock(d, place)) {
        return damaged;
    }
    i32 value = static_cast<i32>(place.value);
    const u32 symbol = findSymbol(d, place.block, value);
    return symbol < d.symbolCount ? leafValue(d, symbol, value) : damaged;
}
