// One size for all: what is drawn scales with the page, and its letters stay legible at the width of a telephone.
#include "chart.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

constexpr double chartWidth = 400;
constexpr double leftEdge = 38;
constexpr double rightEdge = 390;
constexpr double topEdge = 26;
constexpr double bottomEdge = 152;
constexpr double belowBottom = 38;   // for ticks and the name of x
constexpr double letterWidth = 6.2;  // about
constexpr double lineHeight = 13;
constexpr i32 fileWidth = 640;  // of a file as it is shown by itself, pixels
constexpr std::size_t lineColours = 4;

const char* const chartStyle = R"(
:root { color-scheme: light dark; --page: #fcfcfb; --ink: #1c1c1a; --soft: #5f5e58; --rule: #deddd6; --mark: #c2410c;
  --line1: #2a6fb0; --line2: #b4470f; --line3: #2f7a34; --line4: #7a4fa3; }
@media (prefers-color-scheme: dark) { :root { --page: #191918; --ink: #ecebe6; --soft: #a5a39b; --rule: #3a3936;
  --mark: #fb923c; --line1: #74b3ec; --line2: #fb923c; --line3: #7fc97f; --line4: #c39be8; } }
.chart text { font: 11px system-ui, "DejaVu Sans", sans-serif; fill: var(--soft); }
.grid { stroke: var(--rule); } .axis { stroke: var(--soft); }
.line { fill: none; stroke-width: 1.8; stroke-linejoin: round; }
.line1 { stroke: var(--line1); } .line2 { stroke: var(--line2); }
.line3 { stroke: var(--line3); } .line4 { stroke: var(--line4); }
.chart .name1 { fill: var(--line1); } .chart .name2 { fill: var(--line2); }
.chart .name3 { fill: var(--line3); } .chart .name4 { fill: var(--line4); }
.fill { fill: var(--line1); opacity: .18; } .spot { fill: transparent; } .spot:hover { fill: var(--line1); }
.mark { fill: var(--mark); stroke: var(--page); } .ground { fill: var(--page); }
)";

// ---- text -----------------------------------------------------------------------------------------------------

// Whether the second byte makes it a longer form than needed, half of a pair or a number beyond Unicode.
static bool isOutside(u8 first, u8 second) {
    return (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
           (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
}

// Length of the character that begins here; 0 if the bytes are no UTF-8.
static std::size_t characterLength(std::string_view text) {
    const u8 first = static_cast<u8>(text.front());
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 1) {
        return 1;
    }
    if (length == 0 || length > text.size() || isOutside(first, static_cast<u8>(text[1]))) {
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

static std::string textAt(double x, double y, const char* attributes, const std::string& text) {
    return "<text x=\"" + numberText(x) + "\" y=\"" + numberText(y) + "\" " + attributes + ">" +
           escaped(text) + "</text>";
}

static std::string lineFrom(double x1, double y1, double x2, double y2, const char* name) {
    return "<line class=\"" + std::string(name) + "\" x1=\"" + numberText(x1) + "\" y1=\"" + numberText(y1) +
           "\" x2=\"" + numberText(x2) + "\" y2=\"" + numberText(y2) + "\"/>";
}

// ---- charts ---------------------------------------------------------------------------------------------------

namespace {

// How the place is divided, by the length of the texts in it.
struct Frame {
    double right;
    double height;
    bool slanted;  // the ticks of x
};

}  // namespace

static double widthOf(std::size_t letters) {
    return static_cast<double>(letters) * letterWidth;
}

static Frame frameOf(const Chart& chart) {
    std::size_t longestName = 0;
    for (const ChartLine& line : chart.lines) {
        longestName = std::max(longestName, line.name.size());
    }
    std::size_t longestTick = 0;
    for (const ChartTick& tick : chart.xTicks) {
        longestTick = std::max(longestTick, tick.text.size());
    }
    const double right = rightEdge - (longestName == 0 ? 0 : widthOf(longestName) + 2);
    const double wanted = widthOf(longestTick + 1) * static_cast<double>(chart.xTicks.size());
    const bool slanted = wanted > right - leftEdge;
    return {right, bottomEdge + belowBottom + (slanted ? widthOf(longestTick) / 2 : 0), slanted};
}

static double xOf(const Chart& chart, const Frame& frame, double x) {
    return leftEdge + (x - chart.xLow) / (chart.xHigh - chart.xLow) * (frame.right - leftEdge);
}

static double yOf(const Chart& chart, double y) {
    const double share = std::clamp((y - chart.yLow) / (chart.yHigh - chart.yLow), 0.0, 1.0);
    return bottomEdge - share * (bottomEdge - topEdge);
}

static std::string pathOf(const Chart& chart, const Frame& frame, const ChartLine& line) {
    std::string path;
    double lastY = 0;
    for (const ChartPoint& point : line.points) {
        const std::string x = numberText(xOf(chart, frame, point.x));
        if (!path.empty() && chart.steps) {
            path += "L" + x + " " + numberText(lastY);
        }
        lastY = yOf(chart, point.y);
        path += (path.empty() ? "M" : "L") + x + " " + numberText(lastY);
    }
    if (chart.steps && !path.empty()) {
        path += "L" + numberText(frame.right) + " " + numberText(lastY);
    }
    return path;
}

static std::string fillOf(const Chart& chart, const Frame& frame) {
    const ChartLine& line = chart.lines.front();
    const std::string ground = numberText(yOf(chart, 0));
    const std::string last = numberText(chart.steps ? frame.right : xOf(chart, frame, line.points.back().x));
    return "<path class=\"fill\" d=\"" + pathOf(chart, frame, line) + "L" + last + " " + ground + "L" +
           numberText(xOf(chart, frame, line.points.front().x)) + " " + ground + "Z\"/>";
}

// A dot, or a place that only a pointer finds.
static std::string dotOf(const Chart& chart, const Frame& frame, const ChartPoint& point) {
    return "<circle class=\"" + std::string(point.marked ? "mark" : "spot") + "\" cx=\"" +
           numberText(xOf(chart, frame, point.x)) + "\" cy=\"" + numberText(yOf(chart, point.y)) + "\" r=\"" +
           (point.marked ? "3.5" : "5") + "\"><title>" + escaped(point.label) + "</title></circle>";
}

// The number that the classes of a line end with.
static std::string colourOf(std::size_t index) {
    return std::to_string(index % lineColours + 1);
}

static std::string linesOf(const Chart& chart, const Frame& frame) {
    std::string svg;
    for (std::size_t i = 0; i < chart.lines.size(); ++i) {
        if (!chart.lines[i].points.empty()) {
            svg += chart.filled && i == 0 ? fillOf(chart, frame) : "";
            svg += "<path class=\"line line" + colourOf(i) + "\" d=\"" +
                   pathOf(chart, frame, chart.lines[i]) + "\"/>";
        }
    }
    for (const ChartLine& line : chart.lines) {
        for (const ChartPoint& point : line.points) {
            svg += dotOf(chart, frame, point);
        }
    }
    return svg;
}

// At the lines' ends, from the top down, none over another.
static std::string namesOf(const Chart& chart, const Frame& frame) {
    struct Name {
        double y;
        std::size_t line;
    };
    std::vector<Name> names;
    for (std::size_t i = 0; i < chart.lines.size(); ++i) {
        if (!chart.lines[i].name.empty() && !chart.lines[i].points.empty()) {
            names.push_back({yOf(chart, chart.lines[i].points.back().y), i});
        }
    }
    std::ranges::stable_sort(names, {}, &Name::y);
    std::string svg;
    double free = 0;
    for (const Name& name : names) {
        const double y = std::max(name.y, free);
        free = y + lineHeight;
        const std::string attributes = "class=\"name" + colourOf(name.line) + "\"";
        svg += textAt(frame.right + 5, y + 3.5, attributes.c_str(), chart.lines[name.line].name);
    }
    return svg;
}

static std::string slantedText(double x, double y, const std::string& text) {
    return "<text transform=\"translate(" + numberText(x) + " " + numberText(y) +
           ") rotate(-30)\" text-anchor=\"end\">" + escaped(text) + "</text>";
}

static std::string ticksOf(const Chart& chart, const Frame& frame) {
    std::string svg;
    for (const ChartTick& tick : chart.yTicks) {
        const double y = yOf(chart, tick.at);
        svg += lineFrom(leftEdge, y, frame.right, y, tick.at == 0 ? "axis" : "grid");
        svg += textAt(leftEdge - 5, y + 3.5, "text-anchor=\"end\"", tick.text);
    }
    for (const ChartTick& tick : chart.xTicks) {
        const double x = xOf(chart, frame, tick.at);
        svg += frame.slanted ? slantedText(x + 5, bottomEdge + 12, tick.text)
                             : textAt(x, bottomEdge + 14, "text-anchor=\"middle\"", tick.text);
    }
    svg += textAt(leftEdge - 32, topEdge - 14, "text-anchor=\"start\"", chart.yName);
    svg += textAt((leftEdge + frame.right) / 2, frame.height - 8, "text-anchor=\"middle\"", chart.xName);
    return svg;
}

// Without the element around it.
static std::string contentOf(const Chart& chart, const Frame& frame) {
    return ticksOf(chart, frame) + linesOf(chart, frame) + namesOf(chart, frame);
}

static std::string wholeNumber(double value) {
    return std::to_string(std::lround(std::ceil(value)));
}

static std::string beginOf(const Chart& chart, const Frame& frame, const std::string& attributes) {
    return "<svg " + attributes + "class=\"chart\" role=\"img\" viewBox=\"0 0 " + wholeNumber(chartWidth) +
           " " + wholeNumber(frame.height) + "\"><title>" + escaped(chart.title) + "</title>";
}

std::string chartSvg(const Chart& chart) {
    const Frame frame = frameOf(chart);
    return beginOf(chart, frame, "") + contentOf(chart, frame) + "</svg>\n";
}

std::string chartFile(const Chart& chart) {
    const Frame frame = frameOf(chart);
    const std::string attributes =
        "xmlns=\"http://www.w3.org/2000/svg\" width=\"" + std::to_string(fileWidth) + "\" ";
    return beginOf(chart, frame, attributes) + "\n<style>" + chartStyle +
           "</style>\n<rect class=\"ground\" width=\"100%\" height=\"100%\"/>\n" + contentOf(chart, frame) +
           "</svg>\n";
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
