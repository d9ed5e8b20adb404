// What the console and the protocol do alike: clocks and switches, the way a move is announced.
#include "frontend/internal.h"

#include "board/board.h"
#include "frontend/frontend.h"
#include "platform/print.h"

// At or below this the opponent's clock switches pondering off, centiseconds.
constexpr i32 lowOpponentClock = 1000;

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

// Reads a clock from the sixth byte on; one that cannot be read stays.
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
