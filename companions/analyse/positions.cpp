// Lines wait in a queue from when they are read until they and all before them are done.
#include "positions.h"

#include "epd.h"
#include "file_checks.h"
#include "line_source.h"
#include "output.h"
#include "page.h"
#include "suite.h"
#include "worker_pool.h"

#include <cmath>
#include <deque>
#include <fstream>
#include <nlohmann/json.hpp>
#include <unordered_map>

using nlohmann::json;

namespace {

struct Entry {
    InputLine input;
    EpdLine epd;
    SuiteTask task;
    bool done;
    bool usable;         // there is an answer
    std::string output;  // once done, with the end of the line
    SuiteResult result;
    bool hasResult;
};

struct Work {
    const Options& options;
    LineSource source;
    Progress progress{};
    std::deque<Entry> queue{};
    u64 firstInQueue = 0;                                    // number of the queue's first entry
    std::vector<u64> entryOf{};                              // by the number of the position handed out
    std::unordered_map<std::string, std::string> earlier{};  // output lines by what they answer
    std::vector<SuiteResult> results{};
    u64 usable = 0;
    u64 faulty = 0;
    bool outputHolds = true;
};

}  // namespace

// ---- what goes out --------------------------------------------------------------------------------------------

static std::string jsonLine(const json& object) {
    return object.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

static void putScore(json& object, const Analysis& analysis) {
    const i32 mate = mateDistance(analysis.score);
    if (mate != 0 || analysis.standstill == Standstill::checkmate) {
        object["mate"] = mate;
    } else {
        object["score"] = analysis.score;
    }
}

static std::string analysedJson(const Entry& entry, const Analysis& analysis, const Options& options) {
    json object{{"epd", plainEpd(entry.epd)},
                {"depth", analysis.depth},
                {"nodes", analysis.nodes},
                {"pv", analysis.line}};
    putScore(object, analysis);
    if (!analysis.line.empty()) {
        object["best"] = analysis.line.front();
    }
    if (options.withTime) {
        object["seconds"] = analysis.milliseconds / 1000.0;
    }
    if (options.suite) {
        object["solved"] = entry.result.depth > 0;
        object["solved_depth"] = entry.result.depth;
        if (options.withTime && entry.result.depth > 0) {
            object["solved_seconds"] = entry.result.milliseconds / 1000.0;
        }
    }
    return jsonLine(object);
}

static std::string faultLine(const Entry& entry, const std::string& fault, const Options& options) {
    if (options.json) {
        return jsonLine({{"error", fault}, {"line", entry.input.text}});
    }
    return "# " + fault + ": " + entry.input.text + "\n";
}

static void finishFaulty(Work& work, Entry& entry, const std::string& fault) {
    complain(work.progress, entry.input.file + ":" + std::to_string(entry.input.number) + ": " + fault);
    entry.output = faultLine(entry, fault, work.options);
    entry.done = true;
}

static void finishAnalysed(Work& work, Entry& entry, const Analysis& analysis) {
    const Options& options = work.options;
    std::vector<Operation> more;
    if (options.suite) {
        entry.result = judge(entry.epd, entry.task, analysis);
        entry.hasResult = true;
        more.push_back(resultOperation(entry.result, options.withTime));
    }
    entry.output = options.json ? analysedJson(entry, analysis, options)
                                : analysedEpd(entry.epd, analysis, options.withTime, more) + "\n";
    entry.done = true;
    entry.usable = true;
}

// Writes whatever is done at the queue's head.
static bool writeReady(Work& work) {
    std::string text;
    while (!work.queue.empty() && work.queue.front().done) {
        const Entry& entry = work.queue.front();
        text += entry.output;
        ++(entry.usable ? work.usable : work.faulty);
        if (entry.hasResult) {
            work.results.push_back(entry.result);
        }
        work.queue.pop_front();
        ++work.firstInQueue;
        ++work.progress.done;
    }
    work.outputHolds = work.outputHolds && writeOut(text);
    return work.outputHolds;
}

// ---- an earlier output ----------------------------------------------------------------------------------------

// Mates and stalemates need no depth.
static bool isDeepEnough(i64 depth, bool hasLine, const Options& options) {
    return !hasLine || isAnswerTo(options.limits, depth);
}

static bool readEarlierEpd(const std::string& text, const Options& options, std::string& key) {
    const EpdLine line = readEpd(text);
    const std::vector<std::string> depth = operandsOf(line, "acd");
    const bool isNumber = depth.size() == 1 && depth.front().size() < 6 && !depth.front().empty() &&
                          depth.front().find_first_not_of("0123456789") == std::string::npos;
    SuiteResult result;
    if (!line.fault.empty() || !isNumber || (options.suite && !readSuiteResult(line, result))) {
        return false;
    }
    key = plainEpd(line);
    return isDeepEnough(std::stoll(depth.front()), !operandsOf(line, "pv").empty(), options);
}

static bool readEarlierJson(const std::string& text, const Options& options, std::string& key) {
    const json object = json::parse(text, nullptr, false);
    if (!object.is_object() || !object.contains("epd") || !object["epd"].is_string() ||
        (options.suite && !object.value("solved_depth", json()).is_number_integer())) {
        return false;
    }
    key = object["epd"];
    const json depth = object.value("depth", json());
    const json line = object.value("pv", json());
    return depth.is_number_integer() && line.is_array() && isDeepEnough(depth, !line.empty(), options);
}

// Whole lines alone: the last may have been cut off.
static std::string readEarlier(Work& work) {
    std::string text;
    std::string fault = readWhole(work.options.resumeFile, text);
    std::size_t begin = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
        const std::string line = text.substr(begin, end - begin);
        begin = end + 1;
        std::string key;
        if (!isCommentLine(line) && (work.options.json ? readEarlierJson(line, work.options, key)
                                                       : readEarlierEpd(line, work.options, key))) {
            work.earlier[key] = line + "\n";
        }
    }
    return fault;
}

static SuiteResult earlierResult(const Entry& entry, const Options& options) {
    SuiteResult result{};
    if (!options.json) {
        static_cast<void>(readSuiteResult(readEpd(entry.output), result));
        return result;
    }
    const json object = json::parse(entry.output, nullptr, false);
    const std::vector<std::string> id = operandsOf(entry.epd, "id");
    const json told = object.value("solved_seconds", json());
    const double seconds = told.is_number() ? told.get<double>() : -1;
    return {id.empty() ? "" : id.front(), object.value("solved_depth", 0),
            seconds < 0 ? -1 : static_cast<i32>(std::lround(seconds * 1000))};
}

static bool takeEarlier(Work& work, Entry& entry) {
    const auto found = work.earlier.find(plainEpd(entry.epd));
    if (found == work.earlier.end()) {
        return false;
    }
    entry.output = found->second;
    entry.done = true;
    entry.usable = true;
    if (work.options.suite) {
        entry.result = earlierResult(entry, work.options);
        entry.hasResult = true;
    }
    return true;
}

// ---- what comes in --------------------------------------------------------------------------------------------

// Reads a line into the queue. True if it has to be searched.
static bool takeLine(Work& work, InputLine& line) {
    if (isCommentLine(line.text)) {
        if (work.progress.total > 0) {
            --work.progress.total;
        }
        return false;
    }
    Entry& entry = work.queue.emplace_back(Entry{std::move(line), {}, {}, false, false, {}, {}, false});
    entry.epd = readEpd(entry.input.text);
    std::string fault = entry.epd.fault;
    if (fault.empty() && work.options.suite) {
        entry.task = readSuiteTask(entry.epd);
        fault = entry.task.fault;
    }
    if (!fault.empty()) {
        finishFaulty(work, entry, fault);
        return false;
    }
    return !takeEarlier(work, entry);
}

static NextPosition nextPosition(Work& work, Position& position) {
    for (;;) {
        InputLine line;
        const LineState state = nextLine(work.source, line);
        if (state != LineState::given) {
            return state == LineState::end || !work.outputHolds ? NextPosition::noMore : NextPosition::notYet;
        }
        if (takeLine(work, line)) {
            work.entryOf.push_back(work.firstInQueue + work.queue.size() - 1);
            position = {work.queue.back().epd.fen, {}};
            return NextPosition::given;
        }
        if (!writeReady(work)) {
            return NextPosition::noMore;
        }
    }
}

static bool takeAnswer(Work& work, u64 number, const Analysis& analysis) {
    Entry& entry = work.queue[work.entryOf[number] - work.firstInQueue];
    ++work.progress.searched;
    if (analysis.fault.empty()) {
        finishAnalysed(work, entry, analysis);
    } else {
        finishFaulty(work, entry, analysis.fault);
    }
    return writeReady(work);
}

// ---- the whole ------------------------------------------------------------------------------------------------

static i32 statusOf(const Work& work, PoolEnd end) {
    if (end != PoolEnd::done) {
        return statusOfEnd(end, work.progress);
    }
    if (!work.outputHolds) {
        return 1;
    }
    if (!work.source.fault.empty()) {
        complain(work.progress, work.source.fault);
        return 1;
    }
    if (work.usable == 0) {
        complain(work.progress, "tarvelmon-analyse: there is no position in the input");
        return 1;
    }
    return 0;
}

static std::string table(const Work& work) {
    if (!work.options.json) {
        return suiteTable(work.results);
    }
    u64 solved = 0;
    for (const SuiteResult& result : work.results) {
        solved += result.depth > 0 ? 1 : 0;
    }
    return jsonLine({{"positions", work.results.size()}, {"solved", solved}});
}

static bool pageIsWritten(const Work& work) {
    if (work.options.htmlFile.empty()) {
        return true;
    }
    const std::string fault = writePage(work.options.htmlFile, suitePage(work.results));
    if (!fault.empty()) {
        complain(work.progress, fault);
    }
    return fault.empty();
}

i32 analysePositions(const Options& options) {
    Work work{options, {options.files, options.lines}};
    work.progress = startProgress(0);
    std::string fault = checkFiles(options);
    if (fault.empty() && !options.resumeFile.empty()) {
        fault = readEarlier(work);
    }
    if (!fault.empty()) {
        complain(work.progress, fault);
        return 1;
    }
    work.progress.total = countLines(options.files, options.lines);
    const PoolEnd end =
        runPool({options.jobs, options.hashMegabytes, options.limits,
                 [&](Position& position) { return nextPosition(work, position); },
                 [&] { return descriptorOf(work.source); },
                 [&](u64 number, const Analysis& analysis) { return takeAnswer(work, number, analysis); },
                 [&] { showProgress(work.progress, false); }});
    endProgress(work.progress);
    const i32 status = statusOf(work, end);
    if (status != 0 || !options.suite) {
        return status;
    }
    return writeOut(table(work)) && pageIsWritten(work) ? 0 : 1;
}
