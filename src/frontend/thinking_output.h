// What a think tells while it runs, to whoever shows it. The search fills it in and prints nothing itself; the program
// sets `thinkingSink` once at its start. No include but search records.
#pragma once

#include "search/search_info.h"

/// How an attempt at a depth ended: a score at the edge of its window is only a bound, and the depth is tried again.
enum class AttemptEnd : u8 { exact, failedLow, failedHigh };

/// One attempt that ran to its end.
struct ThinkingAttempt {
    i32 depth;           // plies
    i32 score;           // centipawns from the side to move: the search's, or a better one by tables
    AttemptEnd end;      // failedLow: the true score is `score` or lower; failedHigh: or higher
    i32 milliseconds;    // since EngineOptions.searchStartMs
    u32 nodes;           // of this attempt
    u64 nodesOfThink;    // of all attempts of this think so far
    u64 tableHits;       // positions that the search of this think has found in the tablebases so far
    const PvLine& line;  // gs_lineH; after a failed attempt it may be an earlier one's
};

/// Where the news go. Every function runs on the thread that thinks, with `board` at the root; none may be null.
struct ThinkingSink {
    /// An attempt has ended, whatever `postThinking` says. Not called for one that was stopped.
    void (*attempt)(const ThinkingAttempt& attempt);
    /// The only legal move, as a line of one: nothing is searched.
    void (*onlyMove)(const PvLine& line);
    /// The side to move mates, or is mated, in so many moves. Told after the attempt that found it.
    void (*mateIn)(i32 moves);
    void (*matedIn)(i32 moves);
    /// The search of a root move begins; `number` counts from 1. `move` is a Mossa.
    void (*rootMove)(u32 move, i32 number, i32 count);
    /// allocateTime has given this think so many centiseconds: the share `divisor` of the clock at move `moveNumber`.
    void (*budget)(i32 moveNumber, i32 divisor, i32 centiseconds);
};

/// Tells nobody until a program sets it. Not to be changed while a search runs.
extern ThinkingSink thinkingSink;
