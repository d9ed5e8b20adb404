// What the fuzz targets share: the calls that the fuzzer makes, and a file that holds one input.
#pragma once

#include "platform/bits.h"

#include <cstddef>
#include <string>
#include <string_view>

extern "C" {
/// Feeds one input to the target. Defined by each target; returns 0.
int LLVMFuzzerTestOneInput(const u8* data, std::size_t size);
/// Called once before the first input: fills the tables and sends standard output to nowhere.
int LLVMFuzzerInitialize(int* argc, char*** argv);
}

/// Writes `bytes` over this process's scratch file and returns its name. The file goes at the end of the process.
const std::string& scratchFile(std::string_view bytes);

/// Takes a byte off the input, 0 from an empty one.
u8 takeByte(std::string_view& input);

/// The input's bytes as text.
inline std::string_view textOf(const u8* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
