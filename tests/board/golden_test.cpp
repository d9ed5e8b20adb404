// Generators, exchange values and user moves against the golden lists, line by line.
#include "board_support.h"
#include "search/ordering.h"
#include "support/test_data.h"

#include <cstdarg>

static std::string format(const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    char text[400];
    std::vsnprintf(text, sizeof text, pattern, arguments);
    va_end(arguments);
    return text;
}

using Lines = std::vector<std::string>;

static std::string entry(Mossa m) {
    return format("  %d %d %d %d %s", moveKind(m), moveFrom(m), moveTo(m), movePromo(m), textOf(m).c_str());
}

static void show(Lines& lines, const char* name, const MoveList& list) {
    lines.push_back(format("%s %d", name, list.count));
    for (i32 i = 0; i < list.count; ++i) {
        lines.push_back(entry(list.entries[i].move) + format(" %d", list.entries[i].score));
    }
}

static void show(Lines& lines, const char* name, const QuietList& list) {
    lines.push_back(format("%s %d", name, list.count));
    for (i32 i = 0; i < list.count; ++i) {
        lines.push_back(entry(list.entries[i]));
    }
}

static Lines allLists() {
    Lines lines;
    lines.push_back(format("incheck %016llx", static_cast<unsigned long long>(inCheck())));
    lines.push_back(format("leftincheck %016llx", static_cast<unsigned long long>(leftInCheck())));
    MoveList captures;
    QuietList quiets;
    genCaptures(captures);
    show(lines, "genCaptures", captures);
    genCapturesNoEp(captures);
    show(lines, "genCapturesNoEp", captures);
    genQuiets(quiets);
    show(lines, "genQuiets", quiets);
    genPieceQuiets(quiets);
    show(lines, "genPieceQuiets", quiets);
    genPawnQuiets(captures);
    show(lines, "genPawnQuiets", captures);
    genChecks(quiets);
    show(lines, "genChecks", quiets);
    if (inCheck() != 0) {
        genEvasions(inCheck(), captures, quiets);
        show(lines, "genEvasions captures", captures);
        show(lines, "genEvasions quiets", quiets);
    }
    captures.count = 0;
    legalCaptures(captures);
    show(lines, "legalCaptures", captures);
    RootList root;
    i32 count = 0;
    rootMoves(root, count);
    lines.push_back(format("rootMoves %d", count));
    for (i32 i = 0; i < count; ++i) {
        lines.push_back(entry(root[i].move));
    }
    return lines;
}

static std::string exchange(Mossa m) {
    SearchInfo.nodes = 0;
    const i32 value = see(m);
    const u32 nodes = SearchInfo.nodes;
    SearchInfo.nodes = 0;
    const i32 losing = seeIsLosing(m);
    return entry(m) + format(" see %d (%u) losing %d (%u)", value, nodes, losing, SearchInfo.nodes);
}

static Lines allExchanges() {
    Lines lines;
    MoveList captures;
    genCaptures(captures);
    lines.push_back(format("captures %d", captures.count));
    for (i32 i = 0; i < captures.count; ++i) {
        lines.push_back(exchange(captures.entries[i].move));
    }
    QuietList checks;
    genChecks(checks);
    lines.push_back(format("checks %d", checks.count));
    for (i32 i = 0; i < checks.count; ++i) {
        lines.push_back(exchange(checks.entries[i]));
    }
    return lines;
}

// Compares what `make` says of each position of a list with what the list says of it.
static void compareList(const char* name, Lines (*make)()) {
    const Lines golden = linesOf(testDataPath(std::string("golden/") + name));
    ASSERT_GT(golden.size(), 900U);
    std::size_t at = 0;
    while (at < golden.size()) {
        ASSERT_EQ(golden[at].substr(0, 4), "fen ") << at;
        const std::string fen = golden[at].substr(4);
        SCOPED_TRACE(fen);
        setUpPosition(fen.c_str());
        ++at;
        for (const std::string& line : make()) {
            ASSERT_LT(at, golden.size());
            ASSERT_EQ(line, golden[at]) << "line " << at + 1;
            ++at;
        }
    }
}

TEST(GoldenBoard, GeneratorsGiveTheListsEntryByEntry) {
    compareList("moves.txt", allLists);
}

TEST(GoldenBoard, ExchangesHaveTheValuesAndNodes) {
    compareList("see.txt", allExchanges);
}

TEST(GoldenBoard, UserMovesGiveTheRecords) {
    const Lines inputs = linesOf(testDataPath("golden/user.in"));
    const Lines golden = linesOf(testDataPath("golden/user.txt"));
    ASSERT_EQ(inputs.size(), 2000U);
    ASSERT_EQ(golden.size(), inputs.size());
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        SCOPED_TRACE(inputs[i]);
        const std::size_t split = inputs[i].find(';');
        setUpPosition(inputs[i].substr(0, split).c_str());
        EngineOptions.lastUserMove = 0;
        const i32 result = parseUserMove(inputs[i].c_str() + split + 1);
        const Scacchiera& b = *board;
        using Hex = unsigned long long;
        const std::string line = format(
            "%d last=%u side=%016llx pbq=%016llx nbk=%016llx rqk=%016llx castle=%02x ep=%d rule50=%d "
            "flags=%02x psq=%d key=%016llx compute=%016llx easy=%d",
            result, EngineOptions.lastUserMove, Hex{b.side}, Hex{b.pbq}, Hex{b.nbk}, Hex{b.rqk},
            b.castleRights, b.epFile, b.rule50, b.stateFlags, b.psqScore, Hex{b.hashKey}, Hex{computeKey()},
            easyVal());
        ASSERT_EQ(line, golden[i]) << "line " << i + 1;
    }
}
