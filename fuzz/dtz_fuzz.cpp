// A DTZ file: whatever is accepted is decoded all over, and probed for each value that a position may have.
#include "table_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    std::string_view input = textOf(data, size);
    const TableChoice& choice = tableChoices[takeByte(input) % tableChoices.size()];
    tryDtzFile(choice.name, input, [&choice] {
        for (const char* fen : choice.fens) {
            for (const i32 wdl : {-2, -1, 1, 2}) {
                i32 success = 0;
                static_cast<void>(dtzOfPosition(fen, wdl, success));
            }
        }
    });
    return 0;
}
