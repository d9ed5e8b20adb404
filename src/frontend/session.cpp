// The tables of a mode, whose move it is, and taking back.
#include "frontend/session.h"

#include "board/board.h"
#include "frontend/config.h"
#include "frontend/frontend.h"
#include "hash/hash.h"
#include "tablebase/tablebase.h"

// The configured size stays as it is shown; the number of records becomes that of the table there is.
static void allocateHashTable() {
    EngineOptions.hashEntries = hashAlloc(EngineOptions.hashEntries, EngineOptions.hashSize);
}

void setUpTables() {
    allocateHashTable();
    pawnHashAlloc();
    if (EngineOptions.syzygy != 0) {
        tbInit(EngineOptions.syzygyPath);
    }
}

void resizeHashTable(i32 megabytes) {
    EngineOptions.hashSize = megabytes;
    EngineOptions.hashEntries = hashEntriesFor(megabytes);
    allocateHashTable();
}

u8 sideToMove() {
    return blackToMove(*board) ? u8{1} : u8{0};
}

bool engineIsToMove() {
    return EngineOptions.gameOver == 0 && EngineOptions.engineSide == sideToMove();
}

bool gameHasRoom() {
    return board - boardStack.data() < gameRecordsMax;
}

void takeBackMove() {
    if (board > boardStack.data()) {
        --board;
    }
}
