// The console's looks into the engine: named test positions, the evaluation's terms, sizes, keys and table probes. None
// is in the help text, none is reachable in the protocol. Texts and column titles are Italian in part.
#include "frontend/internal.h"

#include "board/board.h"
#include "eval/eval.h"
#include "frontend/frontend.h"
#include "hash/hash.h"
#include "platform/print.h"
#include "search/ordering.h"
#include "search/quicksort.h"
#include "tablebase/tablebase.h"

#include <cinttypes>

// ---- test positions -------------------------------------------------------------------------------------------

enum AfterLoading : u8 { loadsOnly = 0, postsThinking = 1, showsBoard = 2, showsScore = 4, thenReplies = 8 };

struct TestPosition {
    const char* name;
    const char* fen;
    i32 then;  // AfterLoading bits
};

// The texts as they were typed once, with or without a blank at the end, and with four fields or six.
// clang-format off
constexpr TestPosition testPositions[] = {
    {"mate", "8/RP6/2k5/8/8/6P1/7P/7K w - - 1 62", postsThinking},
    {"mate8", "8/7K/8/8/8/8/R7/7k w - - 0 1", postsThinking},
    {"killer", "r3qrk1/pp2ppbp/6p1/1Np5/P7/2PP3P/1P2QPP1/R2R2K1 w - - 0 1", loadsOnly},
    {"hang", "rnb1kbnr/pppp1p1Q/6p1/4p1q1/3PP3/8/PPP2PPP/RNB1KBNR w - - 8 1 ", loadsOnly},
    {"test", "r3k2r/p1p3pp/2pq1p2/4pb2/1bQ2n2/2N2N1P/PPPP1PP1/R1B1K1R1 w Qkq - 8 12 ", postsThinking},
    {"good", "r1bqkb1r/ppp2ppp/2n1pn2/8/2pP4/3BPN2/PP3PPP/RNBQK2R w KQkq - 0 6 ", loadsOnly},
    {"bug", "6k1/7p/3p3b/2pN4/4p3/8/1Pn2PPP/4K2R w K - 0 24 ", loadsOnly},
    {"bug2", "r3kb2/1pp5/p4qp1/7r/3pPnQ1/3P1P2/PPP2RPP/RN4K1 w q - 3 21", loadsOnly},
    {"bug5", "3r1rk1/pp1b1p1p/3b1qp1/3P4/2B5/2NQ4/PP3PPP/R4RK1 b - - 4 21 ", loadsOnly},
    {"113", "r1b2rk1/ppn1ppb1/2pq2p1/4N3/3P1PP1/2N4p/PP1QBP1P/R2R2K1 b - - 1 21 ", thenReplies},
    {"cazz", "8/pr6/1p4R1/1Pkp1p2/8/P5P1/3n1PKP/1R6 w - - 0 43", showsBoard},
    {"k1", "7k/8/8/4p3/3P4/8/8/6K1 w - - 6 1", loadsOnly},
    {"k2", "r3q1k1/n4pp1/8/6N1/b7/3Q3R/1B3PPP/6K1 b - - 0 1", loadsOnly},
    {"t1", "4r1k1/6p1/P7/1P6/2p5/3p4/R5P1/6K1 w - - 0 1 ", loadsOnly},
    {"t2", "4r1k1/6p1/P7/1P6/2p5/3p4/R5P1/6K1 b - - 0 1 ", loadsOnly},
    {"w1", "3r2k1/5ppp/6q1/8/6n1/R4NQP/5PP1/6K1 w - - 1 1 ", loadsOnly},
    {"w2", "3r2k1/5ppp/6q1/8/6n1/R4NQP/5PP1/6K1 b - - 1 1 ", loadsOnly},
    {"p1", "6k1/6p1/8/8/8/P7/5PPP/5K2 w - - 0 1 ", loadsOnly},
    {"p2", "6k1/6p1/8/8/P2P4/P2P4/5P2/5K2 w - - 0 1 ", loadsOnly},
    {"p3", "k7/8/p7/K7/8/8/7P/8 w - - 0 1 ", loadsOnly},
    {"p4", "8/7k/8/PK6/8/7p/8/8 w - - 0 1 ", loadsOnly},
    {"err", "r1bq1rk1/p1p3pp/2p5/3ppp2/7N/2PP4/PP1NQ1P1/R4R1K w - - 0 1 ", showsBoard},
    {"all", "8/p1Pk4/7p/p1n5/4p1rP/2KBR3/2P5/8 w - - 1 47", showsBoard},
    {"wac2", "8/7p/5k2/5p2/p1p2P2/Pr1pPK2/1P1R3P/8 b - -", showsBoard},
    {"tatt", "r4k1r/1p3ppp/p4B2/q1bp4/3p2b1/1B1P1Q2/PPP2PPP/RN2R1K1 w - - 1 1", showsBoard},
    {"patta", "8/1k6/r1p3R1/1p1p4/1P1N4/2PK4/8/8 w - - 5 1 ", showsBoard},
    {"tre", "r1br2k1/ppp2ppp/2n2n2/3qp1N1/8/P1PB3P/1PP2PP1/R1BQ1RK1 w - - 2 11", showsBoard},
    {"ava", "6k1/5ppp/5n2/2pNp3/2P1P3/5P2/6PP/6K1 w - - 1 1", showsBoard},
    {"icheck", "2r5/1p1k1ppQ/p3p1n1/3pP1P1/3P4/1Pr1B3/4qP1P/R4RK1 w - - 0 28 ", showsBoard},
    {"wac002", "8/7p/5k2/5p2/p1p2P2/Pr1pPK2/1P1R3P/8 b - - 0 1 ", showsBoard},
    {"wac141", "4r1k1/p1qr1p2/2pb1Bp1/1p5p/3P1n1R/1B3P2/PP3PK1/2Q4R w - - 0 1", showsBoard},
    {"diag", "6k1/pbp5/1p6/8/8/6P1/1B3P1P/6K1 w - - 3 1 ", showsBoard},
    {"ps", "6k1/1b3npp/8/4N3/8/5N2/5PP1/6K1 w - - 0 1 ", showsBoard},
    {"cw", "6k1/p1p2ppp/1p1b4/8/1P6/P1P3P1/5PBP/6K1 w - - 0 1 ", showsBoard},
    {"end", "8/1k3ppp/8/5PPP/K7/8/8/8 w - - 0 1", showsBoard},
    {"bh7", "3qrrk1/p1p2ppp/1p1pb3/8/3Q4/P2B4/1PP2PPP/R3R1K1 w - - 0 16 ", showsBoard},
    {"xray", "r5k1/pp6/2n5/6N1/8/6R1/5P1P/7K w - - 0 1", showsBoard},
    {"trap", "3k4/3pp3/8/8/4N3/1P6/b1P5/3K4 w - - 0 1 ", showsBoard | showsScore},
    {"b1", "6k1/5ppp/8/8/p7/P7/1P4PP/6K1 w - - 0 1 ", showsBoard | showsScore},
};
// clang-format on

// What any line loads that begins with "p" and is nothing else.
constexpr TestPosition lockedPawns = {"p", "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - -", showsBoard};

// Deliberate: no new game, the text overwrites the current record and the moves played stay below it.
static Next loadTestPosition(const TestPosition& position) {
    if ((position.then & postsThinking) != 0) {
        EngineOptions.postThinking = 1;
    }
    fenToBoard(position.fen);
    if ((position.then & showsBoard) != 0) {
        printBoard();
    }
    if ((position.then & showsScore) != 0) {
        print("Valutazione: %i", evaluate());
        flushOutput();
    }
    return (position.then & thenReplies) != 0 ? Next::replyStep : Next::nextLine;
}

static Next walkTestPositions(const char* line) {
    for (const TestPosition& position : testPositions) {
        if (isWord(line, position.name)) {
            return loadTestPosition(position);
        }
    }
    return Next::notTaken;
}

static Next loadLockedPawns(const char*) {
    return loadTestPosition(lockedPawns);
}

// ---- move lists -----------------------------------------------------------------------------------------------

static Next showQuietChecks(const char*) {
    QuietList checks;
    checks.count = 0;
    fenToBoard("rqb3k1/pp6/2n5/6B1/8/1R4R1/Q4P1P/7K w - - 0 1");
    printBoard();
    genChecks(checks);
    for (i32 i = checks.count - 1; i >= 0; --i) {
        char text[6];
        moveToText(text, checks.entries[static_cast<u32>(i)], *board);
        print("Mossa: %s\n", text);
    }
    return Next::nextLine;
}

static void printScored(const MoveList& list) {
    for (i32 i = 0; i < list.count; ++i) {
        const ScoredMove& entry = list.entries[static_cast<u32>(i)];
        char text[6];
        moveToText(text, entry.move, *board);
        print("Mossa: %s   Val: %i\n", text, entry.score);
    }
}

static Next showCaptures(const char*) {
    fenToBoard("6k1/2q2ppp/8/Bn1p4/2P5/1P5r/P4PPP/6K1 b - - 1 1");
    printBoard();
    MoveList captures;
    captures.count = 0;
    genCaptures(captures);
    printScored(captures);
    print("\n");
    if (captures.count > 1) {
        quicksort(captures.entries, 0, captures.count - 1,
                  [](const ScoredMove& entry, const ScoredMove& pivot) { return entry.score > pivot.score; });
    }
    printScored(captures);
    return Next::nextLine;
}

// ---- evaluation -----------------------------------------------------------------------------------------------

static void printTermRow(const char* label, i32 shownOwn, i32 shownEnemy, i32 difference) {
    print("%s:     %4i  |  %4i     |    %4i\n", label, shownOwn, shownEnemy, difference);
}

static void printTerm(const char* label, EvalTerm term) {
    const i32 own = evalTerms[term];
    const i32 enemy = evalTerms[evalTermCount + term];
    printTermRow(label, own, enemy, own - enemy);
}

// Deliberate: the middle column shows the own material once more.
static void printMaterialTerm() {
    const i32 own = evalTerms[termMaterial];
    printTermRow("Materiale       ", own, own, own - evalTerms[evalTermCount + termMaterial]);
}

static void printEasyValTerm() {
    const i32 own = evalTerms[termMaterial] + evalTerms[termPst];
    const i32 enemy = evalTerms[evalTermCount + termMaterial] + evalTerms[evalTermCount + termPst];
    printTermRow("EasyVal         ", own, enemy, own - enemy);
}

static Next showScore(const char*) {
    evalTerms.fill(0);
    print("Score:      %i\n", evaluate());
    print("EasyVal:    %i\n", easyVal());
    print("\nEVALUATION      :   TRATTO  |   AVV     |   TOTAL\n");
    printMaterialTerm();
    printTerm("PST             ", termPst);
    printEasyValTerm();
    print("\n");
    printTerm("Pawn            ", termPawn);
    printTerm("Bishop Pair     ", termBishopPair);
    printTerm("Outpost Knight  ", termOutpostKnight);
    printTerm("Knight Superfluo", termKnightSuperfluo);
    printTerm("Hanging Knight  ", termHangingKnight);
    printTerm("Hanging Bishop  ", termHangingBishop);
    printTerm("Hanging Rook    ", termHangingRook);
    printTerm("Hanging Queen   ", termHangingQueen);
    printTerm("King Safety     ", termKingSafety);
    return Next::nextLine;
}

static Next showEasyVal(const char*) {
    print("Easy_Val:   %i\n", easyVal());
    return Next::nextLine;
}

static Next showMaterialDraw(const char*) {
    print("%s", sufficientMaterial() != 0 ? "Gioca!" : "Materiale insufficiente!");
    flushOutput();
    return Next::nextLine;
}

// ---- sizes and keys -------------------------------------------------------------------------------------------

template <typename Record>
constexpr i32 bytesOf = static_cast<i32>(sizeof(Record));

// Deliberate: what the system calls int and has no record for stands as a fixed number.
static Next showRecordSizes(const char*) {
    print("Size of int:        %i byte\n", 4);
    print("Size of ys_hash:    %i byte\n", bytesOf<ys_hash>);
    print("Size of hashPawn:   %i byte\n", bytesOf<hashPawn>);
    print("Size of Mossa:      %i byte\n", bytesOf<Mossa>);
    print("Size of uint64_t:   %i byte\n", bytesOf<u64>);
    print("\n");
    print("Size of bit_test:   %i byte\n", 1);
    print("Size of Scacchiera: %i byte\n", bytesOf<Scacchiera>);
    return Next::nextLine;
}

static Next showIntSizes(const char*) {
    print("Dimensione di un int:       %d byte\n", 4);
    print("Dimensione di un uint8_t:   %d byte\n", 1);
    print("Dimensione di un short int: %d byte\n", 2);
    return Next::replyStep;
}

static Next showKeys(const char*) {
    print("#DEBUG New method  Hash key:           %" PRIx64 "\n", computeKey());
    print("#DEBUG Incremental Hash key:           %" PRIx64 "\n", board->hashKey);
    print("#DEBUG Hash record size:               %d byte\n", bytesOf<ys_hash>);
    print("#DEBUG Hash records:                   %" PRId64 " \n",
          static_cast<i64>(EngineOptions.hashEntries));
    return Next::nextLine;
}

// ---- tablebases -----------------------------------------------------------------------------------------------

static void printRanks(const RootList& list, i32 count) {
    for (i32 i = 0; i < count; ++i) {
        const RootMove& entry = list[static_cast<u32>(i)];
        char text[6];
        moveToText(text, entry.move, *board);
        print("Mossa: %s   DTZ50: %i\n", text, entry.tbRank);
    }
}

static Next probeTables(const char*) {
    RootList list{};
    i32 generated = 0;
    rootMoves(list, generated);
    i32 kept = generated;
    i32 tbScore = 0;
    i32 dtz = 0;
    const i32 probed = rootProbe(list, kept, tbScore, dtz);
    i32 success = 1;
    const i32 wdl = probeWdl(success);
    print("- Syzygy WDL probe test -\n");
    print("probe ok:       %i  (%i=true, %i=false)\n", probed, 1, 0);
    print("DTZ:            %i\n", dtz);
    print("WDL:            %i\n", wdl);
    print("TBScore:        %i\n", tbScore);
    print("mosse generate: %i\n", generated);
    print("mosse filtrate: %i\n\n", kept);
    if (probed == 0) {
        return Next::nextLine;
    }
    if (kept > 1) {
        sortByTbRank(list, 0, kept - 1);
    }
    printRanks(list, kept);
    return Next::replyStep;
}

static Next runTableTest(const char*) {
    syzygyTest();
    return Next::nextLine;
}

// ---- the chain ------------------------------------------------------------------------------------------------

constexpr Row reports[] = {
    {"score", isWord, showScore},
    {"val", isWord, showEasyVal},
    {"draw", isWord, showMaterialDraw},
    {"size", isWord, showRecordSizes},
    {"rip", isWord, showQuietChecks},
    {"int", isWord, showIntSizes},
    // Deliberate: these three catch every line with that first letter that no row above has taken.
    {"w", hasPrefix, probeTables},
    {"p", hasPrefix, loadLockedPawns},
    {"s", hasPrefix, runTableTest},
    {"catt", isWord, showCaptures},
    {"hash", isWord, showKeys},
};

Next walkDiagnostics(const char* line) {
    const Next next = walkTestPositions(line);
    return next != Next::notTaken ? next : walkRows(reports, line);
}
