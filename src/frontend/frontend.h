// The two global records: options and run state, clocks. No include but platform types.
#pragma once

#include "platform/bits.h"
#include "platform/relaxed.h"

/// Options and the run state that joins the command loops, the search and the monitor thread. Zero at process start,
/// then as the configuration says. Relaxed fields are shared between threads while a search runs beside the monitor.
/// Each comment ends with who writes < who reads; "ini" is loadConfig, "loops" are both command loops.
struct EngineOptionsRecord {
    i32 book;                // the book is used when exactly 1: ini < loops
    i32 randBook;            // non-zero: a random book move, else the first: ini < bookProbe
    char bookFile[100];      // ini < loops, for bookProbe and bookList
    i32 syzygy;              // ini < setUpTables, think, search
    char syzygyPath[256];    // ini < setUpTables
    i32 syzygyMen;           // most men for which the search probes: ini < think
    char opponentName[100];  // "name" < nobody but its own debug line
    i32 maxDepth;            // plies: ini, "sd" < think
    Relaxed<i32> minDepth;   // plies: ini, time allocation (1 when time is short) < think
    i32 hashSize;            // MB: ini, "memory" < setUpTables
    i32 pawnHashSize;        // MB: ini < pawnHashAlloc
    u64 hashEntries;         // records: ini from hashSize, resizeHashTable < setUpTables, hashClear's callers
    u64 pawnHashEntries;     // records: ini from pawnHashSize < pawnHashAlloc
    i32 safePly;             // depth from which a ponder search is good enough: ini < xboard loop, monitor
    i32 kingDanger;          // evaluate sets, search clears < search
    Relaxed<i32> postThinking;   // ini, "post", "nopost", console < printed thinking, bookProbe
    Relaxed<i32> gameOver;       // loops after checkGameEnd, "new", monitor < loops
    Relaxed<u8> engineSide;      // 0 White, 1 Black, 'c' neither: main, loops, monitor < loops, monitor
    i32 quitRequest;             // loops, main < main, console loop
    Relaxed<i32> stopSearch;     // the search unwinds when exactly 1: search, think, loops, monitor,
                                 // allocateTime (0) < search, think, monitor, printed thinking
    i32 analyzeMode;             // "analyze" < nobody
    Relaxed<i32> searchStartMs;  // nowMs when the budget began: time allocation, loops < search, think
    Relaxed<i32> ponder;         // "hard", "easy", "new", low clocks, think at a mate, monitor < xboard loop
    u32 lastUserMove;            // Mossa: parseUserMove < xboard loop
    Relaxed<u32> ponderMove;     // Mossa expected from the opponent: think(0), xboard loop < xboard loop
    char ponderText[8];          // the same as text: xboard loop < monitor
    Relaxed<u32> ponderBest;     // Mossa, reply to the expected move: think(1), xboard loop < xboard loop
    Relaxed<u32> searchResult;   // Mossa of the last think: xboard loop, think thread < xboard loop
    Relaxed<i32> replayCommand;  // the monitor's line is the next command: monitor, xboard loop < xboard loop
    Relaxed<i32> pondering;      // the expected move stands on the board: xboard loop, monitor < both
    i32 xboardMode;              // main < bookProbe
};

constexpr u8 noEngineSide = 'c';

/// Clocks and time settings, centiseconds unless said. Comments as above.
struct TimeControlRecord {
    i32 suddenDeath;        // base divisor: ini < time allocation
    i32 maxTime;            // ini < printParams
    i32 moreTime;           // divisor, less when ahead on the clock: ini < time allocation
    i32 lessTime;           // divisor, more when behind: ini < time allocation
    i32 fastGame;           // divisor, more when short of time: ini < time allocation
    i32 fastOpening;        // divisor, more in the opening: ini < time allocation
    i32 moveNumber;         // engine moves so far: newGame, xboard loop < xboard loop, time allocation
    Relaxed<i32> moveTime;  // hard bound of a think: ini, "st" < search
    // Budget of a think; written after its searchStartMs and read before it: ini, time allocation, xboard loop
    // < search, think
    Published<i32> allocatedTime;
    i32 movesPerSession;         // "level" < nobody but its own debug line
    Relaxed<i32> engineClock;    // ini, "time", "level", monitor < time allocation
    Relaxed<i32> opponentClock;  // "otim", "level", monitor < time allocation, "otim"
    i32 increment;               // "level" < time allocation
};

extern EngineOptionsRecord EngineOptions;
extern TimeControlRecord TimeControl;
