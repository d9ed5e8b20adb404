// The scan for tables, the records it makes, and the keys they are found by.
#include "real_tables.h"
#include "support/test_data.h"
#include "table_names.h"
#include "tablebase/internal.h"

#include <cstdarg>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>

// The paths opened since `watch` was set.
static bool watch = false;
static std::vector<std::string> opened;

// The linker calls the first for the C library's, which has the second name then.
extern "C" int __wrap_open64(const char* path, int flags, ...);
extern "C" int __real_open64(const char* path, int flags, ...);
extern "C" int __wrap_open64(const char* path, int flags, ...) {
    if (watch) {
        opened.emplace_back(path);
    }
    va_list rest;
    va_start(rest, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(rest, int) : 0;
    va_end(rest);
    return __real_open64(path, flags, mode);
}

namespace {

// A folder with empty files: the scan opens them and no more.
struct EmptyTables {
    std::filesystem::path path;

    explicit EmptyTables(const std::vector<std::string>& names, const std::string& folder = "") {
        path = std::filesystem::path(testing::TempDir()) / ("scan-" + std::to_string(std::random_device{}()));
        path /= folder;
        std::filesystem::create_directories(path);
        for (const std::string& name : names) {
            std::ofstream(path / (name + ".rtbw"));
        }
    }
    EmptyTables(const EmptyTables&) = delete;
    EmptyTables& operator=(const EmptyTables&) = delete;
    ~EmptyTables() { std::filesystem::remove_all(path); }
};

// An environment variable for the length of a test.
struct Environment {
    const char* name;
    Environment(const char* variable, const std::string& value) : name(variable) {
        setenv(variable, value.c_str(), 1);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() { unsetenv(name); }
};

tbEntry* tableOf(const char* fen) {
    setUpPosition(fen);
    return lookupTable(materialKeyOfPosition(0));
}

}  // namespace

TEST(Registry, FindsNothingInAnEmptyPath) {
    EXPECT_EQ(tables::registerFolder(""), "Found 0 tablebases.\n");
    EXPECT_EQ(tables::registerFolder("/nowhere"), "Found 0 tablebases.\n");
}

TEST(Registry, OpensTheFileOfEveryNameOnce) {
    opened.clear();
    watch = true;
    tables::registerFolder("/nowhere");
    watch = false;
    constexpr std::size_t withASecondKing = 35;
    const std::vector<std::string> names = tableNames(6);
    const std::set<std::string> paths(opened.begin(), opened.end());
    ASSERT_EQ(opened.size(), names.size() + withASecondKing);
    EXPECT_EQ(paths.size(), opened.size());
    EXPECT_EQ(opened.front(), "/nowhere/KQvK.rtbw");
    EXPECT_EQ(opened.back(), "/nowhere/KPPPPvK.rtbw");
    for (const std::string& name : names) {
        EXPECT_EQ(paths.count("/nowhere/" + name + ".rtbw"), 1u) << name;
    }
}

TEST(Registry, FindsEveryNameOfThreeToSixMen) {
    const std::vector<std::string> names = tableNames(6);
    ASSERT_EQ(names.size(), 510u);
    const EmptyTables folder(names);
    EXPECT_EQ(tables::registerFolder(folder.path.string()), "Found 510 tablebases.\n");
    EXPECT_EQ(tbPieceCount, 254);
    EXPECT_EQ(tbPawnCount, 256);
}

TEST(Registry, HasNoBucketThatOverflowsAndNoKeyTwice) {
    std::map<u64, i32> bucket;
    std::set<u64> keys;
    for (const std::string& name : tableNames(6)) {
        const TableMaterial material = materialOfName(name.c_str());
        for (const u64 key : std::set<u64>{material.key, material.key2}) {
            EXPECT_TRUE(keys.insert(key).second) << name;
            ++bucket[key >> 54];
        }
    }
    for (const auto& [number, count] : bucket) {
        EXPECT_LE(count, HSHMAX) << number;
    }
}

TEST(Registry, ServesBothColourings) {
    const EmptyTables folder({"KQvKR"});
    tables::registerFolder(folder.path.string());
    const tbEntry* whiteQueen = tableOf("8/8/3k1r2/8/8/3K4/Q7/8 w - -");
    ASSERT_NE(whiteQueen, nullptr);
    EXPECT_EQ(materialKeyOfPosition(0), whiteQueen->material.key);
    EXPECT_EQ(tableOf("8/8/3k1q2/8/8/3K4/R7/8 w - -"), whiteQueen);
    EXPECT_EQ(materialKeyOfPosition(0), whiteQueen->material.key2);
    EXPECT_EQ(tableOf("8/8/3k1q2/8/8/3K4/R7/8 b - -"), whiteQueen);
    EXPECT_EQ(tableOf("8/8/3k1r2/8/8/3K4/Q7/8 b - -"), whiteQueen);
    EXPECT_EQ(tableOf("8/8/3k1r2/8/8/3K4/R7/8 w - -"), nullptr);
}

TEST(Registry, GivesASymmetricTableOneSlot) {
    const EmptyTables folder({"KQvKQ"});
    tables::registerFolder(folder.path.string());
    const TableMaterial material = materialOfName("KQvKQ");
    EXPECT_EQ(material.key, material.key2);
    EXPECT_EQ(material.symmetric, 1);
    i32 slots = 0;
    for (const tbHashBucket& bucket : tbHash) {
        for (const tbHashSlot& slot : bucket) {
            slots += slot.entry != nullptr ? 1 : 0;
        }
    }
    EXPECT_EQ(slots, 1);
}

TEST(Registry, TakesTheMenFromTheName) {
    struct Case {
        const char* name;
        i32 num;
        i32 headKind;
        i32 leadingPawns;
        i32 otherPawns;
    };
    constexpr Case cases[] = {
        {"KQvK", 3, 0, 0, 0},    {"KNNvK", 4, 2, 0, 0},   {"KQQvKR", 5, 0, 0, 0}, {"KQQvKRR", 6, 2, 0, 0},
        {"KPvK", 3, 0, 1, 0},    {"KQvKP", 4, 0, 1, 0},   {"KPvKP", 4, 0, 1, 1},  {"KPPvKP", 5, 0, 1, 2},
        {"KQPvKPP", 6, 0, 1, 2}, {"KPPPvKP", 6, 0, 1, 3}, {"KRvKPP", 5, 0, 2, 0}, {"KPPvKPP", 6, 0, 2, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const TableMaterial material = materialOfName(c.name);
        EXPECT_EQ(material.num, c.num);
        EXPECT_EQ(material.headKind, c.headKind);
        EXPECT_EQ(material.pawns[0], c.leadingPawns);
        EXPECT_EQ(material.pawns[1], c.otherPawns);
        EXPECT_EQ(material.hasPawns != 0, c.leadingPawns != 0);
    }
}

TEST(Registry, NamesThePositionFromEitherSide) {
    const auto nameOf = [](const char* fen, i32 swapColours) {
        setUpPosition(fen);
        char name[tableNameSize];
        tableNameOfPosition(name, swapColours);
        return std::string(name);
    };
    EXPECT_EQ(nameOf("8/8/3k1n2/8/8/3K4/RQ6/8 w - -", 0), "KQRvKN");
    EXPECT_EQ(nameOf("8/8/3k1n2/8/8/3K4/RQ6/8 w - -", 1), "KNvKQR");
    EXPECT_EQ(nameOf("8/8/3k1n2/8/8/3K4/RQ6/8 b - -", 0), "KQRvKN");
    EXPECT_EQ(nameOf("8/8/3kpn2/8/8/3K4/PB6/8 b - -", 1), "KNPvKBP");
}

TEST(Registry, TriesANameWithASecondKing) {
    const EmptyTables folder({"KQQQvKK"});
    EXPECT_EQ(tables::registerFolder(folder.path.string()), "Found 1 tablebases.\n");
    EXPECT_EQ(tableOf("8/8/3k4/8/8/3K4/QQQ5/8 w - -"), nullptr);
}

TEST(Registry, EndsTheProcessWhenThereAreTooManyTables) {
    std::vector<std::string> names = tableNames(6);
    names.push_back("KQQQvKK");
    const EmptyTables folder(names);
    EXPECT_EXIT(
        {
            // the words come on standard output
            dup2(2, 1);
            tbInit(folder.path.c_str());
        },
        testing::ExitedWithCode(1), "TBMAX_PIECE limit too low!");
}

TEST(Registry, EndsTheProcessWhenThereAreTooManyPawnTables) {
    std::vector<std::string> names = tableNames(6);
    names.push_back("KPPPvKK");
    const EmptyTables folder(names);
    EXPECT_EXIT(
        {
            dup2(2, 1);
            tbInit(folder.path.c_str());
        },
        testing::ExitedWithCode(1), "TBMAX_PAWN limit too low!");
}

TEST(Registry, TakesOnlyRegularFiles) {
    const EmptyTables folder({"KQvK"});
    std::filesystem::create_directories(folder.path / "KRvK.rtbw");
    ASSERT_EQ(mkfifo((folder.path / "KBvK.rtbw").c_str(), 0600), 0);
    EXPECT_EQ(tables::registerFolder(folder.path.string()), "Found 1 tablebases.\n");
}

TEST(Registry, ForgetsTheTablesOfAnEarlierStart) {
    const EmptyTables folder({"KQvK"});
    tables::registerFolder(folder.path.string());
    EXPECT_EQ(tables::registerFolder("/nowhere"), "Found 0 tablebases.\n");
    EXPECT_EQ(tableOf("8/8/3k4/8/8/3K4/Q7/8 w - -"), nullptr);
}

TEST(Registry, BearsPathsOfEveryLengthThatTheOptionsHold) {
    const EmptyTables base({});
    for (const std::size_t length : {120u, 127u, 128u, 129u, 200u, 255u}) {
        const std::size_t free = length - base.path.string().size();
        ASSERT_LT(free, 255u);
        const std::filesystem::path path = base.path / std::string(free, 'd');
        std::filesystem::create_directories(path);
        std::filesystem::copy(testDataPath("syzygy/KQvK.rtbw"), path / "KQvK.rtbw");
        std::filesystem::copy(testDataPath("syzygy/KQvK.rtbz"), path / "KQvK.rtbz");
        const std::string text = path.string().substr(0, 255);
        const bool fits = path.string().size() <= 255;
        EXPECT_EQ(tables::registerFolder(text), fits ? "Found 1 tablebases.\n" : "Found 0 tablebases.\n");
        if (fits) {
            EXPECT_EQ(tables::probe("8/8/3k4/8/8/3K4/Q7/8 w - -").wdl, 2);
        }
    }
}

// ---- the environment ------------------------------------------------------------------------------------------

TEST(Registry, TakesTheFoldersFromTheEnvironment) {
    const EmptyTables folder({"KQvK", "KRvK"});
    const Environment wdl("RTBWDIR", folder.path.string());
    EXPECT_EQ(tables::registerFolder("/nowhere"), "$WDLDIR loaded\nFound 2 tablebases.\n");
    EXPECT_EQ(std::string(tbPathWdl), folder.path.string());
    EXPECT_EQ(std::string(tbPathDtz), "/nowhere");
    const Environment dtz("RTBZDIR", "/elsewhere");
    EXPECT_EQ(tables::registerFolder("/nowhere"), "$DTZDIR loaded\n$WDLDIR loaded\nFound 2 tablebases.\n");
    EXPECT_EQ(std::string(tbPathDtz), "/elsewhere");
}

TEST(Registry, IgnoresALongEnvironmentText) {
    const std::string longText = "/" + std::string(99, 'x');
    const std::string shortText = "/" + std::string(98, 'x');
    {
        const Environment wdl("RTBWDIR", longText);
        EXPECT_EQ(tables::registerFolder("/nowhere"), "Found 0 tablebases.\n");
        EXPECT_EQ(std::string(tbPathWdl), "/nowhere");
    }
    const Environment wdl("RTBWDIR", shortText);
    EXPECT_EQ(tables::registerFolder("/nowhere"), "$WDLDIR loaded\nFound 0 tablebases.\n");
    EXPECT_EQ(std::string(tbPathWdl), shortText);
}
