// What the fuzz targets share: the calls that the fuzzer makes, and files and folders in memory.
#pragma once

#include "platform/bits.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

extern "C" {
/// Feeds one input to the target. Defined by each target; returns 0.
int LLVMFuzzerTestOneInput(const u8* data, std::size_t size);
/// Called once before the first input: fills the tables, sends standard output to nowhere, and makes the names of
/// files and folders among the arguments absolute, for a target may change its working directory.
int LLVMFuzzerInitialize(int* argc, char*** argv);
}

/// A folder in memory that goes at the end of the process, where the system has room for such: a fuzzer writes there
/// thousands of times a second.
struct ScratchFolder {
    std::filesystem::path path;

    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    /// Writes a file of this folder anew; aborts if that is not possible.
    void write(const std::string& name, std::string_view bytes) const;
};

/// Writes `bytes` over this process's scratch file and returns its name. The file goes at the end of the process.
const std::string& scratchFile(std::string_view bytes);

/// Takes a byte off the input, 0 from an empty one.
u8 takeByte(std::string_view& input);

/// The input's bytes as text.
inline std::string_view textOf(const u8* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
