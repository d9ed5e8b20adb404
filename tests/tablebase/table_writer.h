// Writes table files from given values: the format's other direction, for tests.
#pragma once

#include "platform/bits.h"

#include <string>
#include <vector>

namespace writer {

/// Like values in a row.
struct Run {
    u8 value;
    u64 count;
};

/// How a stream is to be compressed.
struct StreamPlan {
    std::vector<Run> runs;  // all values, in index order
    u8 flags;               // of the header, but for the bit of a constant stream
    bool constant;          // no tables: the first run's value everywhere
    i32 blockSize;          // log 2 of bytes
    i32 indexBits;          // log 2 of values between two index points
    i32 pairDepth;          // a symbol may stand for up to 2 to this power of like values, 0 to 8
    i32 mixedPairs;         // symbols for pairs of unlike values, the most frequent ones
    bool equalLengths;      // all codes of one length
    bool reverseLeaves;     // put pairs before the symbols that they refer to, where lengths allow
};

/// A table file: what lies around the streams.
struct FilePlan {
    u32 magic;
    u8 flags;                                         // split, four files
    std::vector<std::string> orders;                  // the bytes of each group that tell the order of men
    std::vector<StreamPlan> streams;                  // by group and side
    std::vector<std::vector<std::string>> valueMaps;  // for each group that uses them four lists
};

constexpr u32 wdlMagic = 0x5D23E871;
constexpr u32 dtzMagic = 0xA50C66D7;

/// The bytes of the file.
[[nodiscard]] std::string fileBytes(const FilePlan& plan);

/// Runs of the values in order.
[[nodiscard]] std::vector<Run> runsOf(const std::vector<u8>& values);

}  // namespace writer
