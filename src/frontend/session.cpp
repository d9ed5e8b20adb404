// The tables of a mode, the game on the board from its start, whose move it is, and taking back.
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

void newGame() {
    board = boardStack.data();
    board->side = 0x000000000000FFFFULL;
    board->pbq = 0x2CFF00000000FF2CULL;
    board->nbk = 0x7600000000000076ULL;
    board->rqk = 0x9900000000000099ULL;
    board->castleRights = OWN_LONG | OWN_SHORT | OPPONENT_LONG | OPPONENT_SHORT;
    board->epFile = noEpFile;
    board->rule50 = 0;
    board->stateFlags = 0;
    TimeControl.moveNumber = 0;
    board->hashKey = computeKey();
}
