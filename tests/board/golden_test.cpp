// Generators, exchange values and user moves against the golden lists, line by line.
#include "board_support.h"
#include "support/list_lines.h"
#include "support/test_data.h"

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
    compareList("moves.txt", generatedMoves);
}

TEST(GoldenBoard, ExchangesHaveTheValuesAndNodes) {
    compareList("see.txt", exchangeValues);
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
        const std::string line = answerToUserMove(inputs[i].c_str() + split + 1);
        ASSERT_EQ(line, golden[i]) << "line " << i + 1;
    }
}
