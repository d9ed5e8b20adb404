// The xboard side of the companion: the input is what comes in.
#include "gui_session.h"
#include "xboard_side.h"

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    takeSession(
        {beginXboard, takeXboardLine, endXboard, {"ash", "ASH", "memory", "egtpath", "yzygy", "YZYGY"}},
        textOf(data, size));
    return 0;
}
