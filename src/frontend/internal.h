// What the files of the front end share among themselves.
#pragma once

#include "platform/bits.h"
#include "platform/print.h"

#include <span>

// ---- command text ---------------------------------------------------------------------------------------------

/// Whether `line` is `word` and nothing else, not even a blank behind it.
[[nodiscard]] bool isWord(const char* line, const char* word);

/// Whether `line` begins with `prefix`, whatever follows.
[[nodiscard]] bool hasPrefix(const char* line, const char* prefix);

/// The text from the n-th byte of `line` on, counted from 1; empty if the line ends before.
[[nodiscard]] const char* fromByte(const char* line, i32 n);

/// Reads a decimal number at `text`: blanks, a sign and digits, held to the limits of 32 bits. On success `text` moves
/// behind it. Without digits the result is false, and `number` and `text` stay as they were.
bool scanNumber(const char*& text, i32& number);

/// Reads a number behind `word`, blanks or none between them; what follows the digits is not looked at. `number`
/// stays as it was if `line` does not fit.
bool scanNumberBehind(const char* line, const char* word, i32& number);

/// a * b held to the limits of 32 bits.
[[nodiscard]] i32 saturatedProduct(i32 a, i32 b);

// ---- chains of commands ---------------------------------------------------------------------------------------

/// How a command loop goes on after a line.
enum class Next : u8 { notTaken, nextLine, replyStep, leave };

/// One test of a chain and what it leads to.
struct Row {
    const char* text;
    bool (*matches)(const char* line, const char* text);  // isWord or hasPrefix
    Next (*act)(const char* line);
};

/// Walks the rows in order; the first match acts, and no later test is made. notTaken if none matches.
Next walkRows(std::span<const Row> rows, const char* line);

// ---- what both loops do ---------------------------------------------------------------------------------------

constexpr i32 highestDepth = 64;   // of "sd"
constexpr i32 lowestHashSize = 4;  // of "memory", MB
constexpr i32 highestHashSize = 4096;
constexpr i32 centisecondsPerSecond = 100;

/// "move <text>" of a move that is to be played in the position at `board`.
void printMove(u32 move);

Next takePost(const char* line);
Next takeNopost(const char* line);
Next takeStat(const char* line);
Next takeHard(const char* line);
Next takeEasy(const char* line);
Next takeTime(const char* line);
/// A low clock of the opponent switches pondering off.
Next takeOtim(const char* line);
/// "time" and "otim" as they are taken while a search runs beside: stored and answered, nothing else.
void storeEngineClock(const char* line);
void storeOpponentClock(const char* line);

// ---- the two loops --------------------------------------------------------------------------------------------

/// Return at "quit" and at the end of input, with EngineOptions.quitRequest 1.
void consoleLoop();
void xboardLoop();

/// The console's commands that look into the engine; notTaken if `line` is none.
Next walkDiagnostics(const char* line);

// ---- benchmark ------------------------------------------------------------------------------------------------

/// Rounded down and held to 32 bits; 0 if no time has passed.
[[nodiscard]] i32 nodesPerSecond(u64 nodes, double seconds);

/// Counts the six positions of the benchmark and prints the report. The game on the board is lost.
void runBenchmark();

// ---- searching beside the input -------------------------------------------------------------------------------

/// Searches with think(1) on one thread while another reads the input; returns when both have ended. Each line is
/// copied to `lastLine`. Before: stopSearch 0, clocks and searchStartMs set. After: `searchResult`, and the flags as
/// the lines left them; a "new" among them has been carried out. Returns false if the input has ended. Ends the
/// process with status 1 if a thread cannot be started.
[[nodiscard]] bool ponderBesideInput(char (&lastLine)[lineBufferSize]);
[[nodiscard]] bool analyzeBesideInput(char (&lastLine)[lineBufferSize]);
