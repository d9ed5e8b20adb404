// Charts and boards as SVG, to stand in a page. Colours come from the page's style.
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

/// A tick and what stands at it.
struct ChartTick {
    double at;
    std::string text;
};

struct Chart {
    std::string title;  // for who cannot see it
    std::string xName;
    std::string yName;
    std::vector<ChartPoint> points;  // by growing x
    std::vector<ChartTick> xTicks;
    std::vector<ChartTick> yTicks;
    double xLow;
    double xHigh;  // above xLow
    double yLow;
    double yHigh;  // above yLow
    bool steps;    // level from each point to the next
    bool filled;   // between the line and 0
};

[[nodiscard]] std::string chartSvg(const Chart& chart);

/// A board seen from White, with the move from one square to another. `men` as menOf gives them.
[[nodiscard]] std::string boardSvg(std::string_view men, i32 from, i32 to, const std::string& title);

/// Ticks at round numbers, about so many.
[[nodiscard]] std::vector<ChartTick> roundTicks(double low, double high, i32 about);

/// Text with what has a meaning in HTML escaped. Bytes that are no UTF-8 become question marks.
[[nodiscard]] std::string escaped(std::string_view text);
