// The protocol loop: takes commands, keeps the flow of the game, decides when the engine moves and starts pondering.
// No input is read during an ordinary think; a ponder or analyze search runs beside a monitor (ponder.cpp), whose last
// line may come back here as the next command.
#include "frontend/internal.h"

#include "board/board.h"
#include "book/book.h"
#include "frontend/frontend.h"
#include "frontend/game_end.h"
#include "frontend/session.h"
#include "frontend/time_allocation.h"
#include "frontend/version.h"
#include "hash/hash.h"
#include "platform/platform.h"
#include "platform/print.h"
#include "search/search.h"

#include <cstdio>
#include <cstring>

constexpr i32 lowestDepth = 2;
constexpr i32 unlimitedDepth = 9999;  // what interfaces send for "no limit"
constexpr i32 centisecondsPerMinute = 6000;
constexpr i32 lastBookMove = 20;      // highest move number at which the book is opened
constexpr i32 firstPonderedMove = 2;  // lowest move number with pondering

// The number of "sd", "st" and "memory". Deliberate: a command without digits acts on what an earlier one read.
static i32 commandNumber = 0;

// The last line that a monitor read; the next command when replayCommand asks for it.
static char replayBuffer[lineBufferSize];

// Whether the line in hand comes from the replay buffer.
static bool lineIsReplay = false;

// ---- session --------------------------------------------------------------------------------------------------

static Next tellFeatures(const char*) {
    print(
        "feature ping=1 setboard=1 debug=1 playother=0 analyze=1 colors=0 usermove=1 memory=1 time=1 "
        "reuse=0 myname=\"tarvelmon %s\" name=1 done=1\n",
        engineVersion);
    return Next::nextLine;
}

static Next answerPing(const char* line) {
    print("pong%s\n", fromByte(line, 5));
    return Next::nextLine;
}

static Next takeName(const char* line) {
    const char* name = fromByte(line, 6);
    if (*name != '\0') {
        std::snprintf(EngineOptions.opponentName, sizeof EngineOptions.opponentName, "%s", name);
    }
    print("#DEBUG name: %100s\n", EngineOptions.opponentName);
    return Next::nextLine;
}

// Deliberate: known, and without effect.
static Next dropValue(const char*) {
    return Next::nextLine;
}

static Next quit(const char*) {
    EngineOptions.quitRequest = 1;
    return Next::leave;
}

// ---- game -----------------------------------------------------------------------------------------------------

static Next startNewGame(const char*) {
    EngineOptions.engineSide = 1;
    EngineOptions.gameOver = 0;
    EngineOptions.stopSearch = 0;
    newGame();
    hashClear(EngineOptions.hashEntries);
    return Next::replyStep;
}

// Deliberate: moveNumber stays.
static Next undoMove(const char*) {
    takeBackMove();
    return Next::nextLine;
}

static Next playWhite(const char*) {
    EngineOptions.engineSide = 0;
    return Next::replyStep;
}

static Next playBlack(const char*) {
    EngineOptions.engineSide = 1;
    return Next::replyStep;
}

static Next playSideToMove(const char*) {
    EngineOptions.engineSide = sideToMove();
    return Next::replyStep;
}

static Next playNeitherSide(const char*) {
    EngineOptions.engineSide = noEngineSide;
    EngineOptions.stopSearch = 1;
    return Next::nextLine;
}

static Next leaveAnalysis(const char* line) {
    print("#DEBUG exit command\n");
    return playNeitherSide(line);
}

// Deliberate: a text that is refused is not reported.
static Next setPosition(const char* line) {
    newGame();
    fenToBoard(fromByte(line, 10));
    return Next::nextLine;
}

// The expected move comes off the board.
static void endPondering() {
    if (EngineOptions.pondering == 1 && EngineOptions.ponderMove != 0) {
        EngineOptions.pondering = 0;
        takeBackMove();
    }
}

static Next takeUserMove(const char* line) {
    endPondering();
    const char* text = fromByte(line, 10);
    if (parseUserMove(text) == 1) {
        EngineOptions.gameOver = checkGameEnd();
        // A move that arrived during a search is answered whatever the side was before.
        if (lineIsReplay) {
            EngineOptions.engineSide = sideToMove();
        }
    } else {
        print("Illegal move: %s\n", text);
    }
    return Next::replyStep;
}

static Next analyzePosition(const char*) {
    EngineOptions.analyzeMode = 1;
    EngineOptions.stopSearch = 0;
    EngineOptions.engineSide = noEngineSide;
    EngineOptions.searchStartMs = nowMs();
    const bool goesOn = analyzeBesideInput(replayBuffer);
    EngineOptions.ponderBest = 0;  // what analysis found is no reply of the engine
    return goesOn ? Next::nextLine : Next::leave;
}

// ---- settings -------------------------------------------------------------------------------------------------

// Deliberate: the errors show the value sent where a limit is meant.
static Next setDepth(const char* line) {
    scanNumberBehind(line, "sd", commandNumber);
    if (commandNumber >= lowestDepth && commandNumber <= highestDepth) {
        EngineOptions.maxDepth = commandNumber;
        print("#DEBUG depth:%d\n", commandNumber);
    } else if (commandNumber != unlimitedDepth) {
        print("Error (depth out of bound): Insert depth between 2 and %d\n", commandNumber);
        print("tellusererror Error (depth out of bound): Insert depth between 2 and %d\n", commandNumber);
    }
    return Next::nextLine;
}

static Next setMoveTime(const char* line) {
    scanNumberBehind(line, "st", commandNumber);
    if (commandNumber > 0) {
        TimeControl.moveTime = saturatedProduct(commandNumber, centisecondsPerSecond);
        print("#DEBUG movetime:%d\n", commandNumber);
    } else {
        print("Error (movetime out of bound): Insert movetime > 0 \n");
        print("tellusererror Error (movetime out of bound): Insert movetime > 0 \n");
    }
    return Next::nextLine;
}

static Next setMemory(const char* line) {
    scanNumberBehind(line, "memory", commandNumber);
    if (commandNumber >= lowestHashSize && commandNumber <= highestHashSize) {
        resizeHashTable(commandNumber);
    } else {
        print("Error: insert a number between 4 and %d \n", highestHashSize);
        print("tellusererror Error (size out of bound): Insert size between 4 and %d\n", highestHashSize);
    }
    return Next::nextLine;
}

// Deliberate: a number that cannot be read leaves the former value, which is multiplied again.
static Next setLevel(const char* line) {
    const char* text = fromByte(line, 7);
    i32 minutes = TimeControl.engineClock;
    if (scanNumber(text, TimeControl.movesPerSession) && scanNumber(text, minutes)) {
        scanNumber(text, TimeControl.increment);
    }
    print("#DEBUG level:%d %d %d\n", TimeControl.movesPerSession, minutes, TimeControl.increment);
    TimeControl.engineClock = saturatedProduct(minutes, centisecondsPerMinute);
    TimeControl.opponentClock = TimeControl.engineClock;
    TimeControl.increment = saturatedProduct(TimeControl.increment, centisecondsPerSecond);
    return Next::nextLine;
}

// ---- the chain ------------------------------------------------------------------------------------------------

constexpr Row commands[] = {
    {"protover", hasPrefix, tellFeatures},
    {"new", isWord, startNewGame},
    {"post", isWord, takePost},
    {"nopost", isWord, takeNopost},
    {"undo", isWord, undoMove},
    {"white", isWord, playWhite},
    {"black", isWord, playBlack},
    {"go", isWord, playSideToMove},
    {"force", isWord, playNeitherSide},
    {".", isWord, takeStat},
    {"analyze", isWord, analyzePosition},
    {"exit", isWord, leaveAnalysis},
    {"setboard", hasPrefix, setPosition},
    {"sd", hasPrefix, setDepth},
    {"st", hasPrefix, setMoveTime},
    {"memory", hasPrefix, setMemory},
    {"hard", hasPrefix, takeHard},
    {"easy", hasPrefix, takeEasy},
    {"level", hasPrefix, setLevel},
    {"time", hasPrefix, takeTime},
    {"otim", hasPrefix, takeOtim},
    {"ping", hasPrefix, answerPing},
    {"name", hasPrefix, takeName},
    {"setvalue", hasPrefix, dropValue},
    {"quit", isWord, quit},
    {"usermove", hasPrefix, takeUserMove},
};

static Next walkChain(const char* line) {
    const Next next = walkRows(commands, line);
    if (next != Next::notTaken) {
        return next;
    }
    print("Error (unknown command): %s\n", line);
    return Next::replyStep;
}

// ---- the reply ------------------------------------------------------------------------------------------------

static void forgetPondering() {
    EngineOptions.ponderMove = 0;
    EngineOptions.ponderBest = 0;
    EngineOptions.replayCommand = 0;
}

// Deliberate: whether the book's move can be played is not looked at, and neither the game's end nor pondering
// follows.
static bool playedFromBook() {
    char text[6];
    if (TimeControl.moveNumber > lastBookMove || EngineOptions.book != 1 ||
        bookProbe(EngineOptions.bookFile, text) != 0) {
        return false;
    }
    parseUserMove(text);
    ++TimeControl.moveNumber;
    print("move %s\n", text);
    if (EngineOptions.ponder != 0) {
        forgetPondering();
    }
    return true;
}

// The opponent has played the expected move, and the ponder search was deep enough.
static bool ponderResultHolds() {
    return EngineOptions.ponder == 1 && TimeControl.moveNumber >= firstPonderedMove &&
           EngineOptions.lastUserMove == EngineOptions.ponderMove && EngineOptions.ponderBest != 0 &&
           SearchInfo.iterationDepth >= EngineOptions.safePly;
}

// Deliberate: neither the game's end nor new pondering follows.
static void playPonderResult() {
    const Mossa move = EngineOptions.ponderBest;
    printMove(move);
    makeMove(move);
    ++TimeControl.moveNumber;
    forgetPondering();
}

static void playSearchResult() {
    EngineOptions.replayCommand = 0;
    EngineOptions.pondering = 0;
    const Mossa move = EngineOptions.searchResult;
    printMove(move);
    flushOutput();
    makeMove(move);
    ++TimeControl.moveNumber;
    EngineOptions.gameOver = checkGameEnd();
}

static bool mayPonder() {
    return EngineOptions.gameOver == 0 && EngineOptions.ponder == 1 &&
           TimeControl.moveNumber >= firstPonderedMove;
}

// Puts the expected move on the board; says so if there is none.
static bool expectedMoveStands() {
    if (EngineOptions.ponderMove == 0) {
        print("#DEBUG Errore ponderMove vuota (gs_lineH.argmove[1]) \n");
        return false;
    }
    char text[6];
    moveToText(text, EngineOptions.ponderMove, *board);
    std::memcpy(EngineOptions.ponderText, text, sizeof text);
    if (parseUserMove(text) == 0) {
        print("#DEBUG Errore sulla ponderMove dopo Thinking\n");
        EngineOptions.ponderMove = 0;
        return false;
    }
    return true;
}

// Plays what the search has found, and goes on as long as a ponder search has become the real one meanwhile.
static Next playAndPonder() {
    for (;;) {
        playSearchResult();
        if (!mayPonder()) {
            return Next::nextLine;
        }
        EngineOptions.stopSearch = 0;
        TimeControl.allocatedTime = ponderingTime;
        EngineOptions.ponderBest = 0;
        if (!expectedMoveStands()) {
            return Next::nextLine;
        }
        print("Hint: %s\n", EngineOptions.ponderText);
        flushOutput();
        EngineOptions.pondering = 1;
        EngineOptions.searchStartMs = nowMs();
        if (!ponderBesideInput(replayBuffer)) {
            return Next::leave;
        }
        if (EngineOptions.replayCommand != 0) {
            return Next::nextLine;
        }
    }
}

static Next reply() {
    if (!engineIsToMove()) {
        return Next::nextLine;
    }
    endPondering();
    if (!gameHasRoom() || playedFromBook()) {
        return Next::nextLine;
    }
    if (ponderResultHolds()) {
        playPonderResult();
        return Next::nextLine;
    }
    EngineOptions.ponderBest = 0;  // if one is left, it answers an earlier position
    allocateTime();
    EngineOptions.searchResult = think(0);
    return playAndPonder();
}

// ---- the loop -------------------------------------------------------------------------------------------------

static void enter() {
    ignoreInterrupts();
    commandNumber = 0;
    setUpTables();
    hashClear(EngineOptions.hashEntries);
}

// The flag is cleared as the replayed line is taken: one that a new ponder search raises in the same pass counts.
static bool takeLine(char (&line)[lineBufferSize]) {
    flushOutput();
    lineIsReplay = EngineOptions.replayCommand != 0;
    if (!lineIsReplay) {
        return readLine(line);
    }
    EngineOptions.replayCommand = 0;
    std::memcpy(line, replayBuffer, sizeof line);
    return true;
}

void xboardLoop() {
    enter();
    char line[lineBufferSize];
    Next next = Next::nextLine;
    while (next != Next::leave) {
        next = takeLine(line) ? walkChain(line) : Next::leave;
        if (next == Next::replyStep) {
            next = reply();
        }
    }
    EngineOptions.quitRequest = 1;
}
