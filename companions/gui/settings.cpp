// The options are one list of rows, from which both protocols describe, read and set them.
#include "settings.h"

#include "comments.h"
#include "frontend/config.h"
#include "frontend/frontend.h"
#include "hash/hash.h"
#include "platform/environment.h"
#include "tablebase/tablebase.h"
#include "words.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

Settings settings{};

constexpr i32 fastOpeningFactor = 7;

// ---- the INI file ---------------------------------------------------------------------------------------------

static std::filesystem::path pathOf(const std::string& text) {
    return std::u8string(text.begin(), text.end());
}

// The folder that the installed engine runs in.
static std::filesystem::path userFolder() {
    const auto variable = [](const char* name) {
        std::string text;
        static_cast<void>(readEnvironment(name, text));  // none is as good as an empty one
        return pathOf(text);
    };
    if (auto home = variable("TARVELMON_HOME"); !home.empty()) {
        return home;
    }
    if (const auto data = variable("XDG_DATA_HOME"); !data.empty()) {
        return data / "tarvelmon";
    }
    if (auto beside = pathOf(programFolder()); !beside.empty()) {
        return beside;
    }
    auto home = variable("HOME");
    return home.empty() ? home : home / ".local" / "share" / "tarvelmon";
}

static void enterUserFolder() {
    std::error_code ignored;
    const std::filesystem::path folder = userFolder();
    if (!std::filesystem::exists(configFileName, ignored) && !folder.empty() &&
        std::filesystem::exists(folder / configFileName, ignored)) {
        std::filesystem::current_path(folder, ignored);
    }
}

// What a person without a file gets: the numbers of the sample file. Tables of moderate size, and more of the clock while
// a game is young than by the engine's own defaults.
static void chooseSampleNumbers() {
    EngineOptions.hashSize = 128;
    EngineOptions.pawnHashSize = 16;
    TimeControl.fastOpening = 5 * fastOpeningFactor;
}

void loadSettings() {
    enterUserFolder();
    loadConfig(configFileName);
    std::error_code ignored;
    if (!std::filesystem::exists(configFileName, ignored)) {
        chooseSampleNumbers();
    }
    settings.hashMegabytes = EngineOptions.hashSize;
    settings.pawnHashMegabytes = EngineOptions.pawnHashSize;
    settings.ownBook = EngineOptions.book == 1;
    settings.randomBook = EngineOptions.randBook != 0;
    settings.analyseMode = false;
    settings.bookFile = EngineOptions.bookFile;
    settings.tables = EngineOptions.syzygy != 0;
    settings.tablePath = EngineOptions.syzygyPath;
    settings.tableMen = EngineOptions.syzygyMen;
    settings.ponder = false;
    settings.moveOverheadMs = 10;
    settings.safePly = EngineOptions.safePly;
    settings.minDepth = EngineOptions.minDepth;
    settings.maxDepth = EngineOptions.maxDepth;
    settings.maxTime = TimeControl.maxTime;
    settings.suddenDeath = TimeControl.suddenDeath;
    settings.moreTime = TimeControl.moreTime;
    settings.lessTime = TimeControl.lessTime;
    settings.fastGame = TimeControl.fastGame;
    settings.fastOpening = TimeControl.fastOpening;
}

// ---- to the core ----------------------------------------------------------------------------------------------

namespace {

// What the core's tables were last made of.
struct Applied {
    bool hash = false;
    i32 hashMegabytes = 0;
    bool pawnHash = false;
    i32 pawnHashMegabytes = 0;
    bool tables = false;
    std::string tablePath;
};

}  // namespace

static Applied applied;
static bool emptyTablesWanted = false;

static void applyHashTables() {
    if (!applied.hash || applied.hashMegabytes != settings.hashMegabytes) {
        EngineOptions.hashSize = settings.hashMegabytes;
        EngineOptions.hashEntries = hashEntriesFor(settings.hashMegabytes);
        hashAlloc(EngineOptions.hashEntries, EngineOptions.hashSize);
        applied.hash = true;
        applied.hashMegabytes = settings.hashMegabytes;
    }
    if (!applied.pawnHash || applied.pawnHashMegabytes != settings.pawnHashMegabytes) {
        EngineOptions.pawnHashSize = settings.pawnHashMegabytes;
        EngineOptions.pawnHashEntries =
            (static_cast<u64>(i64{settings.pawnHashMegabytes}) << 20) / sizeof(hashPawn);
        pawnHashAlloc();
        applied.pawnHash = true;
        applied.pawnHashMegabytes = settings.pawnHashMegabytes;
    }
    if (emptyTablesWanted) {
        hashClear(EngineOptions.hashEntries);
        pawnHashClear();
        emptyTablesWanted = false;
    }
}

static void applyTablebases() {
    EngineOptions.syzygy = settings.tables ? 1 : 0;
    EngineOptions.syzygyMen = settings.tableMen;
    if (settings.tables && (!applied.tables || applied.tablePath != settings.tablePath)) {
        tbInit(settings.tablePath.c_str());
        applied.tables = true;
        applied.tablePath = settings.tablePath;
    }
}

void applySettings() {
    const CoreSpeaks comments;
    EngineOptions.randBook = settings.randomBook ? 1 : 0;
    EngineOptions.safePly = settings.safePly;
    EngineOptions.minDepth = settings.minDepth;
    EngineOptions.maxDepth = settings.maxDepth;
    EngineOptions.postThinking = 1;
    TimeControl.moveTime = settings.maxTime;
    TimeControl.suddenDeath = settings.suddenDeath;
    TimeControl.moreTime = settings.moreTime;
    TimeControl.lessTime = settings.lessTime;
    TimeControl.fastGame = settings.fastGame;
    TimeControl.fastOpening = settings.fastOpening;
    applyHashTables();
    applyTablebases();
}

void wantEmptyTables() {
    emptyTablesWanted = true;
}

// ---- options --------------------------------------------------------------------------------------------------

namespace {

enum class Kind : u8 { spin, check, text, file, folder, button };

constexpr u8 forUci = 1;
constexpr u8 forXboard = 2;
constexpr u8 forBoth = 3;

// A row names one field; the other two pointers are null.
struct OptionRow {
    const char* name;
    Kind kind;
    u8 sides;
    i32 low;
    i32 high;
    i32 Settings::*number;
    bool Settings::*truth;
    std::string Settings::*text;
};

constexpr i32 largestHash = 65536;  // MB
constexpr i32 largestPawnHash = 4096;

constexpr OptionRow number(const char* name, u8 sides, i32 low, i32 high, i32 Settings::*field) {
    return {name, Kind::spin, sides, low, high, field, nullptr, nullptr};
}
constexpr OptionRow truth(const char* name, u8 sides, bool Settings::*field) {
    return {name, Kind::check, sides, 0, 1, nullptr, field, nullptr};
}
constexpr OptionRow path(const char* name, Kind kind, std::string Settings::*field) {
    return {name, kind, forBoth, 0, 0, nullptr, nullptr, field};
}

constexpr OptionRow button(const char* name, u8 sides) {
    return {name, Kind::button, sides, 0, 0, nullptr, nullptr, nullptr};
}

constexpr OptionRow rows[] = {
    number("Hash", forUci, 1, largestHash, &Settings::hashMegabytes),
    number("PawnHash", forBoth, 1, largestPawnHash, &Settings::pawnHashMegabytes),
    truth("OwnBook", forBoth, &Settings::ownBook),
    path("BookFile", Kind::file, &Settings::bookFile),
    truth("RandBook", forBoth, &Settings::randomBook),
    path("SyzygyPath", Kind::folder, &Settings::tablePath),
    number("SyzygyProbeLimit", forBoth, 0, probeMenMax, &Settings::tableMen),
    truth("Ponder", forUci, &Settings::ponder),
    number("Move Overhead", forUci, 0, 5000, &Settings::moveOverheadMs),
    truth("UCI_AnalyseMode", forUci, &Settings::analyseMode),
    number("SafePly", forBoth, 2, 64, &Settings::safePly),
    number("SuddenDeath", forBoth, 20, 40, &Settings::suddenDeath),
    number("MoreTime", forBoth, 5, 15, &Settings::moreTime),
    number("LessTime", forBoth, 5, 15, &Settings::lessTime),
    number("FastGame", forBoth, 5, 15, &Settings::fastGame),
    number("FastOpening", forBoth, 5, 15, &Settings::fastOpening),
    button("Clear Hash", forUci),
    button("ClearHash", forXboard),  // some interfaces end a name at its first blank
};

}  // namespace

static bool isFor(const OptionRow& row, Side side) {
    return (row.sides & (side == Side::uci ? forUci : forXboard)) != 0;
}

// The file's key counts in sevenths of what is added.
static bool countsInSevenths(const OptionRow& row) {
    return row.number == &Settings::fastOpening;
}

static i32 shownNumber(const OptionRow& row) {
    const i32 value = settings.*row.number;
    const bool multiplied = countsInSevenths(row) && value % fastOpeningFactor == 0;
    return std::clamp(multiplied ? value / fastOpeningFactor : value, row.low, row.high);
}

static std::string describeForUci(const OptionRow& row) {
    const std::string head = std::string("option name ") + row.name + " type ";
    switch (row.kind) {
        case Kind::spin:
            return head + "spin default " + std::to_string(shownNumber(row)) + " min " +
                   std::to_string(row.low) + " max " + std::to_string(row.high);
        case Kind::check:
            return head + "check default " + (settings.*row.truth ? "true" : "false");
        case Kind::button:
            return head + "button";
        default: {
            const std::string& value = settings.*row.text;
            return head + "string default " + (value.empty() ? "<empty>" : value);
        }
    }
}

static std::string describeForXboard(const OptionRow& row) {
    const std::string head = std::string(row.name) + " -";
    switch (row.kind) {
        case Kind::spin:
            return head + "spin " + std::to_string(shownNumber(row)) + " " + std::to_string(row.low) + " " +
                   std::to_string(row.high);
        case Kind::check:
            return head + "check " + (settings.*row.truth ? "1" : "0");
        case Kind::button:
            return head + "button";
        default:
            return head + (row.kind == Kind::file ? "file " : "path ") + settings.*row.text;
    }
}

std::string describeOptions(Side side) {
    std::string lines;
    for (const OptionRow& row : rows) {
        if (isFor(row, side)) {
            lines += (side == Side::uci ? describeForUci(row) : describeForXboard(row)) + "\n";
        }
    }
    return lines;
}

static std::string setNumber(const OptionRow& row, std::string_view value) {
    const std::optional<i64> number = numberIn(value);
    if (!number) {
        return std::string("not a number for ") + row.name;
    }
    const i32 held = static_cast<i32>(std::clamp(*number, i64{row.low}, i64{row.high}));
    settings.*row.number = countsInSevenths(row) ? held * fastOpeningFactor : held;
    return {};
}

static std::string setTruth(const OptionRow& row, std::string_view value) {
    const bool yes = sameWord(value, "true") || value == "1";
    const bool no = sameWord(value, "false") || value == "0";
    if (!yes && !no) {
        return std::string("neither true nor false for ") + row.name;
    }
    settings.*row.truth = yes;
    return {};
}

void setTablePath(std::string_view path) {
    settings.tablePath = path == "<empty>" ? "" : path;
    settings.tables = !settings.tablePath.empty();
}

static void setText(const OptionRow& row, std::string_view value) {
    if (row.kind == Kind::folder) {
        setTablePath(value);
    } else {
        settings.*row.text = value == "<empty>" ? "" : value;
    }
}

void setHashMegabytes(i64 megabytes) {
    settings.hashMegabytes = static_cast<i32>(std::clamp(megabytes, i64{1}, i64{largestHash}));
}

std::string setOption(Side side, std::string_view name, std::string_view value) {
    const auto row = std::ranges::find_if(
        rows, [&](const OptionRow& each) { return isFor(each, side) && sameWord(name, each.name); });
    if (row == std::end(rows)) {
        return "no option " + std::string(name);
    }
    switch (row->kind) {
        case Kind::spin:
            return setNumber(*row, value);
        case Kind::check:
            return setTruth(*row, value);
        case Kind::button:
            wantEmptyTables();
            return {};
        default:
            setText(*row, value);
            return {};
    }
}
