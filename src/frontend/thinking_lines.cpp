// The thinking lines: numbers by printThinkingHead, moves by printLine, which ends the line. Runs on the thread that
// thinks; print() keeps the line whole while other threads print.
#include "frontend/thinking_lines.h"

#include "board/board.h"
#include "frontend/frontend.h"
#include "platform/platform.h"
#include "platform/print.h"

#include <algorithm>
#include <cinttypes>

void printThinkingHead(i32 depth, i32 score) {
    flushOutput();
    SearchInfo.elapsedCs = elapsedMs(EngineOptions.searchStartMs) / 10;
    print("%2d %6d %6d %10" PRIu32 " ", depth, score, SearchInfo.elapsedCs, SearchInfo.nodes);
}

void printLine(PvLine line) {
    // A line may count more moves than it has room for, after extensions.
    const i32 count = std::min(line.count, static_cast<i32>(line.argmove.size()));
    Scacchiera mover = *board;  // stands for the colour to move alone
    for (i32 i = 0; i < count; ++i) {
        const Mossa move = line.argmove[static_cast<u32>(i)];
        if (move == 0) {
            continue;
        }
        char text[6];
        moveToText(text, move, mover);
        print("%s ", text);
        mover.stateFlags ^= blackToMoveFlag;
    }
    print("\n");
}

static void printAttempt(const ThinkingAttempt& attempt) {
    if (EngineOptions.postThinking != 1 || EngineOptions.stopSearch != 0) {
        return;
    }
    printThinkingHead(attempt.depth, attempt.score);
    printLine(attempt.line);
}

static void printOnlyMove(const PvLine& line) {
    printThinkingHead(0, 0);
    printLine(line);
}

static void printMateIn(i32 moves) {
    print("Mate in% d \n", moves);
}

static void printMatedIn(i32 moves) {
    print("Mated to% d \n", moves);
}

static void printBudget(i32 moveNumber, i32 divisor, i32 centiseconds) {
    print("#DEBUG moves: %i move speed: %i  allocated time: %i\n", moveNumber, divisor, centiseconds);
}

constinit const ThinkingSink printedThinking{
    .attempt = printAttempt,
    .onlyMove = printOnlyMove,
    .mateIn = printMateIn,
    .matedIn = printMatedIn,
    .rootMove = [](u32, i32, i32) {},
    .budget = printBudget,
};
