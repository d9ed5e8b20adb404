// The search thread: one for the life of the program. It takes an order, runs the engine's think on the game's position,
// and hands over what it found. Everything here but the two functions of a program's start and end is called with the
// session's mutex held.
#pragma once

#include "board/board.h"
#include "frontend/thinking_output.h"
#include "rules.h"

#include <mutex>
#include <string>
#include <vector>

/// Guards all of the companion's state. Free while think runs.
extern std::mutex sessionMutex;
using SessionLock = std::unique_lock<std::mutex>;

/// What one attempt of a search has found, as both protocols want it.
struct Finding {
    i32 depth;
    i32 score;  // centipawns from the side to move; mates as the engine counts them
    AttemptEnd end;
    i32 milliseconds;  // since the search was started
    u64 attemptNodes;  // of this attempt
    u64 allNodes;      // of the whole search
    u64 tableHits;
    std::vector<std::string> line;  // legal moves
};

/// What a search leaves behind.
struct Outcome {
    std::string best;   // always legal; empty only where there is no legal move
    std::string reply;  // the answer it expects, legal after `best`; may be empty
    bool completed;     // whether an attempt has ended
};

/// Called on the search thread: `found` with the mutex free and `board` at the root; `finished` with the mutex held, no
/// search running any more and `board` at the game's position, so that it may start the next.
struct SearchListener {
    void (*found)(const Finding& finding);
    void (*rootMove)(const std::string& text, i32 number, i32 count);
    void (*finished)(const Outcome& outcome);
};

struct SearchOrder {
    SearchListener listener{};
    i32 ponderSearch = 0;       // think's argument
    Mossa expected = 0;         // put on the board before the search and taken off after it
    u64 nodes = ~u64{0};        // ends soon after so many
    i32 mateMoves = 0;          // ends when it sees a mate in so many; 0: goes on
    std::vector<Mossa> only{};  // root moves; empty: all
};

/// How far a running search has got.
struct Progress {
    i32 milliseconds;
    u64 nodes;
    i32 depth;
    i32 movesLeft;  // of the root, at this depth
    i32 movesTotal;
    std::string move;  // the one in hand; may be empty
};

/// False if the system has no thread.
[[nodiscard]] bool startSearchThread();

/// Ends the running search, which is dropped, and the thread.
void endSearchThread();

/// Instead of a thread, for fuzzing: a search runs inside startSearch and ends soon after so many nodes.
void searchInPlace(u64 nodes);

/// Starts a search. Before: none runs, the settings are applied and the budget is set (budget.h).
void startSearch(const SearchOrder& given);

[[nodiscard]] bool searchRuns();

/// Tells a running search to come to its end, and waits for nothing: `finished` follows.
void hurrySearch();

/// The same, and waits until `finished` has been called.
void finishSearch(SessionLock& lock);

/// Ends a running search and waits; it is dropped, `finished` is not called.
void dropSearch(SessionLock& lock);

[[nodiscard]] Progress searchProgress();
