// What the targets for the two kinds of table files share: the first byte of an input chooses a table by name, all
// else is its file. The bytes lie in memory of their exact size, so that a read beyond them is seen.
#pragma once

#include "fuzz_support.h"
#include "tablebase/internal.h"

#include <array>
#include <cstring>
#include <memory>

struct TableChoice {
    const char* name;
    std::array<const char*, 4> fens;  // of its men, both sides to move
};

constexpr std::array<TableChoice, 8> tableChoices = {{
    {"KQvK",
     {"8/8/3k4/8/8/8/8/KQ6 w - -", "8/8/3k4/8/8/8/8/KQ6 b - -", "kq6/8/8/4K3/8/8/8/8 w - -",
      "7K/8/8/3k4/8/8/q7/8 b - -"}},
    {"KRvK",
     {"8/8/3k4/8/8/8/8/KR6 w - -", "8/8/3k4/8/8/8/8/KR6 b - -", "kr6/8/8/4K3/8/8/8/8 w - -",
      "7K/8/8/3k4/8/8/r7/8 b - -"}},
    {"KBvK",
     {"8/8/3k4/8/8/8/8/KB6 w - -", "8/8/3k4/8/8/8/8/KB6 b - -", "kb6/8/8/4K3/8/8/8/8 w - -",
      "7K/8/8/3k4/8/8/b7/8 b - -"}},
    {"KPvK",
     {"8/8/3k4/8/8/8/P7/K7 w - -", "8/8/3k4/8/3P4/8/8/K7 b - -", "k7/p7/8/4K3/8/8/8/8 w - -",
      "7K/8/8/3k4/8/7p/8/8 b - -"}},
    {"KNNvK",
     {"8/8/3k4/8/8/8/8/KNN5 w - -", "8/8/3k4/8/8/8/8/KNN5 b - -", "knn5/8/8/4K3/8/8/8/8 w - -",
      "7K/8/8/3k4/8/8/nn6/8 b - -"}},
    {"KBvKN",
     {"8/8/3k4/8/8/8/5n2/KB6 w - -", "8/8/3k4/8/8/8/5n2/KB6 b - -", "kb6/8/8/4K3/8/8/8/5N2 w - -",
      "7K/8/8/3k4/8/8/b7/2N5 b - -"}},
    {"KPvKP",
     {"8/3p4/3k4/8/8/8/P7/K7 w - -", "8/7p/3k4/8/3P4/8/8/K7 b - -", "k7/p7/8/4K3/8/8/4P3/8 w - -",
      "7K/8/8/3k4/8/7p/P7/8 b - -"}},
    {"KPPvKP",
     {"8/3p4/3k4/8/8/8/PP6/K7 w - -", "8/7p/3k4/8/3P4/8/4P3/K7 b - -", "k7/pp6/8/4K3/8/8/4P3/8 w - -",
      "7K/8/8/3k4/8/p6p/P7/8 b - -"}},
}};

/// A copy of the input of its exact size.
struct TableBytes {
    std::unique_ptr<u8[]> bytes;
    MappedFile file;
};
inline TableBytes copyOf(std::string_view input) {
    TableBytes copy{std::make_unique<u8[]>(input.size()), {}};
    if (!input.empty()) {
        std::memcpy(copy.bytes.get(), input.data(), input.size());
    }
    copy.file = MappedFile{copy.bytes.get(), input.size()};
    return copy;
}

/// Decodes values all over a stream.
inline void decodeMany(const TableSide& side) {
    if (side.stream == nullptr) {
        return;
    }
    constexpr u64 samples = 64;
    for (u64 i = 0; i < samples; ++i) {
        static_cast<void>(decodeStream(*side.stream, side.tbSize / samples * i));
        static_cast<void>(decodeStream(*side.stream, side.tbSize - 1 - side.tbSize / samples * i / 7));
    }
}
