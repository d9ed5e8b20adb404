// Lines of the input files, one after the other, without ever waiting where nothing is there yet.
#pragma once

#include "options.h"

#include <string>

struct InputLine {
    std::string text;  // without the end of the line
    std::string file;
    u64 number;  // in this file, from 1
};

enum class LineState : u8 { given, notYet, end };

struct LineSource {
    std::vector<std::string> files;
    LineRange range;
    std::size_t index = 0;  // of the file in hand
    int descriptor = -1;
    bool fileEnded = false;
    std::string bytes{};
    std::size_t used = 0;      // of `bytes`
    std::size_t searched = 0;  // of `bytes`, for the end of a line
    u64 numberInFile = 0;
    u64 numberOfAll = 0;
    std::string fault{};  // a file that cannot be read
};

/// Gives the next line of the range. Ends early at a fault.
[[nodiscard]] LineState nextLine(LineSource& source, InputLine& line);

/// The name of an input file in messages.
[[nodiscard]] std::string shownName(const std::string& file);

/// What to wait for after notYet.
[[nodiscard]] int descriptorOf(const LineSource& source);

/// Reads a whole file, or standard input for "-". Returns an empty text, or what is wrong with it.
[[nodiscard]] std::string readWhole(const std::string& file, std::string& text);

/// Lines that the files hold, at most those of the range; 0 if that cannot be told without reading a pipe.
[[nodiscard]] u64 countLines(const std::vector<std::string>& files, const LineRange& range);
