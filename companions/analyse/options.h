// What the command line asks for.
#pragma once

#include "analysis.h"

#include <string>
#include <vector>

struct LineRange {
    u64 first;
    u64 last;
};

struct Options {
    Limits limits;
    i32 jobs;
    i32 hashMegabytes;
    bool json;
    bool suite;
    bool withTime;  // seconds are written: by wish, or because a clock limits the search anyway
    bool pgn;
    i32 threshold;  // centipawns
    LineRange lines;
    std::string resumeFile;          // empty: none
    std::string htmlFile;            // empty: none
    std::vector<std::string> files;  // "-" is standard input
};

/// Reads the command line. Returns true to go on; otherwise `status` is what to end with, and all has been said.
[[nodiscard]] bool readOptions(int argc, char** argv, Options& options, i32& status);
