// A WDL file: whatever is accepted is decoded all over, and probed through the registry.
#include "table_fuzz.h"
#include "tablebase/tablebase.h"

static void probePositions(const TableChoice& choice, tbEntry& entry) {
    entry.ready = 1;
    for (const u64 key : {entry.material.key, entry.material.key2}) {
        tbHash[key >> 54][0] = tbHashSlot{key, &entry};
    }
    for (const char* fen : choice.fens) {
        newGame();
        fenToBoard(fen);
        i32 success = 0;
        const i32 wdl = probeWdl(success);
        if (success != 0 && (wdl < -2 || wdl > 2)) {
            __builtin_trap();
        }
    }
    tbHash.fill(tbHashBucket{});
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    std::string_view input = textOf(data, size);
    const TableChoice& choice = tableChoices[takeByte(input) % tableChoices.size()];
    const TableBytes copy = copyOf(input);
    tbEntryPawn record{};
    tbEntry& entry = record.head;
    entry.material = materialOfName(choice.name);
    entry.file = record.file.data();
    entry.data = copy.file;
    if (setUpTableWdl(entry)) {
        for (const TableFile& file : record.file) {
            decodeMany(file.side[0]);
            decodeMany(file.side[1]);
        }
        probePositions(choice, entry);
    }
    entry.data = MappedFile{};  // no mapping
    unloadTableWdl(entry);
    return 0;
}
