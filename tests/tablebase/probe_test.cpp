// Probes of positions: captures, en passant, colours, and positions that no table can hold. The tables are those of
// tests/data/syzygy.
#include "real_tables.h"
#include "search/search_info.h"
#include "support/test_data.h"
#include "table_folder.h"
#include "tablebase/internal.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace {

static const std::string committed = testDataPath("syzygy");

struct ValueCase {
    const char* name;
    const char* fen;
    i32 wdl;
    i32 dtz;
};

// Worked by hand.
constexpr ValueCase valueCases[] = {
    {"mated", "7k/6Q1/6K1/8/8/8/8/8 b - -", -2, -1},
    {"mate in one", "7k/8/6K1/8/8/8/8/R7 w - -", 2, 1},
    {"stalemate", "7k/5Q2/6K1/8/8/8/8/8 b - -", 0, 0},
    {"one move, then mated", "7k/R7/6K1/8/8/8/8/8 b - -", -2, -2},
    {"the queen is lost", "8/8/8/8/8/1k6/1Q6/7K b - -", 0, 0},
    {"a bishop does not win", "8/8/3k4/8/8/3K4/B7/8 w - -", 0, 0},
    {"the pawn promotes", "8/P7/8/8/8/2k5/8/K7 w - -", 2, 1},
    {"the king makes way for the pawn first", "4k3/8/4K3/4P3/8/8/8/8 w - -", 2, 3},
    {"the pawn without it", "4k3/8/8/4K3/4P3/8/8/8 b - -", 0, 0},
    {"a rook is taken and wins", "8/8/8/8/8/2k5/R6r/K7 w - -", 2, 1},
    {"two bare kings", "8/8/3k4/8/8/3K4/8/8 w - -", 0, 0},
    {"a knight against a knight", "8/8/3k1n2/8/8/3K4/N7/8 w - -", 0, 0},
};

constexpr u8 storedLoss = 0;
constexpr u8 storedDraw = 2;
constexpr u8 storedWin = 4;

std::string swappedFen(const std::string& fen) {
    std::string rows[8];
    std::size_t start = 0;
    for (std::string& row : rows) {
        const std::size_t end = fen.find_first_of("/ ", start);
        row = fen.substr(start, end - start);
        start = end + 1;
    }
    std::string swapped;
    for (i32 i = 7; i >= 0; --i) {
        swapped += rows[i] + (i != 0 ? "/" : "");
    }
    for (char& c : swapped) {
        c = std::isalpha(static_cast<unsigned char>(c)) != 0 ? static_cast<char>(c ^ 0x20) : c;
    }
    std::string rest = fen.substr(start - 1);
    rest[1] = rest[1] == 'w' ? 'b' : 'w';
    for (char& c : rest) {
        c = c == '3' ? '6' : c == '6' ? '3' : c;
    }
    return swapped + rest;
}

}  // namespace

TEST(Probe, KnowsTheValuesOfTheTables) {
    tables::registerFolder(committed);
    for (const ValueCase& c : valueCases) {
        for (const std::string& fen : {std::string(c.fen), swappedFen(c.fen)}) {
            SCOPED_TRACE(std::string(c.name) + ": " + fen);
            const tables::Values values = tables::probe(fen);
            EXPECT_TRUE(values.wdlKnown);
            EXPECT_TRUE(values.dtzKnown);
            EXPECT_EQ(values.wdl, c.wdl);
            EXPECT_EQ(values.dtz, c.dtz);
        }
    }
}

TEST(Probe, LeavesTheBoardAsItWas) {
    tables::registerFolder(committed);
    for (const ValueCase& c : valueCases) {
        setUpPosition(c.fen);
        const Scacchiera* before = board;
        const Scacchiera record = *board;
        i32 success = 0;
        static_cast<void>(probeWdl(success));
        static_cast<void>(probeDtz(success));
        EXPECT_EQ(board, before);
        EXPECT_EQ(std::memcmp(board, &record, 54), 0);
    }
}

// ---- what no table holds --------------------------------------------------------------------------------------

namespace {

struct UnknownCase {
    const char* name;
    const char* fen;
};

constexpr UnknownCase unknownCases[] = {
    {"no king at all", "8/8/8/8/8/8/Q7/8 w - -"},
    {"no black king", "8/8/8/8/8/3K4/Q7/8 w - -"},
    {"two white kings", "8/8/3k4/8/8/3K4/K7/8 w - -"},
    {"two white kings and a queen", "8/8/3k4/8/8/3K4/KQ6/8 w - -"},
    {"two kings a side", "k7/8/3k4/8/8/3K4/K7/8 w - -"},
    {"a white pawn on the last rank", "P7/8/3k4/8/8/3K4/8/8 w - -"},
    {"a white pawn on the first rank", "8/8/3k4/8/8/3K4/8/P7 w - -"},
    {"a black pawn on its first rank", "p7/8/3k4/8/8/3K4/8/8 b - -"},
    {"kings side by side", "8/8/8/3k4/3K4/8/Q7/8 w - -"},
    {"kings side by side on a corner", "8/8/8/8/8/8/1k6/K1Q5 b - -"},
    {"seven men", "8/8/3k4/8/3qrb2/3K4/QR6/8 w - -"},
    {"a material without table", "8/8/3k1r2/8/8/3K4/Q7/8 b - -"},
};

}  // namespace

TEST(Probe, FailsForWhatNoTableHolds) {
    tables::registerFolder(committed);
    for (const UnknownCase& c : unknownCases) {
        SCOPED_TRACE(c.name);
        const tables::Values values = tables::probe(c.fen);
        EXPECT_FALSE(values.wdlKnown);
        EXPECT_FALSE(values.dtzKnown);
        EXPECT_EQ(values.wdl, 0);
        EXPECT_EQ(values.dtz, 0);
        i32 success = 1;
        EXPECT_EQ(probeCaptures(-2, 2, success), 0);
        EXPECT_EQ(success, 0);
    }
}

TEST(Probe, WithoutTablesKnowsBareKingsAlone) {
    tables::registerFolder("/nowhere");
    const tables::Values kings = tables::probe("8/8/3k4/8/8/3K4/8/8 b - -");
    EXPECT_TRUE(kings.wdlKnown && kings.dtzKnown);
    EXPECT_EQ(kings.wdl, 0);
    EXPECT_FALSE(tables::probe("8/8/3k4/8/8/3K4/Q7/8 w - -").wdlKnown);
}

TEST(Probe, CountsTheCapturesItMakes) {
    tables::registerFolder("/nowhere");
    setUpPosition("8/8/8/8/8/2k5/2Q5/K7 b - -");  // one capture leads to bare kings
    SearchInfo.nodes = 0;
    i32 success = 0;
    EXPECT_EQ(probeWdl(success), 0);
    EXPECT_EQ(success, 0);
    EXPECT_EQ(SearchInfo.nodes, 1u);
}

// ---- captures -------------------------------------------------------------------------------------------------

TEST(Probe, TellsThatACaptureDecides) {
    tables::registerFolder(committed);
    setUpPosition("8/8/8/8/8/2k5/R6r/K7 w - -");
    i32 success = 1;
    EXPECT_EQ(probeCaptures(-2, 2, success), 2);
    EXPECT_EQ(success, 2);
}

TEST(Probe, ReturnsAlphaWhenTheTableIsNotBetter) {
    tables::registerFolder(committed);
    setUpPosition("8/8/3k4/8/8/3K4/B7/8 w - -");
    i32 success = 1;
    EXPECT_EQ(probeCaptures(1, 2, success), 1);
    EXPECT_EQ(success, 2);
    EXPECT_EQ(probeCaptures(0, 2, success), 0);
    EXPECT_EQ(success, 1);
    EXPECT_EQ(probeCaptures(-2, 2, success), 0);
    EXPECT_EQ(success, 1);
}

namespace {

// A table of three rooks against one that knows a single value for each side to move.
void writeRookTable(const TableFolder& folder, u8 rooksToMove, u8 rookToMove) {
    const std::string order = orderOf({0, KING, 8 + KING, 8 + ROOK, ROOK, ROOK, ROOK});
    folder.write(
        "KRRRvKR.rtbw",
        writer::fileBytes(
            {writer::wdlMagic, 1, {order}, {constantPlan(rooksToMove), constantPlan(rookToMove)}, {}}));
    tables::registerFolder(folder.path.string());
}

// White takes the knight and is in the table then; one man more does not let him get there at once.
constexpr const char* sevenMen = "6rk/8/8/8/3K4/n7/8/RRR5 w - -";
constexpr const char* eightMen = "6rk/8/8/8/3K4/n7/n7/RRR5 w - -";

}  // namespace

TEST(Probe, KnowsSevenMenByACaptureThatWins) {
    const TableFolder folder;
    writeRookTable(folder, storedWin, storedLoss);
    for (const std::string& fen : {std::string(sevenMen), swappedFen(sevenMen)}) {
        SCOPED_TRACE(fen);
        const tables::Values values = tables::probe(fen);
        EXPECT_TRUE(values.wdlKnown && values.dtzKnown);
        EXPECT_EQ(values.wdl, 2);
        EXPECT_EQ(values.dtz, 1);
    }
}

TEST(Probe, DoesNotKnowSevenMenWhoseCapturesDoNotWin) {
    const TableFolder folder;
    for (const u8 afterCapture : {storedDraw, storedWin}) {
        writeRookTable(folder, storedDraw, afterCapture);
        const tables::Values values = tables::probe(sevenMen);
        EXPECT_FALSE(values.wdlKnown || values.dtzKnown);
        EXPECT_EQ(values.wdl, 0);
        EXPECT_EQ(values.dtz, 0);
    }
}

TEST(Probe, SearchesNoCapturesOfEightMen) {
    const TableFolder folder;
    writeRookTable(folder, storedWin, storedLoss);
    setUpPosition(eightMen);
    SearchInfo.nodes = 0;
    i32 success = 1;
    EXPECT_EQ(probeWdl(success), 0);
    EXPECT_EQ(success, 0);
    EXPECT_EQ(SearchInfo.nodes, 0u);
}

TEST(Probe, LooksUpNoMoreThanSixMen) {
    tables::registerFolder(committed);
    ASSERT_TRUE(tables::probe("8/8/3k4/8/8/8/8/K5R1 w - -").wdlKnown);
    // the same key: it counts men by sixteens
    setUpPosition("NNNNNNNN/NNNNNNNN/3k4/8/8/8/8/K5R1 w - -");
    ASSERT_NE(lookupTable(materialKeyOfPosition(0)), nullptr);
    i32 success = 1;
    EXPECT_EQ(probeWdlTable(success), 0);
    EXPECT_EQ(success, 0);
}

TEST(Probe, LooksUpNoIndexBehindTheTable) {
    tables::registerFolder(committed);
    constexpr const char* fen = "8/8/3k4/8/8/8/8/K5R1 w - -";
    ASSERT_TRUE(tables::probe(fen).wdlKnown);
    tbEntry* entry = lookupTable(materialOfName("KRvK").key);
    ASSERT_NE(entry, nullptr);
    TableSide& side = entry->file->side[0];
    const std::map<i32, i32> squares = {{KING, 0}, {8 + KING, 43}, {ROOK, 6}};
    TablePos pos{};
    std::transform(side.pieces.begin(), side.pieces.begin() + 3, pos.begin(),
                   [&squares](u8 piece) { return squares.at(piece); });
    const u64 idx = indexPieces(entry->material, side, pos);
    // No board of the table's material leads there: the size is made to lie.
    side.tbSize = idx + 1;
    EXPECT_TRUE(tables::probe(fen).wdlKnown);
    side.tbSize = idx;
    EXPECT_FALSE(tables::probe(fen).wdlKnown);
    tables::registerFolder(committed);
}

// ---- en passant -----------------------------------------------------------------------------------------------

TEST(Probe, TakesEnPassantIntoAccount) {
    if (tables::realFolder().empty()) {
        GTEST_SKIP() << "needs TARVELMON_SYZYGY_PATH";
    }
    tables::registerFolder(tables::realFolder());
    const tables::Values wins = tables::probe("8/8/8/3pP3/8/8/8/K1k5 w - d6");
    EXPECT_EQ(wins.wdl, 2);
    EXPECT_EQ(wins.dtz, 1);
    // a right that no pawn can use changes nothing
    const tables::Values unusable = tables::probe("8/8/8/3p4/8/1K6/4P3/2k5 w - d6");
    const tables::Values without = tables::probe("8/8/8/3p4/8/1K6/4P3/2k5 w - -");
    EXPECT_EQ(unusable.wdl, without.wdl);
    EXPECT_EQ(unusable.dtz, without.dtz);
}

namespace {

// A WDL file of one value for each side to move.
std::string constantTable(const std::string& order, u8 firstSide, u8 secondSide) {
    writer::FilePlan plan{writer::wdlMagic, 3, {order, order, order, order}, {}, {}};
    for (i32 f = 0; f < 4; ++f) {
        plan.streams.push_back(constantPlan(firstSide));
        plan.streams.push_back(constantPlan(secondSide));
    }
    return writer::fileBytes(plan);
}

// The tables say: a draw before the capture en passant; after it `afterCapture` for the side with one pawn, which is to
// move then.
void writeEpTables(const TableFolder& folder, u8 afterCapture) {
    folder.write("KPPvKPP.rtbw",
                 constantTable(orderOf({0, 1, PAWN, PAWN, 8 + PAWN, 8 + PAWN, KING, 8 + KING}), storedDraw,
                               storedDraw));
    folder.write("KPPvKP.rtbw", constantTable(orderOf({0, 1, 8 + PAWN, PAWN, PAWN, KING, 8 + KING}),
                                              storedDraw, afterCapture));
    folder.write("KPvKP.rtbw",
                 constantTable(orderOf({0, 1, PAWN, 8 + PAWN, KING, 8 + KING}), storedDraw, storedDraw));
    folder.write("KPPvK.rtbw",
                 constantTable(orderOf({0, PAWN, PAWN, KING, 8 + KING}), storedDraw, storedDraw));
    for (const char* name : {"KPvK.rtbw", "KQvK.rtbw", "KRvK.rtbw", "KBvK.rtbw", "KNvK.rtbw"}) {
        folder.write(name, realBytes(name));
    }
    tables::registerFolder(folder.path.string());
}

// Black's king and pawns cannot move but for the capture on c3; then with a free king.
constexpr const char* onlyEnPassant = "8/8/8/8/1pP5/1P6/p1K5/k7 b - c3";
constexpr const char* alsoOtherMoves = "8/8/8/8/1pP5/1P6/p3K3/k7 b - c3";

}  // namespace

TEST(Probe, GivesTheValueOfAnEnPassantCaptureThatIsTheOnlyMove) {
    const TableFolder folder;
    writeEpTables(folder, storedWin);
    const tables::Values forced = tables::probe(onlyEnPassant);
    EXPECT_TRUE(forced.wdlKnown && forced.dtzKnown);
    EXPECT_EQ(forced.wdl, -2);
    EXPECT_EQ(forced.dtz, -1);
    const tables::Values free = tables::probe(alsoOtherMoves);
    EXPECT_TRUE(free.wdlKnown && free.dtzKnown);
    EXPECT_EQ(free.wdl, 0);
    EXPECT_EQ(free.dtz, 0);
}

TEST(Probe, TakesAnEnPassantCaptureThatIsBetterThanTheTable) {
    const TableFolder folder;
    writeEpTables(folder, storedLoss);
    for (const char* fen : {onlyEnPassant, alsoOtherMoves}) {
        setUpPosition(fen);
        const tables::Values better = tables::probe(fen);
        EXPECT_TRUE(better.wdlKnown && better.dtzKnown);
        // the capture can be answered by a capture that draws
        EXPECT_EQ(better.wdl, fen == onlyEnPassant ? 0 : 2);
        EXPECT_EQ(better.dtz, fen == onlyEnPassant ? 0 : 1);
    }
}

TEST(Probe, TakesADoubleStepForOneThatCannotBeCaptured) {
    if (tables::realFolder().empty()) {
        GTEST_SKIP() << "needs TARVELMON_SYZYGY_PATH";
    }
    tables::registerFolder(tables::realFolder());
    // g2g4 wins but for the capture on g3: the distance is 1 all the same
    EXPECT_EQ(tables::probe("8/8/8/8/1k5p/8/6P1/6K1 w - -").dtz, 1);
    EXPECT_EQ(tables::probe("8/8/8/8/1k4Pp/8/8/6K1 b - g3").wdl, 0);
}
