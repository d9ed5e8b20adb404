// Whether the rules end the game in the position at `board`, said in the protocol's result lines. The checks do not
// stop each other: a mate on the hundredth ply prints two lines. Insufficient material ends no game here.
#include "frontend/game_end.h"

#include "board/board.h"
#include "platform/print.h"

constexpr i32 drawingRepetition = 2;  // the position stands for the third time
constexpr i32 fiftyMovePlies = 99;    // the last count without a draw

static bool isLegal(Mossa move) {
    makeMove(move);
    const bool legal = leftInCheck() == 0;
    --board;
    return legal;
}

static bool hasLegalMove() {
    MoveArray moves;
    i32 count = 0;
    orderedMoves(moves, count);
    for (i32 i = 0; i < count; ++i) {
        if (isLegal(moves[static_cast<u32>(i)])) {
            return true;
        }
    }
    return false;
}

static const char* resultWithoutMoves() {
    if (inCheck() == 0) {
        return "1/2-1/2 {Stalemate}\n";
    }
    return blackToMove(*board) ? "1-0 {White mates}\n" : "0-1 {Black mates}\n";
}

static void announce(const char* line) {
    print("%s", line);
    flushOutput();
}

i32 checkGameEnd() {
    i32 result = 0;
    // Deliberate: only this very count, a fourth time prints nothing.
    if (repetitionCount(*board) == drawingRepetition) {
        announce("1/2-1/2 {Draw by repetition}\n");
        result = 1;
    }
    if (!hasLegalMove()) {
        announce(resultWithoutMoves());
        result = 1;
    }
    if (board->rule50 > fiftyMovePlies) {
        announce("1/2-1/2 {Draw by 50 move rule}\n");
        result = 1;
    }
    return result;
}
