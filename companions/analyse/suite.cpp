// A position is solved from the depth on at which the search chose a right move for good.
#include "suite.h"

#include "board/board.h"
#include "frontend/session.h"
#include "move_reader.h"
#include "rules.h"
#include "words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

// ---- the task -------------------------------------------------------------------------------------------------

static std::string readMoves(const std::vector<std::string>& texts, std::vector<std::string>& moves) {
    for (const std::string& text : texts) {
        const ReadMove read = readMoveText(text);
        if (read.fault != nullptr) {
            return quotedWord(text) + " " + read.fault;
        }
        moves.push_back(moveTextOf(read.move, *board));
    }
    return {};
}

SuiteTask readSuiteTask(const EpdLine& line) {
    newGame();
    if (fenToBoard(line.fen.c_str()) == 0) {
        return {"is no position", {}, {}};
    }
    SuiteTask task;
    task.fault = readMoves(operandsOf(line, "bm"), task.best);
    if (task.fault.empty()) {
        task.fault = readMoves(operandsOf(line, "am"), task.avoid);
    }
    if (task.fault.empty() && task.best.empty() && task.avoid.empty()) {
        task.fault = "neither bm nor am";
    }
    return task;
}

// ---- the result -----------------------------------------------------------------------------------------------

static bool isRight(const SuiteTask& task, const std::string& move) {
    const bool isBest = task.best.empty() || std::ranges::find(task.best, move) != task.best.end();
    return isBest && std::ranges::find(task.avoid, move) == task.avoid.end();
}

static std::string idOf(const EpdLine& line) {
    const std::vector<std::string> operands = operandsOf(line, "id");
    return operands.empty() ? "" : operands.front();
}

SuiteResult judge(const EpdLine& line, const SuiteTask& task, const Analysis& analysis) {
    SuiteResult result{idOf(line), 0, -1};
    for (const Choice& choice : analysis.choices) {
        if (!isRight(task, choice.move)) {
            result.depth = 0;
        } else if (result.depth == 0) {
            result.depth = choice.depth;
            result.milliseconds = choice.milliseconds;
        }
    }
    return result;
}

static std::string secondsText(i32 milliseconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", milliseconds / 1000.0);
    return text;
}

Operation resultOperation(const SuiteResult& result, bool withTime) {
    if (result.depth == 0) {
        return {"c9", "\"not solved\""};
    }
    const std::string time = withTime ? " in " + secondsText(result.milliseconds) + " s" : "";
    return {"c9", "\"solved at depth " + std::to_string(result.depth) + time + "\""};
}

bool readSuiteResult(const EpdLine& line, SuiteResult& result) {
    const std::vector<std::string> operands = operandsOf(line, "c9");
    if (operands.empty()) {
        return false;
    }
    result = {idOf(line), 0, -1};
    i32 depth = 0;
    double seconds = 0;
    const i32 read = std::sscanf(operands.front().c_str(), "solved at depth %d in %lf s", &depth, &seconds);
    if (read >= 1) {
        result.depth = depth;
    }
    if (read == 2) {
        result.milliseconds = static_cast<i32>(std::lround(seconds * 1000));
    }
    return read >= 1 || operands.front() == "not solved";
}

// ---- the table ------------------------------------------------------------------------------------------------

static std::string row(std::size_t width, const std::string& id, const std::string& depth,
                       const std::string& time) {
    std::string text = "# " + id + std::string(width - std::min(width, id.size()), ' ');
    text += std::string(8 - std::min<std::size_t>(8, depth.size()), ' ') + depth;
    text += std::string(10 - std::min<std::size_t>(10, time.size()), ' ') + time;
    return text + "\n";
}

std::string suiteTable(const std::vector<SuiteResult>& results) {
    std::size_t width = 2;
    i64 solved = 0;
    for (const SuiteResult& result : results) {
        width = std::max(width, result.id.size());
        solved += result.depth > 0 ? 1 : 0;
    }
    std::string table = row(width, "id", "depth", "seconds");
    for (const SuiteResult& result : results) {
        const bool isSolved = result.depth > 0;
        table += row(width, result.id, isSolved ? std::to_string(result.depth) : "-",
                     isSolved && result.milliseconds >= 0 ? secondsText(result.milliseconds) : "-");
    }
    return table + "# solved " + std::to_string(solved) + " of " + std::to_string(results.size()) + "\n";
}
