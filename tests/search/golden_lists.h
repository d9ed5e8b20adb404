// Searches compared with the lists of an independent model: depth, score, node count and line of each iteration.
#pragma once

#include "search/search.h"
#include "search/search_fixture.h"
#include "support/golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSlowBuild = true;
#elif defined(__has_feature)
constexpr bool isSlowBuild = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool isSlowBuild = false;
#endif

// A sanitizer makes a node ten times as dear: there the iterations beyond this count are left out.
constexpr u64 unlimited = ~u64{0};
constexpr u64 nodesPerIteration = isSlowBuild ? 20000 : unlimited;

using Lines = std::vector<std::string>;

inline Lines splitLines(const std::string& text) {
    Lines lines;
    std::istringstream input(text);
    for (std::string line; std::getline(input, line);) {
        lines.push_back(line);
    }
    return lines;
}

inline Lines words(const std::string& line) {
    Lines result;
    std::istringstream input(line);
    for (std::string word; input >> word;) {
        result.push_back(word);
    }
    return result;
}

inline std::string joined(const Lines& parts) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : " ") + part;
    }
    return text;
}

inline bool isThinkingLine(const Lines& parts) {
    return parts.size() >= 3 &&
           std::ranges::all_of(parts[0], [](unsigned char c) { return std::isdigit(c) != 0; });
}

// A line as printed, without its time and with single blanks: the form of the lists.
inline std::string withoutTime(const std::string& line) {
    Lines parts = words(line);
    if (isThinkingLine(parts)) {
        parts.erase(parts.begin() + 2);
    }
    return joined(parts);
}

inline i32 depthOf(const std::string& line) {
    const Lines parts = words(line);
    return isThinkingLine(parts) ? std::stoi(parts[0]) : 0;
}

// What a list expects of one search: its lines without the last depths that are too long for this build.
struct Expectation {
    Lines lines;
    std::string best;
    i32 maxDepth = 1;
    bool hasLastDepth = true;
    bool isWhole = true;  // no more lines may follow
};

inline Expectation readExpectation(Lines::const_iterator first, Lines::const_iterator last, u64 nodesAtMost) {
    Expectation expected;
    i32 tooDeep = 1 << 20;
    for (auto line = first; line != last; ++line) {
        const Lines parts = words(*line);
        if (isThinkingLine(parts) && std::stoull(parts[2]) > nodesAtMost) {
            tooDeep = std::min(tooDeep, std::max(std::stoi(parts[0]), 2));
        }
    }
    i32 depth = 0;
    for (auto line = first; line != last; ++line) {
        const Lines parts = words(*line);
        if (parts.empty()) {
            continue;
        }
        if (parts[0] == "limit") {
            expected.isWhole = false;
            continue;
        }
        if (parts[0] == "best") {
            expected.best = parts[1];
            continue;
        }
        depth = std::max(depth, depthOf(*line));
        if (depth < tooDeep) {
            expected.lines.push_back(joined(parts));
            expected.maxDepth = std::max(expected.maxDepth, depth);
        } else {
            expected.hasLastDepth = false;
        }
    }
    return expected;
}

// Searches the position at `board` and compares. Returns the move.
inline Mossa expectSearch(const Expectation& expected) {
    EngineOptions.maxDepth = expected.maxDepth;
    resetClock();
    testing::internal::CaptureStdout();
    const Mossa best = think(0);
    Lines printed;
    for (const std::string& line : splitLines(testing::internal::GetCapturedStdout())) {
        printed.push_back(withoutTime(line));
    }
    // The model may have ended between two attempts at the last depth.
    const bool hasMore = !expected.isWhole && printed.size() > expected.lines.size();
    if (hasMore) {
        printed.resize(expected.lines.size());
    }
    EXPECT_EQ(printed, expected.lines);
    if (!hasMore && expected.hasLastDepth) {
        EXPECT_EQ(moveText(best), expected.best);
    }
    return best;
}

// ---- single searches ------------------------------------------------------------------------------------------

constexpr std::size_t portionSize = 10;

/// Ten positions of a list, so that tests are of a handy length.
struct Portion {
    const char* name;
    const char* file;
    i32 syzygy;
    std::size_t first;
};

inline std::vector<Portion> portionsOf(const char* name, const char* file, i32 syzygy) {
    std::vector<Portion> result;
    for (std::size_t first = 0; first < readGoldenBlocks(file).size(); first += portionSize) {
        result.push_back({name, file, syzygy, first});
    }
    return result;
}

inline std::string nameOf(const testing::TestParamInfo<Portion>& portion) {
    return portion.param.name + std::to_string(portion.param.first + 1);
}

inline void expectLinesOfTheModel(const Portion& portion) {
    const std::vector<GoldenBlock> blocks = readGoldenBlocks(portion.file);
    const std::size_t last = std::min(portion.first + portionSize, blocks.size());
    for (std::size_t i = portion.first; i < last; ++i) {
        SCOPED_TRACE(blocks[i].fen);
        setUpFreshState(blocks[i].fen);
        EngineOptions.syzygy = portion.syzygy;
        expectSearch(readExpectation(blocks[i].lines.begin(), blocks[i].lines.end(), nodesPerIteration));
    }
}
