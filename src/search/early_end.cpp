// What ends a node before its moves are looked at: the clock, a stop from outside, a draw by the rules.
#include "search/internal.h"

#include "board/board.h"
#include "frontend/frontend.h"
#include "platform/platform.h"
#include "search/search_watch.h"

bool clockHasRunOut() {
    if (SearchWatch.clockRead != nullptr) {
        SearchWatch.clockRead();
    }
    const i32 budget = TimeControl.allocatedTime;  // read first, then its start: see setBudget
    const i32 elapsed = elapsedMs(EngineOptions.searchStartMs) / 10;
    if (elapsed <= TimeControl.moveTime && elapsed <= budget) {
        return false;
    }
    EngineOptions.stopSearch = 1;
    return true;
}

bool drawnByRule(TBB checkers) {
    return repetitionCount(*board) == 2 || board->rule50 > 100 || (board->rule50 == 100 && checkers == 0);
}
