// The command loop for a person at a terminal. One thread does everything: what is typed during a think is seen when
// it has ended. The chain of commands and what each replies are here; looks into the engine are in diagnostics.cpp.
#include "frontend/internal.h"

#include "board/board.h"
#include "book/book.h"
#include "frontend/config.h"
#include "frontend/frontend.h"
#include "frontend/game_end.h"
#include "frontend/session.h"
#include "frontend/time_allocation.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "platform/print.h"
#include "search/search.h"

// The number of "sd", "st" and "memory". Deliberate: a command without digits acts on what an earlier one read.
static i32 commandNumber = 0;

// ---- game -----------------------------------------------------------------------------------------------------

static Next showHelp(const char*) {
    print(
        "\nWindboard commands:\n"
        "new       - new game\n"
        "undo      - undo last move\n"
        "quit      - exit from tarvelmon\n"
        "go        - set the engine to play the color that is on move\n"
        "force     - Set the engine to play neither color (force mode). Stop clocks.\n"
        "sd [ply]  - set depht\n"
        "st [sec]  - set time controls\n"
        "memory [size]  - set the size in MB of the HashTable\n"
        "setboard  - set position from FEN\n"
        "\n"
        "tarvelmon commands:\n"
        "b         - show chessboard\n"
        "perft     - start Perft performance test\n"
        "param     - show current config params\n"
        "book      - show moves from the opening book\n"
        "ini       - reload ini config file\n"
        "* insert moves with coordinate algebraic notation; e.g.: e2e4\n");
    return Next::nextLine;
}

// Deliberate: the transposition table is kept.
static Next startNewGame(const char*) {
    EngineOptions.engineSide = 1;
    EngineOptions.gameOver = 0;
    EngineOptions.stopSearch = 0;
    EngineOptions.ponder = 0;
    newGame();
    return Next::nextLine;
}

static Next undoMove(const char*) {
    takeBackMove();
    printBoard();
    return Next::nextLine;
}

static Next playSideToMove(const char*) {
    EngineOptions.engineSide = sideToMove();
    return Next::replyStep;
}

// Deliberate: stopSearch stays, unlike in the protocol.
static Next playNeitherSide(const char*) {
    EngineOptions.engineSide = noEngineSide;
    return Next::nextLine;
}

static Next setPosition(const char* line) {
    newGame();
    if (fenToBoard(fromByte(line, 10)) == 1) {
        printBoard();
    } else {
        print("FEN load Error\n");
    }
    return Next::nextLine;
}

static Next analyzePosition(const char*) {
    EngineOptions.analyzeMode = 1;
    EngineOptions.stopSearch = 0;
    EngineOptions.engineSide = noEngineSide;
    EngineOptions.postThinking = 1;
    EngineOptions.searchStartMs = nowMs();
    static_cast<void>(think(0));
    return Next::nextLine;
}

static Next leaveAnalysis(const char*) {
    EngineOptions.engineSide = noEngineSide;
    EngineOptions.stopSearch = 1;
    return Next::nextLine;
}

static Next quit(const char*) {
    EngineOptions.quitRequest = 1;
    return Next::leave;
}

// ---- settings -------------------------------------------------------------------------------------------------

// Deliberate: 1 is accepted although the text says 2; the protocol refuses it.
static Next setDepth(const char* line) {
    scanNumberBehind(line, "sd", commandNumber);
    if (commandNumber >= 1 && commandNumber <= highestDepth) {
        EngineOptions.maxDepth = commandNumber;
        print("Depth set with value %d PLY\n", commandNumber);
    } else {
        print("Error: insert a number between 2 and %d \n", highestDepth);
    }
    return Next::nextLine;
}

static Next setMoveTime(const char* line) {
    scanNumberBehind(line, "st", commandNumber);
    if (commandNumber > 0) {
        TimeControl.moveTime = saturatedProduct(commandNumber, centisecondsPerSecond);
        print("Time control set with value %d sec\n", commandNumber);
    } else {
        print("Error: insert a number > 0 \n");
    }
    return Next::nextLine;
}

static Next setMemory(const char* line) {
    scanNumberBehind(line, "memory", commandNumber);
    if (commandNumber >= lowestHashSize && commandNumber <= highestHashSize) {
        resizeHashTable(commandNumber);
    } else {
        print("Error: insert a number between 4 and %d \n", highestHashSize);
    }
    return Next::nextLine;
}

static Next emptyHashTable(const char*) {
    hashClear(EngineOptions.hashEntries);
    return Next::nextLine;
}

static Next reloadConfig(const char*) {
    loadConfig(configFileName);
    return Next::nextLine;
}

// ---- showing --------------------------------------------------------------------------------------------------

static Next clearScreen(const char*) {
    if (outputIsTerminal()) {
        print("\x1b[H\x1b[2J");
        flushOutput();
    }
    return Next::nextLine;
}

static Next showBoard(const char*) {
    printBoard();
    return Next::nextLine;
}

// Deliberate: the record itself is turned; its key, en passant file, clock and repetition count stay.
static Next changeSideToMove(const char*) {
    flipBoard(*board);
    return Next::nextLine;
}

static Next showParams(const char*) {
    printParams();
    return Next::nextLine;
}

static Next showBook(const char*) {
    bookList(EngineOptions.bookFile);
    return Next::nextLine;
}

static Next countMoveTrees(const char*) {
    runBenchmark();
    return Next::nextLine;
}

// ---- the chain ------------------------------------------------------------------------------------------------

constexpr Row commands[] = {
    {"help", isWord, showHelp},
    {"new", isWord, startNewGame},
    {"time", hasPrefix, takeTime},
    {"otim", hasPrefix, takeOtim},
    {"post", isWord, takePost},
    {"clear", isWord, clearScreen},
    {"nopost", isWord, takeNopost},
    {"undo", isWord, undoMove},
    {"go", isWord, playSideToMove},
    {"force", isWord, playNeitherSide},
    {"sd", hasPrefix, setDepth},
    {"st", hasPrefix, setMoveTime},
    {"setboard", hasPrefix, setPosition},
    {"hard", hasPrefix, takeHard},
    {"easy", hasPrefix, takeEasy},
    {"memory", hasPrefix, setMemory},
    {".", isWord, takeStat},
    {"analyze", isWord, analyzePosition},
    {"init", isWord, emptyHashTable},
    {"exit", isWord, leaveAnalysis},
    {"quit", isWord, quit},
    {"q", isWord, quit},
    {"b", isWord, showBoard},
    {"c", isWord, changeSideToMove},
    {"param", isWord, showParams},
    {"book", isWord, showBook},
    {"perft", isWord, countMoveTrees},
    {"ini", isWord, reloadConfig},
};

static bool isFileLetter(char c) {
    return c >= 'a' && c <= 'h';
}

static bool isRankDigit(char c) {
    return c >= '1' && c <= '8';
}

static bool looksLikeMove(const char* line) {
    return isFileLetter(line[0]) && isRankDigit(line[1]) && isFileLetter(line[2]) && isRankDigit(line[3]);
}

// Deliberate: also after the end of a game, which the move decides anew.
static Next takeTypedMove(const char* line) {
    if (parseUserMove(line) == 1) {
        EngineOptions.gameOver = checkGameEnd();
    } else {
        print("Illegal move: %s\n", line);
    }
    printBoard();
    return Next::replyStep;
}

static Next refuseUnknown(const char* line) {
    print("Error (unknown command): %s\n", line);
    return Next::replyStep;
}

static Next walkChain(const char* line) {
    Next next = walkRows(commands, line);
    if (next == Next::notTaken) {
        next = walkDiagnostics(line);
    }
    if (next == Next::notTaken) {
        next = looksLikeMove(line) ? takeTypedMove(line) : refuseUnknown(line);
    }
    return next;
}

// ---- the reply ------------------------------------------------------------------------------------------------

// Deliberate: whether the book's move can be played is not looked at, and there is no limit by move number here.
static bool playedFromBook() {
    char text[6];
    if (EngineOptions.book != 1 || bookProbe(EngineOptions.bookFile, text) != 0) {
        return false;
    }
    parseUserMove(text);
    print("move %s from book\n", text);
    return true;
}

static void playSearched() {
    allocateTime();
    const Mossa move = think(0);
    printMove(move);
    makeMove(move);
}

static void reply() {
    if (!engineIsToMove() || !gameHasRoom()) {
        return;
    }
    if (!playedFromBook()) {
        playSearched();
    }
    EngineOptions.gameOver = checkGameEnd();
    printBoard();
}

// ---- the loop -------------------------------------------------------------------------------------------------

static void enter() {
    commandNumber = 0;
    EngineOptions.gameOver = 0;
    EngineOptions.engineSide = noEngineSide;
    print("\nWelcome in tarvelmon\n");
    print("type \"help\" to show commands list\n");
}

static bool promptForLine(char (&line)[lineBufferSize]) {
    print("\ntarvelmon> ");
    flushOutput();
    return readLine(line);
}

void consoleLoop() {
    enter();
    char line[lineBufferSize];
    while (EngineOptions.quitRequest == 0) {
        if (!promptForLine(line)) {
            EngineOptions.quitRequest = 1;
        } else if (walkChain(line) == Next::replyStep) {
            reply();
        }
    }
}
