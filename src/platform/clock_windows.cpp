// The Windows clock of platform.h. Alone in its file: a test that brings a clock of its own then links that one instead.
#include "platform/platform.h"

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

// The system's tick count moves in steps of up to 16 ms, too coarse for a fast game.
i32 nowMs() {
    LARGE_INTEGER frequency{};
    LARGE_INTEGER count{};
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    const i64 seconds = count.QuadPart / frequency.QuadPart;
    const i64 rest = count.QuadPart % frequency.QuadPart;
    return static_cast<i32>(static_cast<u32>(seconds * 1000 + rest * 1000 / frequency.QuadPart));
}
