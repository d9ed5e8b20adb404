// Writes a golden list anew, with what the engine says today of the positions of an old one:
//
//     list_writer LIST <OLD >NEW
//
// material_list_writer is the same with another evaluation, for the list of searches that was made with it.
#include "board/board.h"
#include "frontend/frontend.h"
#include "frontend/game_end.h"
#include "hash/hash.h"
#include "lists/write_list.h"
#include "platform/print.h"
#include "support/fresh_state.h"
#include "support/record_text.h"

namespace {

constexpr SearchLimits fullLimits = {12, 300000};
constexpr SearchLimits gameLimits = {5, ~u64{0}};
constexpr i32 gamePlies = 60;

// ---- what is said of one line of the input; false if that is no position -------------------------------------------

bool writeMoves(const std::string& fen) {
    if (!startNewStack(fen)) {
        return false;
    }
    printLines(generatedMoves());
    return true;
}

bool writeExchanges(const std::string& fen) {
    if (!startNewStack(fen)) {
        return false;
    }
    printLines(exchangeValues());
    return true;
}

bool writeValues(const std::string& fen) {
    allocateTestTables();
    if (!startNewStack(fen)) {
        return false;
    }
    pawnHashClear();
    print("%s\n", staticValues().c_str());
    return true;
}

bool writeUserMove(const std::string& line) {
    const std::size_t split = line.find(';');
    if (split == std::string::npos || !startNewStack(line.substr(0, split))) {
        return false;
    }
    print("%s\n", answerToUserMove(line.c_str() + split + 1).c_str());
    return true;
}

bool writeFullSearch(const std::string& fen) {
    if (!startFresh(fen)) {
        return false;
    }
    writeThink(fullLimits);
    return true;
}

bool writeTablesAbsent(const std::string& fen) {
    if (!startFresh(fen)) {
        return false;
    }
    EngineOptions.syzygy = 1;
    writeThink(fullLimits);
    return true;
}

// The pawn hash and the game's records go on from move to move. checkGameEnd prints the result's lines in their place.
bool writeGame(const std::string& fen) {
    if (!startFresh(fen)) {
        return false;
    }
    i32 over = 0;
    for (i32 ply = 1; ply <= gamePlies && over == 0; ++ply) {
        print("ply %d\n", ply);
        makeMove(writeThink(gameLimits));
        over = checkGameEnd();
    }
    print("end %s\n", recordFields().c_str());
    return true;
}

constexpr GoldenList goldenLists[] = {
    {"moves.txt", writeMoves, true},
    {"see.txt", writeExchanges, true},
    {"eval.txt", writeValues, true},
    {"user.txt", writeUserMove, false},
    {"search-full.txt", writeFullSearch, true},
    {"search-full-syzygy-on-no-files.txt", writeTablesAbsent, true},
    {"games-depth5.txt", writeGame, true},
};

}  // namespace

int main(int argc, char** argv) {
    return runListWriter(goldenLists, argc, argv);
}
