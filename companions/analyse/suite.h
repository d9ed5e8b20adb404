// Test suites: positions that name the best move (bm) or moves to avoid (am).
#pragma once

#include "epd.h"

#include <string>
#include <vector>

struct SuiteTask {
    std::string fault;              // not empty: a move named is none here
    std::vector<std::string> best;  // coordinates
    std::vector<std::string> avoid;
};

/// What a suite's line asks for; with neither bm nor am a fault.
[[nodiscard]] SuiteTask readSuiteTask(const EpdLine& line);

struct SuiteResult {
    std::string id;
    i32 depth;         // from which on the search kept to a right move; 0: it did not in the end
    i32 milliseconds;  // when that was; negative: not known
};

[[nodiscard]] SuiteResult judge(const EpdLine& line, const SuiteTask& task, const Analysis& analysis);

/// The same as an operation of the line, and back from one. A line without says nothing of its being solved.
[[nodiscard]] Operation resultOperation(const SuiteResult& result, bool withTime);
[[nodiscard]] bool readSuiteResult(const EpdLine& line, SuiteResult& result);

/// The table of a suite: lines that begin with "#".
[[nodiscard]] std::string suiteTable(const std::vector<SuiteResult>& results);
