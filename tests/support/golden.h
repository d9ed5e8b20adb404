// Golden lists: text files of blocks, each begun by a line "fen ..." and followed by what is expected of that position.
#pragma once

#include "support/test_data.h"

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

struct GoldenBlock {
    std::string fen;
    std::vector<std::string> lines;
};

/// The blocks of a file in tests/data/golden. Ends the test program if it cannot be read: nothing can be tested then.
inline std::vector<GoldenBlock> readGoldenBlocks(const std::string& file) {
    std::ifstream input(testDataPath("golden/" + file));
    std::vector<GoldenBlock> blocks;
    for (std::string line; std::getline(input, line);) {
        if (line.starts_with("fen ")) {
            blocks.push_back({line.substr(4), {}});
        } else if (!blocks.empty()) {
            blocks.back().lines.push_back(line);
        }
    }
    if (blocks.empty()) {
        std::abort();
    }
    return blocks;
}
