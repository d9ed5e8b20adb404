// A table of KRvK with one stream whose tables are given field by field, whether they fit together or not.
#pragma once

#include "real_tables.h"
#include "table_folder.h"
#include "tablebase/bytes.h"

#include <string>
#include <vector>

namespace raw {

constexpr u64 valueCount = 31332;  // of the stream

/// A symbol for two others, or with leafMark on the right for the value on the left.
struct Symbol {
    u32 left;
    u32 right;
};

struct IndexPoint {
    u32 block;
    u32 offset;
};

struct Stream {
    u32 blockSize;  // log 2 of bytes
    u32 indexBits;  // log 2 of values between two index points
    u32 blockCount;
    u32 codeLength;  // bits, of every symbol: its code is its number
    std::vector<Symbol> symbols;
    std::vector<IndexPoint> indexPoints;
    std::vector<u32> lastValues;  // number of the last value of each block, and of the extra ones behind them
    std::string blocks;
};

/// With so many index bits the one index point lies here.
constexpr u32 oneIndexPoint = 15;
constexpr u32 indexPointPlace = 1U << 14;

inline void put(std::string& bytes, u64 number, i32 count) {
    for (i32 i = 0; i < count; ++i) {
        bytes += static_cast<char>(number >> (8 * i));
    }
}

/// A WDL file with this stream for White to move, and none for Black.
inline std::string wdlBytes(const Stream& stream) {
    std::string bytes;
    put(bytes, writer::wdlMagic, 4);
    put(bytes, 0, 1);
    bytes += orderOf({0, ROOK, KING, 8 + KING});
    put(bytes, 0, 1);  // to an even place
    put(bytes, 0, 1);
    put(bytes, stream.blockSize, 1);
    put(bytes, stream.indexBits, 1);
    put(bytes, stream.lastValues.size() - stream.blockCount, 1);
    put(bytes, stream.blockCount, 4);
    put(bytes, stream.codeLength, 1);
    put(bytes, stream.codeLength, 1);
    put(bytes, 0, 2);  // the first symbol
    put(bytes, stream.symbols.size(), 2);
    for (const Symbol& symbol : stream.symbols) {
        put(bytes, symbol.left | symbol.right << 12, 3);
    }
    put(bytes, 0, static_cast<i32>(stream.symbols.size() % 2));
    for (const IndexPoint& point : stream.indexPoints) {
        put(bytes, point.block, 4);
        put(bytes, point.offset, 2);
    }
    for (const u32 last : stream.lastValues) {
        put(bytes, last, 2);
    }
    bytes.resize((bytes.size() + 63) / 64 * 64, '\0');
    return bytes + stream.blocks;
}

/// Whether the probe of a position knows a value, with these bytes as the file.
inline bool isKnown(const std::string& bytes) {
    const TableFolder folder;
    folder.write("KRvK.rtbw", bytes);
    tables::registerFolder(folder.path.string());
    i32 wdl = 0;
    return tables::wdlOf("8/8/3k4/8/8/8/8/K5R1 w - -", wdl);
}

}  // namespace raw
