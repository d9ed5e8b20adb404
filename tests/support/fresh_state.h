// Where every search of the golden lists and of the tests starts from: what a process is like that has just been told a
// position. Tables in the sizes of the lists, both empty, no clock, nothing printed.
#pragma once

#include "board/board.h"
#include "frontend/frontend.h"
#include "frontend/session.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "platform/print.h"
#include "search/ordering.h"
#include "search/search_info.h"

#include <string>

constexpr i32 twoHours = 720000;  // centiseconds

/// Allocates both hash tables in the sizes of the golden lists, unless they are so, with nothing on standard output.
inline void allocateTestTables() {
    constexpr u64 entries = 4194304;
    constexpr u64 pawnEntries = 11184810;
    if (EngineOptions.hashEntries == entries && EngineOptions.pawnHashEntries == pawnEntries) {
        return;
    }
    EngineOptions.hashSize = 64;
    EngineOptions.hashEntries = entries;
    EngineOptions.pawnHashSize = 256;
    EngineOptions.pawnHashEntries = pawnEntries;
    setLinePrefix(nullptr);
    hashAlloc(EngineOptions.hashEntries, EngineOptions.hashSize);
    pawnHashAlloc();
    setLinePrefix("");
}

/// A new game on a stack that holds nothing but the position of `fen`. False if it is none.
[[nodiscard]] inline bool startNewStack(const std::string& fen) {
    boardStack = {};
    newGame();
    const bool isPosition = fenToBoard(fen.c_str()) == 1;
    SearchInfo.nodes = 0;
    return isPosition;
}

/// The same with all that a search looks at. The clock is the caller's to start.
[[nodiscard]] inline bool startFresh(const std::string& fen) {
    allocateTestTables();
    const bool isPosition = startNewStack(fen);
    hashClear(EngineOptions.hashEntries);
    pawnHashClear();
    historyTable = {};
    killers = {};
    EngineOptions.syzygy = 0;
    EngineOptions.syzygyMen = 5;
    EngineOptions.minDepth = 1;
    EngineOptions.maxDepth = 64;
    EngineOptions.postThinking = 1;
    EngineOptions.kingDanger = 0;
    return isPosition;
}
