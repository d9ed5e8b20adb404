// Draws the table by commit in a document such as docs/performance.md: each figure as a share of what it was in the first
// row. The argument is the document, the chart goes to standard output. Status 1 if the table cannot be read, 2 for a
// wrong command line.
#include "chart.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>

constexpr std::size_t textCells = 2;  // the commit, and what it did
constexpr double wholePercent = 100;

struct Row {
    std::string commit;
    std::string what;
    std::vector<double> figures;
};

struct Table {
    std::string fault;               // not empty: there is none; to stand behind the document's name
    std::vector<std::string> names;  // of the figures
    std::vector<Row> rows;
};

// ---- reading --------------------------------------------------------------------------------------------------

static std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// "| a | b |"; none if the line is no row.
static std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    if (!line.starts_with('|') || !line.ends_with('|')) {
        return cells;
    }
    std::istringstream rest(line.substr(1));
    for (std::string cell; std::getline(rest, cell, '|');) {
        cells.push_back(trimmed(cell));
    }
    return cells;
}

static bool readRow(const std::vector<std::string>& cells, std::size_t figures, Row& row) {
    if (cells.size() != textCells + figures) {
        return false;
    }
    row = {cells[0], cells[1], {}};
    for (std::size_t i = textCells; i < cells.size(); ++i) {
        double figure = 0;
        char more = 0;
        if (std::sscanf(cells[i].c_str(), "%lf%c", &figure, &more) != 1 || !std::isfinite(figure) ||
            figure <= 0) {
            return false;
        }
        row.figures.push_back(figure);
    }
    return true;
}

// The table whose head begins with "commit", up to the first line that is no row of a table.
static Table readTable(std::istream& text) {
    Table table;
    std::size_t number = 0;
    for (std::string line; std::getline(text, line);) {
        ++number;
        const std::vector<std::string> cells = cellsOf(line);
        if (table.names.empty()) {
            if (cells.size() > textCells && cells.front() == "commit") {
                table.names.assign(cells.begin() + textCells, cells.end());
            }
            continue;
        }
        if (cells.empty()) {
            break;
        }
        Row row;
        if (cells.front().starts_with("---")) {
            continue;
        }
        if (!readRow(cells, table.names.size(), row)) {
            table.fault = ":" + std::to_string(number) +
                          ": a row has a commit, what it did, and a figure for each column";
            return table;
        }
        table.rows.push_back(row);
    }
    if (table.rows.size() < 2) {
        table.fault = ": there is no table by commit with two rows";
    }
    return table;
}

// ---- drawing --------------------------------------------------------------------------------------------------

static std::string figureText(double figure) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", figure);
    return text;
}

static ChartLine lineOf(const Table& table, std::size_t column) {
    ChartLine line{table.names[column], {}};
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        const Row& row = table.rows[i];
        const double share = wholePercent * row.figures[column] / table.rows.front().figures[column];
        line.points.push_back(
            {static_cast<double>(i), share,
             row.commit + " " + row.what + ": " + line.name + " " + figureText(row.figures[column]), false});
    }
    return line;
}

static double highestOf(const std::vector<ChartLine>& lines) {
    double highest = wholePercent;
    for (const ChartLine& line : lines) {
        for (const ChartPoint& point : line.points) {
            highest = std::max(highest, point.y);
        }
    }
    return highest;
}

static Chart chartOf(const Table& table) {
    Chart chart{"Instructions by commit",
                "Commit",
                "% of the first row",
                {},
                {},
                {},
                0,
                static_cast<double>(table.rows.size() - 1),
                0,
                0,
                false,
                false};
    for (std::size_t column = 0; column < table.names.size(); ++column) {
        chart.lines.push_back(lineOf(table, column));
    }
    chart.yHigh = highestOf(chart.lines);
    chart.yTicks = roundTicks(0, chart.yHigh, 6);
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        chart.xTicks.push_back({static_cast<double>(i), table.rows[i].commit});
    }
    return chart;
}

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: performance_chart docs/performance.md >docs/performance.svg\n", stderr);
        return 2;
    }
    std::ifstream text(argv[1]);
    const Table table = readTable(text);
    if (!table.fault.empty()) {
        std::fprintf(stderr, "%s%s\n", argv[1], table.fault.c_str());
        return 1;
    }
    const bool written = std::fputs(chartFile(chartOf(table)).c_str(), stdout) >= 0;
    return written && std::fflush(stdout) == 0 ? 0 : 1;
}
