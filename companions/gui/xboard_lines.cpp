// Thinking lines: depth, score, hundredths of a second, nodes of the attempt as the engine counts them, moves. Mates in
// the protocol's scale; a mark at the end where the score is only a bound.
#include "xboard_lines.h"

#include "platform/print.h"
#include "xboard_play.h"

#include <cinttypes>

constexpr i32 protocolMate = 100000;

static i32 protocolScore(i32 score) {
    const std::optional<i32> mate = mateMoves(score);
    if (!mate) {
        return score;
    }
    return score > 0 ? protocolMate + *mate : -protocolMate - *mate;
}

static const char* boundMark(AttemptEnd end) {
    switch (end) {
        case AttemptEnd::failedLow:
            return " ?";
        case AttemptEnd::failedHigh:
            return " !";
        case AttemptEnd::exact:
            break;
    }
    return "";
}

void printXboardFinding(const Finding& finding) {
    if (postWanted == 0) {
        return;
    }
    std::string line;
    for (const std::string& move : finding.line) {
        line += " " + move;
    }
    print("%2d %6d %6d %10" PRIu64 "%s%s\n", finding.depth, protocolScore(finding.score),
          finding.milliseconds / 10, finding.attemptNodes, line.c_str(), boundMark(finding.end));
}

void printStatus() {
    const Progress progress = searchProgress();
    print("stat01: %d %" PRIu64 " %d %d %d%s%s\n", progress.milliseconds / 10, progress.nodes, progress.depth,
          progress.movesLeft, progress.movesTotal, progress.move.empty() ? "" : " ", progress.move.c_str());
}
