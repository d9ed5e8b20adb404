// Whole files to and from memory, and messages about their lines.
#pragma once

#include "platform/bits.h"

#include <string>
#include <string_view>

/// Reads a regular file. Returns false, and says why on standard error, if it cannot be read.
[[nodiscard]] bool readFile(const std::string& fileName, std::string& bytes);

/// Replaces a file, whole or not at all. Returns false, and says why on standard error, if it cannot be written.
[[nodiscard]] bool writeFile(const std::string& fileName, std::string_view bytes);

/// What was wrong in the files read so far.
struct FaultLog {
    u64 count;
};

/// Says on standard error what is wrong in a line of a file. After twenty faults it only counts.
void reportFault(FaultLog& log, const std::string& fileName, u64 line, std::string_view text,
                 const char* fault);
