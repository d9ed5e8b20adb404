// A DTZ file: whatever is accepted is decoded all over, and probed for each value that a position may have.
#include "table_fuzz.h"

#include <new>

static void probePositions(const TableChoice& choice) {
    for (const char* fen : choice.fens) {
        newGame();
        fenToBoard(fen);
        for (const i32 wdl : {-2, -1, 1, 2}) {
            i32 success = 1;
            const i32 dtz = probeDtzTable(wdl, success);
            if (success == 1 && (dtz < 0 || dtz > 510)) {
                __builtin_trap();
            }
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    std::string_view input = textOf(data, size);
    const TableChoice& choice = tableChoices[takeByte(input) % tableChoices.size()];
    const TableBytes copy = copyOf(input);
    auto* entry = new dtzEntry{};
    entry->material = materialOfName(choice.name);
    entry->data = copy.file;
    dtzCacheRecord& record = dtzCache[0];
    record = dtzCacheRecord{entry->material.key, entry->material.key2, entry};
    if (setUpTableDtz(*entry)) {
        for (const DtzFile& file : entry->file) {
            decodeMany(file.side);
        }
        probePositions(choice);
    }
    entry->data = MappedFile{};  // no mapping
    unloadTableDtz(record);
    return 0;
}
