// Checks the probes against a file of positions with known values: one a line, FEN, distance and WDL, by commas.
#include "tablebase/tablebase.h"

#include "platform/platform.h"
#include "platform/print.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

constexpr const char* casesPath = "TestSyzygy/TestCase_09.txt";
constexpr const char* errorsPath = "TestSyzygy/Error.txt";
constexpr const char* badFensPath = "TestSyzygy/BadFEN.txt";
constexpr double linesPerPercent = 25000;  // of the case file the test was made for
constexpr u64 linesPerReport = 2000;

namespace {

struct Harness {
    std::FILE* cases;
    std::FILE* errors;
    std::FILE* badFens;
    u64 lines;
    u64 errorCount;
    u64 badFenCount;
};

using CaseLine = std::array<char, 256>;

}  // namespace

static bool openAll(Harness& harness) {
    harness.cases = openRegularFile(casesPath);
    harness.errors = openForAppending(errorsPath);
    harness.badFens = openForAppending(badFensPath);
    return harness.cases != nullptr && harness.errors != nullptr && harness.badFens != nullptr;
}

// The next line without its end; of a line longer than any case the rest is dropped.
static bool readCase(std::FILE* file, CaseLine& line) {
    line.fill('\0');
    if (std::fgets(line.data(), static_cast<int>(line.size()), file) == nullptr) {
        return false;
    }
    if (std::strchr(line.data(), '\n') == nullptr) {
        for (int c = std::fgetc(file); c != EOF && c != '\n';) {
            c = std::fgetc(file);
        }
    }
    line[std::strcspn(line.data(), "\r\n")] = '\0';
    return true;
}

// Cuts the text at its first comma and returns what follows; null without a comma.
static char* cutAtComma(char* text) {
    char* comma = text == nullptr ? nullptr : std::strchr(text, ',');
    if (comma == nullptr) {
        return nullptr;
    }
    *comma = '\0';
    return comma + 1;
}

// Numbers beyond 32 bits become the nearest one.
static i32 numberOf(const char* text) {
    const long number = std::strtol(text, nullptr, 10);
    return static_cast<i32>(std::clamp<long>(number, INT32_MIN, INT32_MAX));
}

// Deliberate: a value that agrees is right, though its probe may have failed.
static bool probesAgree(i32 expectedDtz, i32 expectedWdl) {
    i32 success = 0;
    return probeDtz(success) == expectedDtz && probeWdl(success) == expectedWdl;
}

static void checkCase(Harness& harness, const CaseLine& line) {
    CaseLine fields = line;
    char* dtzText = cutAtComma(fields.data());
    char* wdlText = cutAtComma(dtzText);
    if (wdlText == nullptr || fenToBoard(fields.data()) == 0) {
        ++harness.badFenCount;
        std::fprintf(harness.badFens, "%s\n", line.data());
    } else if (!probesAgree(numberOf(dtzText), numberOf(wdlText))) {
        ++harness.errorCount;
        std::fprintf(harness.errors, "%s\n", line.data());
    }
}

static double percentOfFile(u64 lines) {
    return static_cast<double>(lines) / linesPerPercent;
}

static void printCounts(const Harness& harness) {
    print("Error:      %10" PRIu64 "   %3.2f%%\n", harness.errorCount, percentOfFile(harness.errorCount));
    print("Bad FEN:    %10" PRIu64 "   %3.2f%%\n", harness.badFenCount, percentOfFile(harness.badFenCount));
}

static void clearScreen() {
    if (outputIsTerminal()) {
        print("\033[H\033[2J");
    }
}

static void printProgress(const Harness& harness) {
    clearScreen();
    print("Completed: %3.2f%%\n", percentOfFile(harness.lines));
    printCounts(harness);
}

void syzygyTest() {
    Harness harness{};
    if (!openAll(harness)) {
        print("File non trovato\n");
        exitNow(1);
    }
    print("Syzygy Test started\n");
    for (CaseLine line; readCase(harness.cases, line);) {
        checkCase(harness, line);
        ++harness.lines;
        if (harness.lines % linesPerReport == 0) {
            printProgress(harness);
        }
    }
    print("Syzygy Test ended.\n");
    printCounts(harness);
    std::fclose(harness.cases);
    std::fclose(harness.errors);
    std::fclose(harness.badFens);
}
