// Lines from standard input, of any length up to a limit that no interface reaches.
#pragma once

#include <string>

/// A longer line is cut: the rest is read and dropped.
constexpr std::size_t longestLine = std::size_t{4} << 20;

/// Reads a line without its end. False at the end of input, when nothing was read.
[[nodiscard]] bool readInputLine(std::string& line);
