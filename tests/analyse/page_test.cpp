#include "page.h"
#include "chart.h"

#include <gtest/gtest.h>

namespace {

JudgedGame gameOf(const std::vector<JudgedMove>& moves) {
    return {"A<", "B", "?", "1-0", moves};
}

Chart straightChart(const ChartLine& line) {
    return {"t", "x", "y", {line}, {}, {}, 0, 10, 0, 5, false, false};
}

}  // namespace

TEST(Page, WhatHasAMeaningInHtmlIsEscaped) {
    EXPECT_EQ(escaped("<a> & \"b\""), "&lt;a&gt; &amp; &quot;b&quot;");
    EXPECT_EQ(escaped("\xC3\xA9\xE9 \xE2\x82"), "\xC3\xA9? ??");
    EXPECT_EQ(escaped("\xE0\x9F\xBF|\xED\xA0\x80|\xF0\x8F\xBF\xBF|\xF4\x90\x80\x80|\xF5"),
              "???|???|????|????|?");
    for (const char* const first : {"\xE0\xA0\x80", "\xED\x9F\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(escaped(first), first);
    }
}

TEST(Page, TicksStandAtRoundNumbers) {
    const std::vector<ChartTick> ticks = roundTicks(0, 33, 4);
    ASSERT_EQ(ticks.size(), 4U);
    EXPECT_EQ(ticks[1].text, "10");
    EXPECT_EQ(roundTicks(0, 0.12, 5).back().text, "0.1");
}

TEST(Page, AChartHasItsPointsWhereTheyBelong) {
    const Chart chart = straightChart({"", {{0, 0, "low", false}, {10, 5, "high", true}}});
    const std::string svg = chartSvg(chart);
    EXPECT_NE(svg.find("d=\"M38.0 152.0L390.0 26.0\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("<circle class=\"mark\" cx=\"390.0\" cy=\"26.0\""), std::string::npos);
}

TEST(Page, NamesStandAtTheEndsOfTheirLinesAndNotOverEachOther) {
    Chart chart = straightChart({"first", {{0, 0, "", false}, {10, 5, "", false}}});
    chart.lines.push_back({"second", {{0, 5, "", false}, {10, 4.9, "", false}}});
    const std::string svg = chartSvg(chart);
    EXPECT_NE(svg.find("class=\"line line2\" d=\"M38.0 26.0L350.8 28.5\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("y=\"29.5\" class=\"name1\">first<"), std::string::npos) << svg;
    EXPECT_NE(svg.find("y=\"42.5\" class=\"name2\">second<"), std::string::npos) << svg;
}

TEST(Page, TicksThatDoNotFitStandAslant) {
    Chart chart = straightChart({"", {{0, 0, "", false}}});
    chart.xTicks = {{0, "0"}, {10, "10"}};
    EXPECT_EQ(chartSvg(chart).find("rotate"), std::string::npos);
    chart.xTicks[1].text = std::string(40, 'x');
    EXPECT_NE(chartSvg(chart).find("rotate(-30)\" text-anchor=\"end\">0<"), std::string::npos);
}

TEST(Page, AFileOfItsOwnHasItsStyle) {
    const std::string svg = chartFile(straightChart({"", {}}));
    EXPECT_TRUE(svg.starts_with("<svg xmlns=")) << svg;
    EXPECT_NE(svg.find("prefers-color-scheme: dark"), std::string::npos);
    EXPECT_TRUE(svg.ends_with("</svg>\n"));
}

TEST(Page, AverageLossesAreThoseOfTheMoves) {
    const std::string men(64, ' ');
    const JudgedGame game = gameOf({{"1.", "e4", true, true, 10, 60, "d4", men, 12, 28},
                                    {"1...", "e5", false, true, 20, 0, "", men, 52, 36},
                                    {"2.", "Ke2", true, true, -200, 240, "Nf3", men, 4, 12}});
    const std::string page = gamesPage({game}, 50);
    EXPECT_NE(page.find("<tr><td>A&lt;</td><td>2</td><td>1.50</td><td>0</td><td>1</td></tr>"),
              std::string::npos);
    EXPECT_NE(page.find("<tr><td>B</td><td>1</td><td>0.00</td><td>0</td><td>0</td></tr>"), std::string::npos);
    EXPECT_LT(page.find("2. Ke2 lost 2.40. Better: Nf3"), page.find("1. e4 lost 0.60. Better: d4"));
}

TEST(Page, AMoveThatWasNotAnalysedHasNoPoint) {
    const std::string men(64, ' ');
    const JudgedGame game = gameOf({{"1.", "e4", true, true, 10, 0, "", men, 12, 28},
                                    {"1...", "e5", false, false, std::nullopt, 0, "", men, 52, 36},
                                    {"2.", "Nf3", true, false, 0, 0, "", men, 6, 21}});
    const std::string page = gamesPage({game}, 50);
    EXPECT_NE(page.find("<title>1. e4: 0.10</title>"), std::string::npos);
    EXPECT_EQ(page.find("<title>1... e5"), std::string::npos);
    EXPECT_NE(page.find("<title>2. Nf3: 0.00</title>"), std::string::npos);
}
