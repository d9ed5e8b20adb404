// Table files from bytes: each is set up, decoded all over and probed. The bytes lie in memory of their exact size, so
// that a read beyond them is seen. In the fuzz targets the first byte of an input chooses the table's name.
#pragma once

#include "frontend/session.h"
#include "fuzz_support.h"
#include "tablebase/internal.h"
#include "tablebase/tablebase.h"

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

/// Sets up the bytes as the WDL file of the table `name`. If they are accepted: decodes much of it, registers the
/// table and calls `probe()`. Whether they were accepted. The registry is empty afterwards.
template <typename Probe>
bool tryWdlFile(const char* name, std::string_view bytes, Probe probe) {
    const TableBytes copy = copyOf(bytes);
    tbEntryPawn record{};
    tbEntry& entry = record.head;
    entry.material = materialOfName(name);
    entry.file = record.file.data();
    entry.data = copy.file;
    const bool accepted = setUpTableWdl(entry);
    if (accepted) {
        for (const TableFile& file : record.file) {
            decodeMany(file.side[0]);
            decodeMany(file.side[1]);
        }
        entry.ready = 1;
        for (const u64 key : {entry.material.key, entry.material.key2}) {
            tbHash[static_cast<u32>(key >> 54)][0] = tbHashSlot{key, &entry};
        }
        probe();
        tbHash.fill(tbHashBucket{});
    }
    entry.data = MappedFile{};  // no mapping
    unloadTableWdl(entry);
    return accepted;
}

/// The same for a DTZ file, which `probe()` finds in the first place of dtzCache.
template <typename Probe>
bool tryDtzFile(const char* name, std::string_view bytes, Probe probe) {
    const TableBytes copy = copyOf(bytes);
    auto* entry = new dtzEntry{};
    entry->material = materialOfName(name);
    entry->data = copy.file;
    dtzCacheRecord& record = dtzCache[0];
    record = dtzCacheRecord{entry->material.key, entry->material.key2, entry};
    const bool accepted = setUpTableDtz(*entry);
    if (accepted) {
        for (const DtzFile& file : entry->file) {
            decodeMany(file.side);
        }
        probe();
    }
    entry->data = MappedFile{};  // no mapping
    unloadTableDtz(record);
    return accepted;
}

/// probeWdl of a position; a known value must be one of the five.
inline i32 wdlOfPosition(const char* fen, i32& success) {
    newGame();
    fenToBoard(fen);
    success = 0;
    const i32 wdl = probeWdl(success);
    if (success != 0 && (wdl < -2 || wdl > 2)) {
        __builtin_trap();
    }
    return wdl;
}

/// What a DTZ table tells of a position for one of the values it may have; a known distance must be a possible one.
inline i32 dtzOfPosition(const char* fen, i32 wdl, i32& success) {
    newGame();
    fenToBoard(fen);
    success = 1;
    const i32 dtz = probeDtzTable(wdl, success);
    if (success == 1 && (dtz < 0 || dtz > 510)) {
        __builtin_trap();
    }
    return dtz;
}
