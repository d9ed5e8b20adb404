// Entry point: configuration, start position, banner, and the wait for the line that says what the process is to be.
#include "frontend/config.h"
#include "frontend/frontend.h"
#include "frontend/internal.h"
#include "frontend/session.h"
#include "frontend/thinking_lines.h"
#include "frontend/version.h"
#include "platform/platform.h"
#include "platform/print.h"
#include "platform/thread.h"

static void printBanner() {
    print("tarvelmon chess engine by Ubaldo Merikossa\n");
    print("version %s\n", engineVersion);
    print("\n");
    print("enter 'console' for console mode...");
    flushOutput();
}

static void startUp() {
    thinkingSink = printedThinking;
    EngineOptions.gameOver = 0;
    EngineOptions.engineSide = noEngineSide;
    setUpStandardStreams();
    loadConfig(configFileName);
    newGame();
    printBanner();
}

static void enterProtocol() {
    EngineOptions.xboardMode = 1;
    xboardLoop();
}

static void enterConsole() {
    EngineOptions.xboardMode = 0;
    setUpTables();
    consoleLoop();
}

// Any line that names no mode is ignored without a word.
static void takeModeLine(const char* line) {
    if (hasPrefix(line, "xboard")) {
        enterProtocol();
    } else if (hasPrefix(line, "quit")) {
        EngineOptions.quitRequest = 1;
    } else if (hasPrefix(line, "c")) {
        enterConsole();
    }
}

int main() {
    raiseMainStackLimit();
    startUp();
    char line[lineBufferSize];
    while (EngineOptions.quitRequest == 0 && readLine(line)) {
        takeModeLine(line);
    }
    return 0;
}
