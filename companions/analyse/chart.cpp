// One size for all: what is drawn scales with the page, and its letters stay legible at the width of a telephone.
#include "chart.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

constexpr double chartWidth = 400;
constexpr double chartHeight = 190;
constexpr double leftEdge = 38;
constexpr double rightEdge = 390;
constexpr double topEdge = 26;
constexpr double bottomEdge = 152;

// ---- text -----------------------------------------------------------------------------------------------------

// Length of the character that begins here; 0 if the bytes are no UTF-8.
static std::size_t characterLength(std::string_view text) {
    const u8 first = static_cast<u8>(text.front());
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0 || length > text.size()) {
        return 0;
    }
    const auto follows = [](char c) { return (static_cast<u8>(c) & 0xC0) == 0x80; };
    return std::ranges::all_of(text.substr(1, length - 1), follows) ? length : 0;
}

std::string escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        switch (text.front()) {
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '&':
                result += "&amp;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += length == 0 ? "?" : text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

static std::string numberText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

static std::string textAt(double x, double y, const char* anchor, const std::string& text) {
    return "<text x=\"" + numberText(x) + "\" y=\"" + numberText(y) + "\" text-anchor=\"" + anchor + "\">" +
           escaped(text) + "</text>";
}

static std::string lineFrom(double x1, double y1, double x2, double y2, const char* name) {
    return "<line class=\"" + std::string(name) + "\" x1=\"" + numberText(x1) + "\" y1=\"" + numberText(y1) +
           "\" x2=\"" + numberText(x2) + "\" y2=\"" + numberText(y2) + "\"/>";
}

// ---- charts ---------------------------------------------------------------------------------------------------

static double xOf(const Chart& chart, double x) {
    return leftEdge + (x - chart.xLow) / (chart.xHigh - chart.xLow) * (rightEdge - leftEdge);
}

static double yOf(const Chart& chart, double y) {
    const double share = std::clamp((y - chart.yLow) / (chart.yHigh - chart.yLow), 0.0, 1.0);
    return bottomEdge - share * (bottomEdge - topEdge);
}

static std::string pathOf(const Chart& chart) {
    std::string path;
    double lastY = 0;
    for (const ChartPoint& point : chart.points) {
        const std::string x = numberText(xOf(chart, point.x));
        if (!path.empty() && chart.steps) {
            path += "L" + x + " " + numberText(lastY);
        }
        lastY = yOf(chart, point.y);
        path += (path.empty() ? "M" : "L") + x + " " + numberText(lastY);
    }
    if (chart.steps && !path.empty()) {
        path += "L" + numberText(rightEdge) + " " + numberText(lastY);
    }
    return path;
}

static std::string fillOf(const Chart& chart, const std::string& path) {
    const std::string ground = numberText(yOf(chart, 0));
    const std::string last = numberText(chart.steps ? rightEdge : xOf(chart, chart.points.back().x));
    return "<path class=\"fill\" d=\"" + path + "L" + last + " " + ground + "L" +
           numberText(xOf(chart, chart.points.front().x)) + " " + ground + "Z\"/>";
}

// A dot, or a place that only a pointer finds.
static std::string dotOf(const Chart& chart, const ChartPoint& point) {
    return "<circle class=\"" + std::string(point.marked ? "mark" : "spot") + "\" cx=\"" +
           numberText(xOf(chart, point.x)) + "\" cy=\"" + numberText(yOf(chart, point.y)) + "\" r=\"" +
           (point.marked ? "3.5" : "5") + "\"><title>" + escaped(point.label) + "</title></circle>";
}

std::string chartSvg(const Chart& chart) {
    std::string svg = "<svg class=\"chart\" role=\"img\" viewBox=\"0 0 " +
                      std::to_string(static_cast<i32>(chartWidth)) + " " +
                      std::to_string(static_cast<i32>(chartHeight)) + "\"><title>" + escaped(chart.title) +
                      "</title>";
    for (const ChartTick& tick : chart.yTicks) {
        const double y = yOf(chart, tick.at);
        svg += lineFrom(leftEdge, y, rightEdge, y, tick.at == 0 ? "axis" : "grid");
        svg += textAt(leftEdge - 5, y + 3.5, "end", tick.text);
    }
    for (const ChartTick& tick : chart.xTicks) {
        svg += textAt(xOf(chart, tick.at), bottomEdge + 14, "middle", tick.text);
    }
    svg += textAt(leftEdge - 32, topEdge - 14, "start", chart.yName);
    svg += textAt((leftEdge + rightEdge) / 2, chartHeight - 8, "middle", chart.xName);
    if (!chart.points.empty()) {
        const std::string path = pathOf(chart);
        svg += chart.filled ? fillOf(chart, path) : "";
        svg += "<path class=\"line\" d=\"" + path + "\"/>";
    }
    for (const ChartPoint& point : chart.points) {
        svg += dotOf(chart, point);
    }
    return svg + "</svg>\n";
}

std::vector<ChartTick> roundTicks(double low, double high, i32 about) {
    const double rough = (high - low) / about;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    const double step = power * (rough / power > 5 ? 10 : rough / power > 2 ? 5 : rough / power > 1 ? 2 : 1);
    std::vector<ChartTick> ticks;
    const i64 last = std::lround(std::floor(high / step + 0.001));
    for (i64 i = std::lround(std::ceil(low / step)); i <= last; ++i) {
        const double at = static_cast<double>(i) * step;
        char text[32];
        std::snprintf(text, sizeof text, "%g", at);
        ticks.push_back({at, text});
    }
    return ticks;
}

// ---- boards ---------------------------------------------------------------------------------------------------

constexpr double cell = 20;

static double columnOf(i32 square) {
    return (square & 7) * cell;
}

static double rowOf(i32 square) {
    return (7 - (square >> 3)) * cell;
}

// The full figures of Unicode for both colours, told not to be drawn as pictures.
static std::string figureOf(char man) {
    constexpr std::string_view letters = "kqrbnp";
    const auto index = static_cast<i32>(letters.find(static_cast<char>(std::tolower(static_cast<u8>(man)))));
    return "&#" + std::to_string(0x265A + index) + ";&#xFE0E;";
}

static std::string cellOf(i32 square, bool isMoves) {
    const bool light = ((square & 7) + (square >> 3)) % 2 == 1;
    return "<rect class=\"" +
           std::string(isMoves ? "moved"
                       : light ? "light"
                               : "dark") +
           "\" x=\"" + numberText(columnOf(square)) + "\" y=\"" + numberText(rowOf(square)) +
           "\" width=\"20\" height=\"20\"/>";
}

std::string boardSvg(std::string_view men, i32 from, i32 to, const std::string& title) {
    std::string svg =
        "<svg class=\"board\" role=\"img\" viewBox=\"0 0 160 160\"><title>" + escaped(title) + "</title>";
    for (i32 square = 0; square < 64; ++square) {
        svg += cellOf(square, square == from || square == to);
        const char man = men[static_cast<u32>(square)];
        if (man != ' ') {
            const bool white = std::isupper(static_cast<u8>(man)) != 0;
            svg += "<text class=\"" + std::string(white ? "white" : "black") + "\" x=\"" +
                   numberText(columnOf(square) + cell / 2) + "\" y=\"" + numberText(rowOf(square) + 16) +
                   "\" text-anchor=\"middle\">" + figureOf(man) + "</text>";
        }
    }
    return svg +
           lineFrom(columnOf(from) + cell / 2, rowOf(from) + cell / 2, columnOf(to) + cell / 2,
                    rowOf(to) + cell / 2, "way") +
           "</svg>";
}
