// What the console and the protocol do alike: setting up tables, clocks and switches, the way a move is announced.
#include "board/board.h"
#include "frontend/config.h"
#include "frontend/frontend.h"
#include "frontend/internal.h"
#include "hash/hash.h"
#include "platform/print.h"
#include "tablebase/tablebase.h"

// At or below this the opponent's clock switches pondering off, centiseconds.
constexpr i32 lowOpponentClock = 1000;

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

void printMove(u32 move) {
    char text[6];
    moveToText(text, move, *board);
    print("move %s\n", text);
}

Next takePost(const char*) {
    EngineOptions.postThinking = 1;
    return Next::nextLine;
}

Next takeNopost(const char*) {
    EngineOptions.postThinking = 0;
    return Next::nextLine;
}

Next takeStat(const char*) {
    print("#DEBUG stat\n");
    return Next::nextLine;
}

Next takeHard(const char*) {
    print("#DEBUG Pondering ON\n");
    EngineOptions.ponder = 1;
    return Next::nextLine;
}

Next takeEasy(const char*) {
    print("#DEBUG Pondering OFF\n");
    EngineOptions.ponder = 0;
    return Next::nextLine;
}

/// Reads a clock from the sixth byte on; one that cannot be read stays.
static i32 clockFrom(const char* line, i32 former) {
    const char* text = fromByte(line, 6);
    i32 centiseconds = former;
    scanNumber(text, centiseconds);
    return centiseconds;
}

void storeEngineClock(const char* line) {
    TimeControl.engineClock = clockFrom(line, TimeControl.engineClock);
    print("#DEBUG time:%d\n", TimeControl.engineClock.load());
}

void storeOpponentClock(const char* line) {
    TimeControl.opponentClock = clockFrom(line, TimeControl.opponentClock);
    print("#DEBUG otim:%d\n", TimeControl.opponentClock.load());
}

Next takeTime(const char* line) {
    storeEngineClock(line);
    return Next::nextLine;
}

Next takeOtim(const char* line) {
    storeOpponentClock(line);
    if (TimeControl.opponentClock <= lowOpponentClock) {
        EngineOptions.ponder = 0;
    }
    return Next::nextLine;
}
