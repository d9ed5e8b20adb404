// Scores, counts and lines in UCI's words.
#include "uci_info.h"

#include "hash/hash.h"
#include "platform/print.h"

#include <cinttypes>

constexpr i32 longSearchMs = 1000;

static std::string scoreText(i32 score) {
    const std::optional<i32> mate = mateMoves(score);
    if (mate) {
        return "mate " + std::to_string(score > 0 ? *mate : -*mate);
    }
    return "cp " + std::to_string(score);
}

static const char* boundText(AttemptEnd end) {
    switch (end) {
        case AttemptEnd::failedLow:
            return " upperbound";
        case AttemptEnd::failedHigh:
            return " lowerbound";
        case AttemptEnd::exact:
            break;
    }
    return "";
}

void printFinding(const Finding& finding) {
    const u64 milliseconds = static_cast<u64>(finding.milliseconds > 0 ? finding.milliseconds : 1);
    std::string line;
    for (const std::string& move : finding.line) {
        line += " " + move;
    }
    print("info depth %d score %s%s time %d nodes %" PRIu64 " nps %" PRIu64 " hashfull %d tbhits %" PRIu64
          "%s%s\n",
          finding.depth, scoreText(finding.score).c_str(), boundText(finding.end), finding.milliseconds,
          finding.allNodes, finding.allNodes * 1000 / milliseconds, hashFilledPermille(), finding.tableHits,
          line.empty() ? "" : " pv", line.c_str());
}

void printRootMove(const std::string& text, i32 number, i32 count) {
    (void)count;
    const Progress progress = searchProgress();
    if (progress.milliseconds >= longSearchMs) {
        print("info depth %d currmove %s currmovenumber %d\n", progress.depth, text.c_str(), number);
    }
}
