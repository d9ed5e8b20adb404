// The two global records: options and run state, clocks. No include but platform types.
#pragma once

#include "platform/bits.h"
#include "platform/relaxed.h"

/// Options and the run state that joins the command loops, the search and the monitor thread. Zero at process start.
/// Relaxed fields are shared between threads while a search runs beside the monitor.
struct EngineOptionsRecord {
    i32 book;      // the book is used when exactly 1
    i32 randBook;  // non-zero: a random book move, else the first
    char bookFile[100];
    i32 syzygy;
    char syzygyPath[256];
    i32 syzygyMen;  // most men for which the search probes
    char opponentName[100];
    i32 maxDepth;           // plies
    Relaxed<i32> minDepth;  // plies
    i32 hashSize;           // MB
    i32 pawnHashSize;       // MB
    u64 hashEntries;        // records, derived from hashSize; fewer when they could not be had
    u64 pawnHashEntries;    // records, derived from pawnHashSize
    i32 safePly;            // depth from which a ponder search is good enough
    i32 kingDanger;         // set by evaluate, cleared and read by search
    Relaxed<i32> postThinking;
    Relaxed<i32> gameOver;
    Relaxed<u8> engineSide;  // 0 White, 1 Black, 'c' neither
    i32 quitRequest;
    Relaxed<i32> stopSearch;  // the search unwinds when exactly 1
    i32 analyzeMode;
    Relaxed<i32> searchStartMs;  // nowMs at the start of the budget
    Relaxed<i32> ponder;
    u32 lastUserMove;           // Mossa, by parseUserMove
    Relaxed<u32> ponderMove;    // Mossa expected from the opponent
    char ponderText[8];         // the same as text
    Relaxed<u32> ponderBest;    // Mossa, best reply of the ponder search's last finished iteration
    Relaxed<u32> searchResult;  // Mossa, what the last think returned
    Relaxed<i32> replayCommand;
    Relaxed<i32> pondering;  // the expected move stands on the board
    i32 xboardMode;
};

constexpr u8 noEngineSide = 'c';

/// Clocks and time settings, centiseconds unless said.
struct TimeControlRecord {
    i32 suddenDeath;  // base divisor
    i32 maxTime;
    i32 moreTime;                  // divisor, less when ahead on the clock
    i32 lessTime;                  // divisor, more when behind
    i32 fastGame;                  // divisor, more when short of time
    i32 fastOpening;               // divisor, more in the opening
    i32 moveNumber;                // engine moves so far
    Relaxed<i32> moveTime;         // hard bound of a think
    Published<i32> allocatedTime;  // budget of a think; written after its searchStartMs and read before it
    i32 movesPerSession;
    Relaxed<i32> engineClock;
    Relaxed<i32> opponentClock;
    i32 increment;
};

extern EngineOptionsRecord EngineOptions;
extern TimeControlRecord TimeControl;
