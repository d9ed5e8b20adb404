// The keys of the configuration file: sections, names, defaults and ranges, and where each value goes.
#include "frontend/config.h"

#include "frontend/frontend.h"
#include "frontend/ini.h"
#include "hash/hash.h"
#include "platform/print.h"
#include "tablebase/tablebase.h"

#include <limits>

constexpr const char* engineSection = "ENGINE";
constexpr const char* bookSection = "BOOK";
constexpr const char* tablebaseSection = "TABLEBASE";
constexpr const char* timeSection = "TIME";

// An accepted FastOpening is stored as so many times the value in the file, its default too.
constexpr i32 fastOpeningFactor = 7;

struct IntKey {
    const char* section;
    const char* name;
    i32 defaultValue;
    i32 lowest;
    i32 highest;
};

struct BoolKey {
    const char* section;
    const char* name;
    i32 defaultValue;
};

static constexpr IntKey unlimited(const char* section, const char* name, i32 defaultValue) {
    return {section, name, defaultValue, std::numeric_limits<i32>::min(), std::numeric_limits<i32>::max()};
}

constexpr IntKey maxDepthKey = {engineSection, "MaxDepth", 64, 2, 64};
constexpr IntKey minDepthKey = {engineSection, "MinDepth", 1, 1, 64};
constexpr IntKey maxTimeKey = unlimited(engineSection, "MaxTime", 720000);
constexpr BoolKey postThinkingKey = {engineSection, "PostThinking", 1};
constexpr IntKey hashSizeKey = unlimited(engineSection, "HashSize", 4096);
constexpr IntKey pawnHashSizeKey = unlimited(engineSection, "PawnHashSize", 256);
constexpr IntKey safePlyKey = {engineSection, "safePly", 10, 2, 64};
constexpr BoolKey bookKey = {bookSection, "Book", 1};
constexpr BoolKey randBookKey = {bookSection, "RandBook", 1};
constexpr BoolKey syzygyKey = {tablebaseSection, "Syzygy", 1};
constexpr IntKey syzygyMenKey = {tablebaseSection, "SyzygyMen", 5, 3, probeMenMax};
constexpr IntKey suddenDeathKey = {timeSection, "SuddenDeath", 20, 20, 40};
constexpr IntKey moreTimeKey = {timeSection, "MoreTime", 5, 5, 15};
constexpr IntKey lessTimeKey = {timeSection, "LessTime", 5, 5, 15};
constexpr IntKey fastGameKey = {timeSection, "FastGame", 5, 5, 15};
constexpr IntKey fastOpeningKey = {timeSection, "FastOpening", 15, 5, 15};

static bool accepts(const IntKey& key, i32 value) {
    return value >= key.lowest && value <= key.highest;
}

// Deliberate: a value out of range is not moved to the nearest limit, the default replaces it.
static i32 readInt(const IntKey& key, const char* fileName) {
    const i32 value = iniGetInt(key.section, key.name, key.defaultValue, fileName);
    return accepts(key, value) ? value : key.defaultValue;
}

static i32 readBool(const BoolKey& key, const char* fileName) {
    return iniGetBool(key.section, key.name, key.defaultValue, fileName);
}

template <i32 Size>
static void readText(char (&text)[Size], const char* section, const char* name, const char* defaultValue,
                     const char* fileName) {
    iniGetString(section, name, defaultValue, text, Size, fileName);
}

// Deliberate: only a value in range is multiplied; the default that replaces another one is stored plain.
static i32 readFastOpening(const char* fileName) {
    const i32 value =
        iniGetInt(fastOpeningKey.section, fastOpeningKey.name, fastOpeningKey.defaultValue, fileName);
    return accepts(fastOpeningKey, value) ? value * fastOpeningFactor : fastOpeningKey.defaultValue;
}

// A negative size comes out as more bytes than any machine has, so that the allocation fails.
static u64 bytesOfMegabytes(i32 megabytes) {
    return static_cast<u64>(i64{megabytes}) << 20;
}

u64 hashEntriesFor(i32 megabytes) {
    return bytesOfMegabytes(megabytes) / sizeof(ys_hash);
}

static void loadEngineKeys(const char* fileName) {
    EngineOptions.maxDepth = readInt(maxDepthKey, fileName);
    EngineOptions.minDepth = readInt(minDepthKey, fileName);
    TimeControl.maxTime = readInt(maxTimeKey, fileName);
    TimeControl.engineClock = TimeControl.maxTime;
    TimeControl.moveTime = TimeControl.maxTime;
    TimeControl.allocatedTime = TimeControl.maxTime;
    EngineOptions.postThinking = readBool(postThinkingKey, fileName);
    EngineOptions.hashSize = readInt(hashSizeKey, fileName);
    EngineOptions.hashEntries = hashEntriesFor(EngineOptions.hashSize);
    EngineOptions.pawnHashSize = readInt(pawnHashSizeKey, fileName);
    EngineOptions.pawnHashEntries = bytesOfMegabytes(EngineOptions.pawnHashSize) / sizeof(hashPawn);
    EngineOptions.safePly = readInt(safePlyKey, fileName);
}

static void loadBookKeys(const char* fileName) {
    readText(EngineOptions.bookFile, bookSection, "BookFile", "book.bin", fileName);
    EngineOptions.book = readBool(bookKey, fileName);
    EngineOptions.randBook = readBool(randBookKey, fileName);
}

static void loadTablebaseKeys(const char* fileName) {
    EngineOptions.syzygy = readBool(syzygyKey, fileName);
    readText(EngineOptions.syzygyPath, tablebaseSection, "SyzygyPath", "", fileName);
    EngineOptions.syzygyMen = readInt(syzygyMenKey, fileName);
}

static void loadTimeKeys(const char* fileName) {
    TimeControl.suddenDeath = readInt(suddenDeathKey, fileName);
    TimeControl.moreTime = readInt(moreTimeKey, fileName);
    TimeControl.lessTime = readInt(lessTimeKey, fileName);
    TimeControl.fastGame = readInt(fastGameKey, fileName);
    TimeControl.fastOpening = readFastOpening(fileName);
}

void loadConfig(const char* fileName) {
    loadEngineKeys(fileName);
    loadBookKeys(fileName);
    loadTablebaseKeys(fileName);
    loadTimeKeys(fileName);
}

// Deliberate: "MaxDepht", "MinDepht" and "Sygyzy" are written so.
void printParams() {
    print("\n[ENGINE]\n");
    print("MaxDepht:           %i\n", EngineOptions.maxDepth);
    print("MinDepht:           %i\n", EngineOptions.minDepth.load());
    print("postThinking:       %i\n", EngineOptions.postThinking.load());
    print("hashSize:           %i MB\n", EngineOptions.hashSize);
    print("safePly:            %i\n", EngineOptions.safePly);
    print("\n[BOOK]\n");
    print("bookFile:           %s\n", EngineOptions.bookFile);
    print("book:               %i\n", EngineOptions.book);
    print("randBook:           %i\n", EngineOptions.randBook);
    print("\n[TABLEBASE]\n");
    print("Sygyzy:             %i\n", EngineOptions.syzygy);
    print("SyzygyPath:         %s\n", EngineOptions.syzygyPath);
    print("SyzygyMen:          %i\n", EngineOptions.syzygyMen);
    print("\n[TIME]\n");
    print("MaxTime:            %i s\n", TimeControl.maxTime / 100);
    print("moveTime:           %i s\n", TimeControl.moveTime.load() / 100);
    print("suddenDeath:        %i\n", TimeControl.suddenDeath);
    print("moreTime:           %i\n", TimeControl.moreTime);
    print("lessTime:           %i\n", TimeControl.lessTime);
    print("fastGame:           %i\n", TimeControl.fastGame);
    print("\n");
}
