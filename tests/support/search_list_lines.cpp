// The lists of the search. A think tells its attempts to the functions here, which keep them as lines until the nodes of
// the list are used up.
#include "frontend/frontend.h"
#include "frontend/thinking_output.h"
#include "platform/platform.h"
#include "search/search.h"
#include "search/search_watch.h"
#include "support/fresh_state.h"
#include "support/list_lines.h"
#include "support/record_text.h"

#include <algorithm>

namespace {

// The search that runs.
struct {
    ListedSearch search;
    u64 nodesAtMost;
    u64 nodesOfAttempts;
    bool isOver;  // the rest is not listed
} running;

std::string movesOf(const PvLine& line) {
    // A line may count more moves than it has room for, after extensions.
    const i32 count = std::min(line.count, static_cast<i32>(line.argmove.size()));
    Scacchiera mover = *board;  // stands for the colour to move alone
    std::string text;
    for (i32 i = 0; i < count; ++i) {
        const Mossa move = line.argmove[static_cast<u32>(i)];
        if (move == 0) {
            continue;
        }
        text += ' ' + moveText(move, mover);
        mover.stateFlags ^= blackToMoveFlag;
    }
    return text;
}

void keepLine(const std::string& line) {
    if (!running.isOver) {
        running.search.lines.push_back(line);
    }
}

void endWhenNodesAreUsedUp(u64 nodes) {
    if (nodes > running.nodesAtMost && !running.isOver) {
        keepLine("limit at depth " + std::to_string(SearchInfo.iterationDepth));
        running.isOver = true;
        EngineOptions.stopSearch = 1;
    }
}

void keepAttempt(const ThinkingAttempt& attempt) {
    endWhenNodesAreUsedUp(attempt.nodesOfThink);
    running.nodesOfAttempts = attempt.nodesOfThink;
    keepLine(std::to_string(attempt.depth) + ' ' + std::to_string(attempt.score) + ' ' +
             std::to_string(attempt.nodes) + movesOf(attempt.line));
    if (!running.isOver) {
        running.search.best = attempt.line.argmove[0];
    }
}

void keepOnlyMove(const PvLine& line) {
    keepLine("0 0 " + std::to_string(SearchInfo.nodes) + movesOf(line));
    running.search.best = line.argmove[0];
}

constexpr ThinkingSink keeping{
    .attempt = keepAttempt,
    .onlyMove = keepOnlyMove,
    // With the blank behind, as they are printed.
    .mateIn = [](i32 moves) { keepLine("Mate in " + std::to_string(moves) + " "); },
    .matedIn = [](i32 moves) { keepLine("Mated to " + std::to_string(moves) + " "); },
    .rootMove = [](u32, i32, i32) {},
    .budget = [](i32, i32, i32) {},
};

}  // namespace

ListedSearch listedSearch(const SearchLimits& limits) {
    running = {};
    running.nodesAtMost = limits.nodes;
    EngineOptions.maxDepth = limits.depth;
    EngineOptions.stopSearch = 0;
    EngineOptions.searchStartMs = nowMs();
    TimeControl.moveTime = twoHours;
    TimeControl.allocatedTime = twoHours;
    const ThinkingSink before = thinkingSink;
    thinkingSink = keeping;
    SearchWatch.clockRead = [] { endWhenNodesAreUsedUp(running.nodesOfAttempts + SearchInfo.nodes); };
    think(0);
    SearchWatch.clockRead = nullptr;
    thinkingSink = before;
    return running.search;
}
