// The keys of the configuration file, each case through a real file, and the parameter print.
#include "frontend/config.h"

#include "frontend/frontend.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

// Sets every field that loadConfig writes to something that no key holds by chance.
static void spoilSettings() {
    constexpr i32 nonsense = -12345;
    for (i32* field :
         {&EngineOptions.book, &EngineOptions.randBook, &EngineOptions.syzygy, &EngineOptions.syzygyMen,
          &EngineOptions.maxDepth, &EngineOptions.hashSize, &EngineOptions.pawnHashSize,
          &EngineOptions.safePly, &TimeControl.suddenDeath, &TimeControl.maxTime, &TimeControl.moreTime,
          &TimeControl.lessTime, &TimeControl.fastGame, &TimeControl.fastOpening}) {
        *field = nonsense;
    }
    EngineOptions.minDepth = nonsense;
    EngineOptions.postThinking = nonsense;
    EngineOptions.hashEntries = 1;
    EngineOptions.pawnHashEntries = 1;
    TimeControl.moveTime = nonsense;
    TimeControl.allocatedTime = nonsense;
    TimeControl.engineClock = nonsense;
    std::strcpy(EngineOptions.bookFile, "spoiled");
    std::strcpy(EngineOptions.syzygyPath, "spoiled");
}

static void load(const std::string& text) {
    const TempDirectory directory;
    spoilSettings();
    loadConfig(directory.write("tarvelmon.ini", text).c_str());
}

static void expectDefaults() {
    EXPECT_EQ(EngineOptions.maxDepth, 64);
    EXPECT_EQ(EngineOptions.minDepth, 1);
    EXPECT_EQ(TimeControl.maxTime, 720000);
    EXPECT_EQ(TimeControl.engineClock, 720000);
    EXPECT_EQ(TimeControl.moveTime, 720000);
    EXPECT_EQ(TimeControl.allocatedTime, 720000);
    EXPECT_EQ(EngineOptions.postThinking, 1);
    EXPECT_EQ(EngineOptions.hashSize, 4096);
    EXPECT_EQ(EngineOptions.hashEntries, 268435456U);
    EXPECT_EQ(EngineOptions.pawnHashSize, 256);
    EXPECT_EQ(EngineOptions.pawnHashEntries, 11184810U);
    EXPECT_EQ(EngineOptions.safePly, 10);
    EXPECT_STREQ(EngineOptions.bookFile, "book.bin");
    EXPECT_EQ(EngineOptions.book, 1);
    EXPECT_EQ(EngineOptions.randBook, 1);
    EXPECT_EQ(EngineOptions.syzygy, 1);
    EXPECT_STREQ(EngineOptions.syzygyPath, "");
    EXPECT_EQ(EngineOptions.syzygyMen, 5);
    EXPECT_EQ(TimeControl.suddenDeath, 20);
    EXPECT_EQ(TimeControl.moreTime, 5);
    EXPECT_EQ(TimeControl.lessTime, 5);
    EXPECT_EQ(TimeControl.fastGame, 5);
    EXPECT_EQ(TimeControl.fastOpening, 105);
}

TEST(Config, HasTheseDefaultsWithoutAFile) {
    const TempDirectory directory;
    spoilSettings();
    loadConfig(directory.nameOf("tarvelmon.ini").c_str());
    expectDefaults();
}

TEST(Config, HasTheDefaultsWithAnEmptyFileOrWhatIsNoFile) {
    const TempDirectory directory;
    load("");
    expectDefaults();
    load("[ENGINE]\n[BOOK]\n[TABLEBASE]\n[TIME]\n");
    expectDefaults();
    spoilSettings();
    loadConfig(directory.path.string().c_str());
    expectDefaults();
    spoilSettings();
    loadConfig("/dev/zero");
    expectDefaults();
}

TEST(Config, ReadsEveryKey) {
    load(
        "[ENGINE]\nMaxDepth=20\nMinDepth=3\nMaxTime=6000\nPostThinking=no\nHashSize=128\nPawnHashSize=24\n"
        "safePly=12\n[BOOK]\nBookFile=my.bin\nBook=0\nRandBook=0\n[TABLEBASE]\nSyzygy=0\nSyzygyPath=/tables\n"
        "SyzygyMen=6\n[TIME]\nSuddenDeath=30\nMoreTime=6\nLessTime=7\nFastGame=8\nFastOpening=9\n");
    EXPECT_EQ(EngineOptions.maxDepth, 20);
    EXPECT_EQ(EngineOptions.minDepth, 3);
    EXPECT_EQ(TimeControl.maxTime, 6000);
    EXPECT_EQ(TimeControl.engineClock, 6000);
    EXPECT_EQ(TimeControl.moveTime, 6000);
    EXPECT_EQ(TimeControl.allocatedTime, 6000);
    EXPECT_EQ(EngineOptions.postThinking, 0);
    EXPECT_EQ(EngineOptions.hashSize, 128);
    EXPECT_EQ(EngineOptions.hashEntries, 8388608U);
    EXPECT_EQ(EngineOptions.pawnHashSize, 24);
    EXPECT_EQ(EngineOptions.pawnHashEntries, 1048576U);
    EXPECT_EQ(EngineOptions.safePly, 12);
    EXPECT_STREQ(EngineOptions.bookFile, "my.bin");
    EXPECT_EQ(EngineOptions.book, 0);
    EXPECT_EQ(EngineOptions.randBook, 0);
    EXPECT_EQ(EngineOptions.syzygy, 0);
    EXPECT_STREQ(EngineOptions.syzygyPath, "/tables");
    EXPECT_EQ(EngineOptions.syzygyMen, 6);
    EXPECT_EQ(TimeControl.suddenDeath, 30);
    EXPECT_EQ(TimeControl.moreTime, 6);
    EXPECT_EQ(TimeControl.lessTime, 7);
    EXPECT_EQ(TimeControl.fastGame, 8);
    EXPECT_EQ(TimeControl.fastOpening, 63);
}

// ---- ranges ---------------------------------------------------------------------------------------------------

struct RangeCase {
    const char* key;
    const char* section;
    i32 lowest;
    i32 highest;
    i32 defaultValue;
    i32 (*stored)();
};

static const RangeCase rangeCases[] = {
    {"MaxDepth", "ENGINE", 2, 64, 64, [] { return EngineOptions.maxDepth; }},
    {"MinDepth", "ENGINE", 1, 64, 1, [] { return EngineOptions.minDepth.load(); }},
    {"safePly", "ENGINE", 2, 64, 10, [] { return EngineOptions.safePly; }},
    {"SyzygyMen", "TABLEBASE", 3, 7, 5, [] { return EngineOptions.syzygyMen; }},
    {"SuddenDeath", "TIME", 20, 40, 20, [] { return TimeControl.suddenDeath; }},
    {"MoreTime", "TIME", 5, 15, 5, [] { return TimeControl.moreTime; }},
    {"LessTime", "TIME", 5, 15, 5, [] { return TimeControl.lessTime; }},
    {"FastGame", "TIME", 5, 15, 5, [] { return TimeControl.fastGame; }},
};

static i32 loadedAs(const RangeCase& c, const std::string& value) {
    load("[" + std::string(c.section) + "]\n" + c.key + "=" + value + "\n");
    return c.stored();
}

TEST(Config, ReplacesAValueOutOfRangeByTheDefault) {
    for (const RangeCase& c : rangeCases) {
        SCOPED_TRACE(c.key);
        EXPECT_EQ(loadedAs(c, std::to_string(c.lowest)), c.lowest);
        EXPECT_EQ(loadedAs(c, std::to_string(c.highest)), c.highest);
        for (const i32 outside : {c.lowest - 1, c.highest + 1, -1, 0, 2147483647}) {
            EXPECT_EQ(loadedAs(c, std::to_string(outside)), c.defaultValue) << outside;
        }
        EXPECT_EQ(loadedAs(c, "-99999999999999999999"), c.defaultValue);
        EXPECT_EQ(loadedAs(c, ""), c.defaultValue);
        EXPECT_EQ(loadedAs(c, "nonsense"), c.defaultValue) << "nonsense reads as 0";
    }
}

TEST(Config, MultipliesFastOpeningOnlyInItsRange) {
    const auto loaded = [](const char* value) {
        load(std::string("[TIME]\nFastOpening=") + value + "\n");
        return TimeControl.fastOpening;
    };
    EXPECT_EQ(loaded("5"), 35);
    EXPECT_EQ(loaded("15"), 105);
    EXPECT_EQ(loaded("4"), 15);
    EXPECT_EQ(loaded("16"), 15);
    EXPECT_EQ(loaded("99"), 15);
    EXPECT_EQ(loaded("-5"), 15);
    EXPECT_EQ(loaded(""), 105);
}

struct SizeCase {
    const char* written;
    i32 size;
    u64 hashEntries;
    u64 pawnHashEntries;
};

// Entries are 64-bit numbers: a negative size comes out larger than any memory.
constexpr SizeCase sizeCases[] = {
    {"0", 0, 0, 0},
    {"1", 1, 65536, 43690},
    {"4096", 4096, 268435456, 178956970},
    {"0x40", 64, 4194304, 2796202},
    {"2147483647", 2147483647, 140737488289792, 93824992193194},
    {"99999999999", 2147483647, 140737488289792, 93824992193194},
    {"-1", -1, 0x0FFFFFFFFFFF0000, 0x0AAAAAAAAAAA0000},
};

TEST(Config, TakesAnyHashSize) {
    for (const SizeCase& c : sizeCases) {
        SCOPED_TRACE(c.written);
        load(std::string("[ENGINE]\nHashSize=") + c.written + "\nPawnHashSize=" + c.written + "\n");
        EXPECT_EQ(EngineOptions.hashSize, c.size);
        EXPECT_EQ(EngineOptions.pawnHashSize, c.size);
        EXPECT_EQ(EngineOptions.hashEntries, c.hashEntries);
        EXPECT_EQ(hashEntriesFor(c.size), c.hashEntries);
        EXPECT_EQ(EngineOptions.pawnHashEntries, c.pawnHashEntries);
    }
}

TEST(Config, TakesAnyMaxTime) {
    for (const i32 time : {0, -1, 2147483647, -2147483647}) {
        load("[ENGINE]\nMaxTime=" + std::to_string(time) + "\n");
        EXPECT_EQ(TimeControl.maxTime, time);
        EXPECT_EQ(TimeControl.engineClock, time);
        EXPECT_EQ(TimeControl.moveTime, time);
        EXPECT_EQ(TimeControl.allocatedTime, time);
    }
}

// ---- text and truth -------------------------------------------------------------------------------------------

TEST(Config, CutsLongNamesToTheirFields) {
    load("[BOOK]\nBookFile=" + std::string(300, 'b') + "\n[TABLEBASE]\nSyzygyPath=" + std::string(400, 's') +
         "\n");
    EXPECT_EQ(EngineOptions.bookFile, std::string(99, 'b'));
    EXPECT_EQ(EngineOptions.syzygyPath, std::string(255, 's'));
    EXPECT_EQ(EngineOptions.syzygy, 1) << "the field before the path";
    EXPECT_EQ(EngineOptions.syzygyMen, 5) << "the field behind the path";
}

TEST(Config, ReadsNamesWithQuotesAndCommentSigns) {
    load("[BOOK]\nBookFile=\"my book.bin\"\n[TABLEBASE]\nSyzygyPath=C:\\tables\\five ; men\n");
    EXPECT_STREQ(EngineOptions.bookFile, "my book.bin");
    EXPECT_STREQ(EngineOptions.syzygyPath, "C:\\tables\\five");
    load("[BOOK]\nBookFile=a#b\n");
    EXPECT_STREQ(EngineOptions.bookFile, "a");
    load("[BOOK]\nBookFile=\"a#b\"\n");
    EXPECT_STREQ(EngineOptions.bookFile, "a#b");
    load("[BOOK]\nBookFile=\n");
    EXPECT_STREQ(EngineOptions.bookFile, "");
}

TEST(Config, ReadsTruthByItsFirstLetter) {
    load("[BOOK]\nBook=off\nRandBook=no\n[TABLEBASE]\nSyzygy=False\n[ENGINE]\nPostThinking=0\n");
    EXPECT_EQ(EngineOptions.book, 1) << "off is no word for no, so the default stands";
    EXPECT_EQ(EngineOptions.randBook, 0);
    EXPECT_EQ(EngineOptions.syzygy, 0);
    EXPECT_EQ(EngineOptions.postThinking, 0);
    load("[BOOK]\nBook=0\nRandBook=yes\n");
    EXPECT_EQ(EngineOptions.book, 0);
    EXPECT_EQ(EngineOptions.randBook, 1);
}

TEST(Config, IgnoresCaseBlanksAndComments) {
    load("[engine]\nhashsize = 128 ; comment\n");
    EXPECT_EQ(EngineOptions.hashSize, 128);
    load("[Engine]\n\tHASHSIZE: 64\n");
    EXPECT_EQ(EngineOptions.hashSize, 64);
}

TEST(Config, FindsNoKeyOutsideItsSection) {
    load("HashSize=64\n[BOOK]\nHashSize=64\nMaxDepth=5\n[ENGINE]\nBook=0\nFastOpening=5\n");
    expectDefaults();
}

TEST(Config, ReloadsOverWhatStands) {
    load("[ENGINE]\nMinDepth=4\nMaxTime=500\nPostThinking=0\n");
    TimeControl.engineClock = 3;
    TimeControl.moveTime = 3;
    TimeControl.allocatedTime = 3;
    EngineOptions.gameOver = 1;
    TimeControl.increment = 7;
    const TempDirectory directory;
    loadConfig(directory.nameOf("tarvelmon.ini").c_str());
    expectDefaults();
    EXPECT_EQ(EngineOptions.gameOver, 1) << "the game's state stays";
    EXPECT_EQ(TimeControl.increment, 7);
    EngineOptions.gameOver = 0;
    TimeControl.increment = 0;
}

TEST(Config, SaysNothing) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    load("]broken[\n[ENGINE\nHashSize\n[ENGINE]\nMaxDepth=\"\n");
    loadConfig("/dev/null");
    loadConfig("");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// ---- parameter print ------------------------------------------------------------------------------------------

TEST(Config, PrintsTheParameters) {
    load(
        "[ENGINE]\nHashSize=64\nMaxTime=12399\nMinDepth=2\n[BOOK]\nBookFile=%s%n.bin\nRandBook=0\n[TABLEBASE]"
        "\n"
        "SyzygyPath=/tables\n[TIME]\nSuddenDeath=25\nLessTime=7\n");
    TimeControl.moveTime = 199;
    testing::internal::CaptureStdout();
    printParams();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\n[ENGINE]\n"
              "MaxDepht:           64\n"
              "MinDepht:           2\n"
              "postThinking:       1\n"
              "hashSize:           64 MB\n"
              "safePly:            10\n"
              "\n"
              "[BOOK]\n"
              "bookFile:           %s%n.bin\n"
              "book:               1\n"
              "randBook:           0\n"
              "\n"
              "[TABLEBASE]\n"
              "Sygyzy:             1\n"
              "SyzygyPath:         /tables\n"
              "SyzygyMen:          5\n"
              "\n"
              "[TIME]\n"
              "MaxTime:            123 s\n"
              "moveTime:           1 s\n"
              "suddenDeath:        25\n"
              "moreTime:           5\n"
              "lessTime:           7\n"
              "fastGame:           5\n"
              "\n");
}
