// Records and moves as text, in the form of the golden lists.
#pragma once

#include "board/board.h"
#include "eval/psq.h"

#include <cinttypes>
#include <cstdio>
#include <string>

/// Every field of the record at `board`, its key and score also from scratch.
[[nodiscard]] inline std::string recordFields() {
    const Scacchiera& b = *board;
    char text[400];
    std::snprintf(text, sizeof text,
                  "side=%016" PRIx64 " pbq=%016" PRIx64 " nbk=%016" PRIx64 " rqk=%016" PRIx64
                  " castle=%02x ep=%d rule50=%d flags=%02x psq=%d key=%016" PRIx64 " compute=%016" PRIx64
                  " easy=%d",
                  b.side, b.pbq, b.nbk, b.rqk, b.castleRights, b.epFile, b.rule50, b.stateFlags, b.psqScore,
                  b.hashKey, computeKey(), easyVal());
    return text;
}

/// A move of the side to move of `mover`, without the blank of moves that do not promote.
[[nodiscard]] inline std::string moveText(Mossa move, const Scacchiera& mover = *board) {
    char text[6];
    moveToText(text, move, mover);
    const std::string result = text;
    return result.substr(0, result.find(' '));
}
