// Charts and boards as SVG, to stand in a page, which gives the colours; a chart also as a file of its own.
#pragma once

#include "platform/bits.h"

#include <string>
#include <string_view>
#include <vector>

struct ChartPoint {
    double x;
    double y;
    std::string label;  // shown where a pointer rests on it
    bool marked;        // drawn as a dot
};

/// Points by growing x, and a name that stands at the last of them; empty: none.
struct ChartLine {
    std::string name;
    std::vector<ChartPoint> points;
};

/// A tick and what stands at it.
struct ChartTick {
    double at;
    std::string text;
};

struct Chart {
    std::string title;  // for who cannot see it
    std::string xName;
    std::string yName;
    std::vector<ChartLine> lines;
    std::vector<ChartTick> xTicks;
    std::vector<ChartTick> yTicks;
    double xLow;
    double xHigh;  // above xLow
    double yLow;
    double yHigh;  // above yLow
    bool steps;    // level from each point to the next
    bool filled;   // between the first line and 0
};

/// The chart as it stands in a page that has chartStyle.
[[nodiscard]] std::string chartSvg(const Chart& chart);

/// The chart as a file of its own, light or dark as its reader's system is.
[[nodiscard]] std::string chartFile(const Chart& chart);

/// Colours of a page, light and dark, and how charts are drawn with them.
extern const char* const chartStyle;

/// A board seen from White, with the move from one square to another. `men` as menOf gives them.
[[nodiscard]] std::string boardSvg(std::string_view men, i32 from, i32 to, const std::string& title);

/// Ticks at round numbers, about so many.
[[nodiscard]] std::vector<ChartTick> roundTicks(double low, double high, i32 about);

/// Text with what has a meaning in HTML escaped. Bytes that are no UTF-8 become question marks.
[[nodiscard]] std::string escaped(std::string_view text);
