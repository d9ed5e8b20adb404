// A WDL file: whatever is accepted is decoded all over, and probed through the registry.
#include "table_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    std::string_view input = textOf(data, size);
    const TableChoice& choice = tableChoices[takeByte(input) % tableChoices.size()];
    tryWdlFile(choice.name, input, [&choice] {
        for (const char* fen : choice.fens) {
            i32 success = 0;
            static_cast<void>(wdlOfPosition(fen, success));
        }
    });
    return 0;
}
