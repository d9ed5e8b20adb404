// One position searched from a fresh state, so that the answer depends on nothing but the position and the limits.
#pragma once

#include "board/board.h"

#include <string>
#include <vector>

/// What ends a search, whichever comes first; 0 is no limit.
struct Limits {
    i32 depth;         // plies, at most deepestDepth
    i64 milliseconds;  // each position
    u64 nodes;         // each position; the search looks at it once in 1024 nodes
};

constexpr i32 deepestDepth = 64;

/// Whether a search that ended at this depth may be one with these limits: with nothing but a depth it ends there or, where
/// moves are forced, beyond.
[[nodiscard]] constexpr bool isAnswerTo(const Limits& limits, i64 depth) {
    return limits.milliseconds != 0 || limits.nodes != 0 || depth >= limits.depth;
}

/// A position by where its game began, for what stood before counts as repeated.
struct Position {
    std::string fen;           // as readFen gives it
    std::vector<Mossa> moves;  // legal one after the other
};

/// From this depth on the search held `move` for best, until the next choice.
struct Choice {
    i32 depth;
    i32 milliseconds;  // since the start
    std::string move;  // coordinates
};

/// How a position stands by itself.
enum class Standstill : u8 { none, checkmate, stalemate };

struct Analysis {
    std::string fault;  // not empty: there is no answer, and nothing else here holds
    Standstill standstill;
    i32 depth;                      // of the last finished search
    i32 score;                      // centipawns from the side to move; mates as the engine counts them
    u64 nodes;                      // of the whole search
    i32 milliseconds;               // of the whole search
    std::vector<std::string> line;  // short notation
    std::vector<Choice> choices;
};

/// Moves until mate: positive if the side to move mates, negative if it is mated; 0 if the score is none of mate.
[[nodiscard]] i32 mateDistance(i32 score);

/// Takes the engine's globals for this program, and hash tables of so many megabytes. Lines that the core prints are
/// dropped. Once in a process. False if there is no memory for tables of that size.
[[nodiscard]] bool setUpAnalysis(i32 hashMegabytes);

/// Searches a position. Where there is one legal move, the position behind it is searched instead, so that each has a
/// score. `stillWanted` is called about once in 1024 nodes; the search ends when it returns false.
[[nodiscard]] Analysis analysePosition(const Position& position, const Limits& limits, bool (*stillWanted)());
