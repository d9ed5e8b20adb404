// The UCI side of the companion: the input is what comes in.
#include "gui_session.h"
#include "uci.h"

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    takeSession({beginUci, takeUciLine, endUci, {"ash", "ASH", "yzygy", "YZYGY"}}, textOf(data, size));
    return 0;
}
