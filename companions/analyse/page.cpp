// Tables and charts of what has been found.
#include "page.h"

#include "chart.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

constexpr std::size_t boardsPerGame = 4;

// Beside chartStyle.
constexpr const char* style = R"(
:root { --light: #f0e6d2; --dark: #b58863; --moved: #d8c25a; --white: #ffffff; --black: #16120e; }
@media (prefers-color-scheme: dark) { :root { --light: #b9ab92; --dark: #75583f; --moved: #99852f; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 16px; max-width: 1240px; background: var(--page); color: var(--ink);
  font: 16px/1.5 system-ui, "DejaVu Sans", sans-serif; }
h1, h2, p, td, figcaption { overflow-wrap: anywhere; }
h1 { font-size: 1.5rem; line-height: 1.2; } h2 { font-size: 1.15rem; margin: 0 0 4px; line-height: 1.3; }
p { margin: 4px 0; } .soft { color: var(--soft); }
section { border-top: 1px solid var(--rule); padding: 20px 0; }
.sides { display: flex; flex-wrap: wrap; gap: 20px 32px; align-items: flex-start; }
.main { flex: 1 1 340px; max-width: 580px; min-width: 0; }
.boards { flex: 1 1 320px; max-width: 440px; display: grid; grid-template-columns: repeat(auto-fill, minmax(150px, 1fr)); gap: 16px; }
figure { margin: 0; } figcaption { font-size: .875rem; line-height: 1.35; margin-top: 4px; }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums; }
th, td { padding: 4px 8px 4px 0; text-align: right; border-bottom: 1px solid var(--rule); font-weight: normal; }
th { color: var(--soft); font-size: .8125rem; } th:first-child, td:first-child { text-align: left; }
svg { display: block; width: 100%; height: auto; }
.light { fill: var(--light); } .dark { fill: var(--dark); } .moved { fill: var(--moved); }
.board text { font: 17px "DejaVu Sans", "Segoe UI Symbol", "Apple Symbols", "Noto Sans Symbols2", sans-serif;
  stroke: var(--black); stroke-width: .5; }
.white { fill: var(--white); } .black { fill: var(--black); }
.way { stroke: var(--mark); stroke-width: 2; opacity: .8; stroke-linecap: round; }
)";

// ---- pieces of a page -----------------------------------------------------------------------------------------

static std::string pageOf(const std::string& title, const std::string& body) {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           escaped(title) + "</title>\n<style>" + chartStyle + style + "</style>\n</head>\n<body>\n<h1>" +
           escaped(title) + "</h1>\n" + body + "</body>\n</html>\n";
}

static std::string pawns(double centipawns) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", centipawns / 100);
    return text;
}

static std::string tableRow(const char* cell, const std::vector<std::string>& texts) {
    std::string row = "<tr>";
    for (const std::string& text : texts) {
        row += std::string("<") + cell + ">" + escaped(text) + "</" + cell + ">";
    }
    return row + "</tr>\n";
}

// ---- games ----------------------------------------------------------------------------------------------------

namespace {

struct SideLoss {
    i64 moves = 0;
    i64 loss = 0;
    i64 mistakes = 0;  // of twice the threshold
    i64 blunders = 0;  // of four times
};

}  // namespace

static SideLoss lossOfSide(const JudgedGame& game, bool white, i32 threshold) {
    SideLoss sum;
    for (const JudgedMove& move : game.moves) {
        if (move.white == white && move.known) {
            ++sum.moves;
            sum.loss += move.loss;
            sum.mistakes += move.loss >= 2 * threshold && move.loss < 4 * threshold ? 1 : 0;
            sum.blunders += move.loss >= 4 * threshold ? 1 : 0;
        }
    }
    return sum;
}

static std::string nameOr(const std::string& name, const char* otherwise) {
    return name.empty() || name == "?" ? otherwise : name;
}

static std::vector<std::string> lossRow(const std::string& name, const SideLoss& sum) {
    const std::string average =
        sum.moves == 0 ? "-" : pawns(static_cast<double>(sum.loss) / static_cast<double>(sum.moves));
    return {name, std::to_string(sum.moves), average, std::to_string(sum.mistakes),
            std::to_string(sum.blunders)};
}

static std::string lossTable(const JudgedGame& game, i32 threshold) {
    return "<table>\n" + tableRow("th", {"Player", "Moves", "Average loss", "Mistakes", "Blunders"}) +
           tableRow("td", lossRow(nameOr(game.white, "White"), lossOfSide(game, true, threshold))) +
           tableRow("td", lossRow(nameOr(game.black, "Black"), lossOfSide(game, false, threshold))) +
           "</table>\n";
}

static std::string scoreChart(const JudgedGame& game, i32 threshold) {
    const double last = static_cast<double>(std::max<std::size_t>(game.moves.size(), 2)) / 2;
    constexpr double edge = highestScore / 100.0;
    Chart chart{"Score by move, from White's side",
                "Move",
                "Pawns for White",
                {{}},
                roundTicks(0, last, 8),
                {},
                0,
                last,
                -edge,
                edge,
                false,
                true};
    for (const double tick : {-10.0, -5.0, 0.0, 5.0, 10.0}) {
        chart.yTicks.push_back({tick, (tick > 0 ? "+" : "") + std::to_string(static_cast<i32>(tick))});
    }
    for (std::size_t i = 0; i < game.moves.size(); ++i) {
        const JudgedMove& move = game.moves[i];
        if (move.score) {
            chart.lines.front().points.push_back({static_cast<double>(i + 1) / 2, *move.score / 100.0,
                                                  move.number + " " + move.san + ": " + pawns(*move.score),
                                                  move.loss >= 2 * threshold});
        }
    }
    return chartSvg(chart);
}

static std::string boardsOf(const JudgedGame& game, i32 threshold) {
    std::vector<const JudgedMove*> worst;
    for (const JudgedMove& move : game.moves) {
        if (move.loss >= threshold && !move.better.empty()) {
            worst.push_back(&move);
        }
    }
    std::ranges::stable_sort(worst, std::ranges::greater{}, &JudgedMove::loss);
    worst.resize(std::min(worst.size(), boardsPerGame));
    std::string boards;
    for (const JudgedMove* const move : worst) {
        const std::string said = move->number + " " + move->san;
        boards += "<figure>" + boardSvg(move->men, move->from, move->to, "Before " + said) + "<figcaption>" +
                  escaped(said) + " lost " + pawns(move->loss) + ". Better: " + escaped(move->better) +
                  "</figcaption></figure>\n";
    }
    return boards.empty() ? "" : "<div class=\"boards\">\n" + boards + "</div>\n";
}

static std::string gameSection(const JudgedGame& game, i32 threshold) {
    return "<section>\n<h2>" + escaped(nameOr(game.white, "White")) + " – " +
           escaped(nameOr(game.black, "Black")) + ", " + escaped(game.result) + "</h2>\n<p class=\"soft\">" +
           escaped(nameOr(game.event, "")) + "</p>\n<div class=\"sides\">\n<div class=\"main\">\n" +
           scoreChart(game, threshold) + lossTable(game, threshold) + "</div>\n" + boardsOf(game, threshold) +
           "</div>\n</section>\n";
}

std::string gamesPage(const std::vector<JudgedGame>& games, i32 threshold) {
    std::string body = "<p class=\"soft\">Losses are in pawns. A mistake loses " + pawns(2 * threshold) +
                       " or more, a blunder " + pawns(4 * threshold) + "; orange dots are both.</p>\n";
    for (const JudgedGame& game : games) {
        body += gameSection(game, threshold);
    }
    return pageOf(std::to_string(games.size()) + (games.size() == 1 ? " game" : " games"), body);
}

// ---- suites ---------------------------------------------------------------------------------------------------

static std::string secondsShown(i32 milliseconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", milliseconds / 1000.0);
    return milliseconds < 0 ? "-" : text;
}

static std::string solvedChart(const std::vector<SuiteResult>& results) {
    std::vector<SuiteResult> solved;
    std::ranges::copy_if(results, std::back_inserter(solved), [](const SuiteResult& result) {
        return result.depth > 0 && result.milliseconds >= 0;
    });
    std::ranges::stable_sort(solved, {}, &SuiteResult::milliseconds);
    const double longest = std::max(0.01, solved.empty() ? 0 : solved.back().milliseconds / 1000.0);
    const double all = static_cast<double>(std::max<std::size_t>(results.size(), 1));
    Chart chart{"Positions solved by time",
                "Seconds",
                "Solved",
                {{"", {{0, 0, "0 s: 0", false}}}},
                roundTicks(0, longest, 5),
                roundTicks(0, all, 4),
                0,
                longest * 1.02,
                0,
                all,
                true,
                true};
    for (std::size_t i = 0; i < solved.size(); ++i) {
        chart.lines.front().points.push_back(
            {solved[i].milliseconds / 1000.0, static_cast<double>(i + 1),
             secondsShown(solved[i].milliseconds) + " s: " + std::to_string(i + 1) + ", " + solved[i].id,
             false});
    }
    return chartSvg(chart);
}

std::string suitePage(const std::vector<SuiteResult>& results) {
    const auto solved =
        std::ranges::count_if(results, [](const SuiteResult& result) { return result.depth > 0; });
    std::string table = "<table>\n" + tableRow("th", {"Position", "Depth", "Seconds"});
    for (const SuiteResult& result : results) {
        const bool isSolved = result.depth > 0;
        table += tableRow("td", {result.id, isSolved ? std::to_string(result.depth) : "not solved",
                                 isSolved ? secondsShown(result.milliseconds) : "-"});
    }
    return pageOf("Solved " + std::to_string(solved) + " of " + std::to_string(results.size()),
                  "<section class=\"sides\">\n<div class=\"main\">\n" + solvedChart(results) +
                      "</div>\n<div class=\"main\">\n" + table + "</table>\n</div>\n</section>\n");
}

// ---- files ----------------------------------------------------------------------------------------------------

std::string writePage(const std::string& file, const std::string& page) {
    errno = 0;
    std::ofstream output(file, std::ios::binary | std::ios::trunc);
    output << page;
    output.close();
    return output ? "" : file + ": " + std::strerror(errno);
}
