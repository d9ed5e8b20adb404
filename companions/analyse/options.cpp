// The command line, read by a library.
#include "options.h"

#include "frontend/version.h"

#include <unistd.h>
#include <CLI/CLI.hpp>
#include <cmath>
#include <limits>

constexpr i32 usageStatus = 2;
constexpr i32 defaultDepth = 12;
constexpr i32 jobsMax = 1024;
constexpr i32 hashMax = 65536;
constexpr double longestSeconds = 1e6;

static i32 coreCount() {
    return static_cast<i32>(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN)));
}

// "7", "7-12", "7-" and "-12". False if it is none of them.
static bool readRange(const std::string& text, LineRange& range) {
    range = {1, std::numeric_limits<u64>::max()};
    if (text.empty()) {
        return true;
    }
    const std::size_t dash = text.find('-');
    const auto isNumber = [](const std::string& digits) {
        return digits.size() < 19 && digits.find_first_not_of("0123456789") == std::string::npos;
    };
    const std::string first = text.substr(0, dash);
    const std::string last = dash == std::string::npos ? first : text.substr(dash + 1);
    if (!isNumber(first) || !isNumber(last) || (first.empty() && last.empty())) {
        return false;
    }
    range.first = first.empty() ? 1 : std::stoull(first);
    range.last = last.empty() ? range.last : std::stoull(last);
    return range.first >= 1 && range.first <= range.last;
}

namespace {

// What the library reads and the program then checks.
struct RawOptions {
    double seconds = 0;
    double threshold = 0.5;
    std::string lines;
    bool acs = false;
};

}  // namespace

static void describe(CLI::App& app, Options& options, RawOptions& raw) {
    app.set_version_flag("--version", std::string("tarvelmon-analyse ") + engineVersion);
    app.add_option("FILE", options.files, "Files to read; none, or \"-\": standard input");
    app.add_option("--depth", options.limits.depth,
                   "Search each position to this depth; 12 without any limit")
        ->check(CLI::Range(1, deepestDepth));
    app.add_option("--time", raw.seconds, "Search each position for so many seconds")
        ->check(CLI::Range(0.01, longestSeconds));
    app.add_option("--nodes", options.limits.nodes, "Search each position for about so many nodes")
        ->check(CLI::Range(u64{1}, u64{1} << 62));
    app.add_option("--jobs,-j", options.jobs, "Processes that search; as many as there are cores")
        ->check(CLI::Range(1, jobsMax));
    app.add_option("--hash", options.hashMegabytes, "Hash table of each process in MB; 64")
        ->check(CLI::Range(1, hashMax));
    app.add_option("--lines", raw.lines,
                   "Only these lines of the input (A-B, A- or -B); with --pgn these games");
    const auto isName = [](const std::string& text) {
        return std::string(text.empty() ? "no name of a file" : "");
    };
    app.add_option("--resume", options.resumeFile,
                   "An earlier output: what stands there is not searched again")
        ->check(isName);
    app.add_flag("--pgn", options.pgn, "The input is games, which are annotated move by move");
    app.add_option("--threshold", raw.threshold,
                   "With --pgn: loss in pawns from which a better line is told; 0.5")
        ->check(CLI::Range(0.05, 100.0));
    app.add_flag("--json", options.json, "One JSON object a line");
    app.add_flag("--acs", raw.acs, "Write the seconds also where no clock limits the search");
    app.add_option("--html", options.htmlFile,
                   "With --pgn or --suite: write a page of charts and tables to this file")
        ->check(isName);
    app.add_flag("--suite", options.suite, "Judge bm and am, and end with a table");
}

static bool refuse(const std::string& fault, i32& status) {
    std::fprintf(stderr, "tarvelmon-analyse: %s\nTry: tarvelmon-analyse --help\n", fault.c_str());
    status = usageStatus;
    return false;
}

static bool settle(Options& options, const RawOptions& raw, i32& status) {
    if (!readRange(raw.lines, options.lines)) {
        return refuse("--lines: \"" + raw.lines + "\" is no range such as 1-1000", status);
    }
    if (options.pgn && options.suite) {
        return refuse("--suite and --pgn do not go together", status);
    }
    if (!options.htmlFile.empty() && !options.pgn && !options.suite) {
        return refuse("--html needs --pgn or --suite", status);
    }
    if (!options.htmlFile.empty() && options.pgn && !options.resumeFile.empty()) {
        return refuse("--html and --resume do not go together with --pgn", status);
    }
    if (options.pgn && options.json && !options.resumeFile.empty()) {
        return refuse("--resume and --json do not go together with --pgn", status);
    }
    if (std::isnan(raw.seconds) || std::isnan(raw.threshold)) {
        return refuse("--time and --threshold are numbers", status);
    }
    options.limits.milliseconds = std::llround(raw.seconds * 1000);
    if (options.limits.depth == 0 && options.limits.milliseconds == 0 && options.limits.nodes == 0) {
        options.limits.depth = defaultDepth;
    }
    options.withTime = raw.acs || options.limits.milliseconds != 0;
    options.threshold = static_cast<i32>(std::lround(raw.threshold * 100));
    if (options.files.empty()) {
        options.files.emplace_back("-");
    }
    return true;
}

bool readOptions(int argc, char** argv, Options& options, i32& status) {
    options = {};
    options.jobs = std::min(coreCount(), jobsMax);
    options.hashMegabytes = 64;
    RawOptions raw;
    CLI::App app{"Analyses positions: reads FEN or EPD, writes EPD with what the search has found",
                 "tarvelmon-analyse"};
    describe(app, options, raw);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        status = app.exit(success);
        return false;
    } catch (const CLI::ParseError& error) {
        return refuse(error.what(), status);
    }
    return settle(options, raw, status);
}
