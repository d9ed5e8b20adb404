// Lines that tarvelmon-analyse reads as positions: what it writes for one is the same position with the same operations.
#include "fuzz_support.h"
#include "suite.h"

#include <cstdlib>

static void must(bool holds) {
    if (!holds) {
        std::abort();
    }
}

static void writeAndReadBack(const EpdLine& line) {
    const Analysis analysis{{}, Standstill::none, 7, -19996, 1234, 5600, {"e4", "e5"}, {{3, 20, "e2e4"}}};
    const SuiteTask task = readSuiteTask(line);
    const SuiteResult result = judge(line, task, analysis);
    const std::string text = analysedEpd(line, analysis, true, {resultOperation(result, true)});
    const EpdLine again = readEpd(text);
    must(again.fault.empty() && again.fen == line.fen && plainEpd(again) == plainEpd(line));
    SuiteResult resultAgain{};
    must(readSuiteResult(again, resultAgain) && resultAgain.depth == result.depth);
    must(operandsOf(again, "pv") == analysis.line);
}

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
    const std::string_view input = textOf(data, size);
    const EpdLine line = readEpd(input.substr(0, input.find('\n')));
    if (line.fault.empty()) {
        writeAndReadBack(line);
    }
    return 0;
}
