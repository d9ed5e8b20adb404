// Searching beside the input: a think thread runs think(1), a monitor thread reads lines and decides what each means
// for that search, and the main thread sleeps until both have ended. Shared fields are Relaxed; the start of the
// threads and the joins order everything else. `board` belongs to the think thread meanwhile.
#include "frontend/internal.h"

#include "board/board.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "frontend/time_allocation.h"
#include "platform/platform.h"
#include "platform/print.h"
#include "platform/thread.h"
#include "search/search.h"

#include <cstring>

// The monitor's own notes for the main thread, which reads them after the join.
struct MonitorNotes {
    char* lastLine;  // lineBufferSize bytes
    bool inputEnded;
    bool newGameWanted;  // the stack still belongs to the search when "new" is read
};

// ---- the think thread -----------------------------------------------------------------------------------------

static void thinkThread(void*) {
    EngineOptions.searchResult = think(1);
}

// ---- the monitor thread ---------------------------------------------------------------------------------------

// Deliberate: four bytes, so a promotion letter is not compared. Analysis expects no move.
static bool isExpectedMove(const char* text) {
    return EngineOptions.pondering == 1 && std::strncmp(text, EngineOptions.ponderText, 4) == 0;
}

static void stopAndReplay() {
    EngineOptions.replayCommand = 1;
    EngineOptions.stopSearch = 1;
}

// The move in `text` has been played: either the search goes on as the real one, or it ends and the line is taken
// again by the command loop.
static void decideOnMove(const char* text) {
    if (isExpectedMove(text) && SearchInfo.iterationDepth < EngineOptions.safePly) {
        EngineOptions.replayCommand = 0;
        allocateTimeForRunningSearch();
    } else {
        stopAndReplay();
    }
}

static void stopForNewGame(MonitorNotes& notes) {
    EngineOptions.engineSide = 1;
    EngineOptions.gameOver = 0;
    EngineOptions.stopSearch = 1;
    EngineOptions.ponder = 0;
    EngineOptions.pondering = 0;
    notes.newGameWanted = true;
}

// Returns whether `line` ends the monitor. Deliberate: every line that is not known here is dropped, "quit" too.
static bool endsMonitor(const char* line, MonitorNotes& notes) {
    if (isWord(line, "exit")) {
        EngineOptions.engineSide = noEngineSide;
        EngineOptions.stopSearch = 1;
        return true;
    }
    if (hasPrefix(line, "time")) {
        storeEngineClock(line);
        return false;
    }
    if (hasPrefix(line, "otim")) {
        storeOpponentClock(line);
        return false;
    }
    if (hasPrefix(line, "usermove")) {
        decideOnMove(fromByte(line, 10));
        return true;
    }
    if (isWord(line, "new")) {
        stopForNewGame(notes);
        return true;
    }
    if (hasPrefix(line, "easy")) {
        EngineOptions.stopSearch = 1;
        EngineOptions.ponder = 0;
        return true;
    }
    if (isWord(line, "go")) {
        stopAndReplay();
        EngineOptions.engineSide = EngineOptions.engineSide == 0 ? u8{1} : u8{0};
        return true;
    }
    return false;
}

static void monitorThread(void* argument) {
    MonitorNotes& notes = *static_cast<MonitorNotes*>(argument);
    char line[lineBufferSize];
    do {
        if (!readLine(line)) {
            notes.inputEnded = true;
            EngineOptions.stopSearch = 1;
            return;
        }
        std::memcpy(notes.lastLine, line, sizeof line);
        if (endsMonitor(line, notes)) {
            return;
        }
        // Only here: a search that has ended by itself is noticed with the next line.
    } while (EngineOptions.stopSearch == 0);
}

// ---- the pair -------------------------------------------------------------------------------------------------

// The process cannot go on without its threads; one of them may be searching, so nothing is torn down.
static void startOrEnd(Thread& thread, i32 number, void (*entry)(void*), void* argument) {
    if (!startThread(thread, entry, argument)) {
        print("#DEBUG Errore nella creazione del thread %d\n", number);
        exitNow(1);
    }
}

static void startPair(Thread& thinker, Thread& monitor, MonitorNotes& notes) {
    SearchInfo.iterationDepth = 0;  // the monitor may look before the search has begun
    startOrEnd(thinker, 1, thinkThread, nullptr);
    startOrEnd(monitor, 2, monitorThread, &notes);
}

static bool pairEnded(const MonitorNotes& notes) {
    if (notes.newGameWanted) {
        newGame();
    }
    return !notes.inputEnded;
}

bool ponderBesideInput(char (&lastLine)[lineBufferSize]) {
    MonitorNotes notes{lastLine, false, false};
    Thread thinker{};
    Thread monitor{};
    startPair(thinker, monitor, notes);
    joinThread(monitor);
    joinThread(thinker);
    return pairEnded(notes);
}

bool analyzeBesideInput(char (&lastLine)[lineBufferSize]) {
    MonitorNotes notes{lastLine, false, false};
    Thread thinker{};
    Thread monitor{};
    startPair(thinker, monitor, notes);
    joinThread(thinker);
    joinThread(monitor);
    return pairEnded(notes);
}
