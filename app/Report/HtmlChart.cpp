#include "app/Report/HtmlChart.h"

#include "app/Report/ChartAxes.h"
#include "app/Report/Html.h"
#include "app/Report/HtmlDrawing.h"
#include "app/Report/LocalText.h"

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

using Html::attribute;
using Html::element;
using Html::emptyElement;

constexpr double drawingWidth = 720;
constexpr double drawingHeight = 274;
constexpr double plotLeft = 48;
constexpr double plotRight = 720;
/// The lane of the answers, and that of the loss below it.
constexpr double answersTop = 10;
constexpr double answersBottom = 182;
constexpr double lossTop = 202;
constexpr double lossBottom = 246;
constexpr double timeBaseline = 264;
/// Narrower outages could not be seen, and narrower hatching would be no hatching.
constexpr double leastOutage = 1.4;
constexpr double leastHatching = 2.5;

double placeOf(HistoryTime time, const Span& span) {
    const std::chrono::duration<double> passed = time - span.from;
    return plotLeft + (plotRight - plotLeft) * (passed / std::chrono::duration<double>(span.length()));
}

std::string chartBox(const char* kind, double left, double top, double width, double height) {
    return emptyElement(
        "rect", attribute("class", kind) + attribute("x", left) + attribute("y", top)
                    + attribute("width", width) + attribute("height", height));
}

struct Place {
    double x;
    double y;
};

std::string chartLine(const char* kind, Place from, Place to) {
    return emptyElement(
        "line", attribute("class", kind) + attribute("x1", from.x) + attribute("y1", from.y)
                    + attribute("x2", to.x) + attribute("y2", to.y));
}

std::string chartLabel(const char* kind, double left, double baseline, const std::string& text) {
    return element(
        "text", attribute("class", kind) + attribute("x", left) + attribute("y", baseline),
        Html::escaped(text));
}

/// From top to bottom of both lanes.
std::string chartWall(const char* kind, double left, double width) {
    return chartBox(kind, left, answersTop, width, lossBottom - answersTop);
}

std::string unwatchedWalls(const std::vector<Span>& spans, const Span& whole) {
    std::string drawn;
    for (const Span& span : spans) {
        const double left = placeOf(span.from, whole);
        const double width = placeOf(span.to, whole) - left;
        drawn += width >= leastHatching ? chartWall("unwatched", left, width) : "";
    }
    return drawn;
}

/// Wide enough to be seen. Of many, the width that they are given beyond their own fills no more than a
/// sixth of the chart.
std::string outageWalls(const std::vector<Span>& spans, const Span& whole) {
    const double room = (plotRight - plotLeft) / 6;
    const double least =
        std::min(leastOutage, room / static_cast<double>(std::max(spans.size(), std::size_t{1})));
    std::string drawn;
    for (const Span& span : spans) {
        const double left = placeOf(span.from, whole);
        drawn += chartWall("outage", left, std::max(placeOf(span.to, whole) - left, least));
    }
    return drawn;
}

/// The top of the lane. A single slow answer does not flatten the others.
double topOfAnswers(const std::vector<HistoryBucket>& buckets) {
    constexpr double leastMs = 4;
    std::vector<double> slowest;
    for (const HistoryBucket& bucket : buckets) {
        if (bucket.slowestMs) {
            slowest.push_back(*bucket.slowestMs);
        }
    }
    if (slowest.empty()) {
        return ChartAxes::roundUp(leastMs);
    }
    std::ranges::sort(slowest);
    const double usual = slowest[(slowest.size() - 1) * 19 / 20];
    const bool isNear = slowest.back() <= usual * 2;
    return ChartAxes::roundUp(std::max(isNear ? slowest.back() * 1.1 : usual * 1.25, leastMs));
}

double topOfLoss(const std::vector<HistoryBucket>& buckets) {
    constexpr double leastPercent = 4;
    double highest = leastPercent;
    for (const HistoryBucket& bucket : buckets) {
        highest = std::max(highest, bucket.lossShare * 100);
    }
    return ChartAxes::roundUp(highest);
}

std::string chartBars(const HistoryBucket& bucket, const Span& whole, double topMs, double topPercent) {
    const double left = placeOf(bucket.span.from, whole);
    const double width = (placeOf(bucket.span.to, whole) - left) * 0.86;
    std::string drawn;
    if (bucket.slowestMs) {
        const double share = std::min(*bucket.slowestMs / topMs, 1.0);
        const double height = std::max(share * (answersBottom - answersTop), 1.0);
        drawn += chartBox("answer", left, answersBottom - height, width, height);
        if (*bucket.slowestMs > topMs) {
            drawn += chartBox("beyond", left, answersTop - 4, width, 3);
        }
    }
    if (bucket.lossShare > 0) {
        const double share = bucket.lossShare * 100 / topPercent;
        const double height = std::max(share * (lossBottom - lossTop), 1.0);
        drawn += chartBox("loss", left, lossBottom - height, width, height);
    }
    return drawn;
}

/// With as few decimals as it needs.
std::string axisValue(double value, const char* unit) {
    const bool isWhole = std::abs(value - std::round(value)) < 0.01;
    return LocalText::number(value, isWhole ? 0 : 1) + unit;
}

/// With `parts` lines above the one at the bottom.
std::string valueAxis(double top, double bottom, double highest, int parts, const char* unit) {
    std::string drawn;
    for (int part = 0; part <= parts; ++part) {
        const double share = static_cast<double>(part) / parts;
        const double height = bottom - (bottom - top) * share;
        drawn += chartLine("grid", {.x = plotLeft, .y = height}, {.x = plotRight, .y = height});
        drawn += chartLabel("value", plotLeft - 6, height + 3.5, axisValue(highest * share, unit));
    }
    return drawn;
}

std::string answersAxis(double topMs) {
    const bool isSlow = topMs > 1000;
    return valueAxis(answersTop, answersBottom, isSlow ? topMs / 1000 : topMs, 4, isSlow ? " s" : " ms");
}

std::string timeAxis(const Span& span, const UtcOffset& offset) {
    constexpr double labelRoom = 22;
    std::string drawn;
    for (const ChartAxes::TimeMark& mark : ChartAxes::timeMarks(span, offset)) {
        const double left = placeOf(mark.time, span);
        drawn += chartLine("mark", {.x = left, .y = answersTop}, {.x = left, .y = lossBottom + 4});
        if (left >= plotLeft + labelRoom - 10 && left <= plotRight - labelRoom) {
            drawn += chartLabel("time", left, timeBaseline, mark.text);
        }
    }
    return drawn;
}

std::string chartSummary(const Report& report, const UtcOffset& offset) {
    const auto worst = std::ranges::max_element(
        report.chart.buckets, {}, [](const HistoryBucket& bucket) { return bucket.slowestMs.value_or(0); });
    const auto slowest = worst != report.chart.buckets.end() ? worst->slowestMs : std::nullopt;
    return "From " + LocalText::minute(report.span.from, offset) + " to "
           + LocalText::minute(report.span.to, offset) + ": slowest answer "
           + LocalText::milliseconds(slowest) + ", outages " + std::to_string(report.outages.size())
           + ", the longest of " + LocalText::length(longestOutage(report)) + ".";
}

std::string chartSign(const char* kind, const std::string& text) {
    return element("li", htmlSign(kind) + Html::escaped(text));
}

std::string chartLegend(const Report& report) {
    const auto parts = static_cast<std::int64_t>(report.chart.buckets.size());
    const std::string each = LocalText::length(report.span.length() / parts);
    return element(
        "ul", attribute("class", "legend"),
        chartSign("answer", "slowest answer of each " + each) + chartSign("beyond", "slower than the scale")
            + chartSign("loss", "share of lost pings") + chartSign("outage", "outage")
            + chartSign("unwatched", "not watched"));
}

} // namespace

std::string htmlChart(const Report& report, const UtcOffset& offset) {
    const ReportChart& chart = report.chart;
    const double topMs = topOfAnswers(chart.buckets);
    const double topPercent = topOfLoss(chart.buckets);
    std::string drawing = element("title", "The connection over time");
    drawing += element("desc", Html::escaped(chartSummary(report, offset)));
    drawing += unwatchedWalls(chart.unwatched, report.span);
    drawing += answersAxis(topMs);
    drawing += valueAxis(lossTop, lossBottom, topPercent, 1, "%");
    drawing += timeAxis(report.span, offset);
    for (const HistoryBucket& bucket : chart.buckets) {
        drawing += chartBars(bucket, report.span, topMs, topPercent);
    }
    drawing += outageWalls(chart.outages, report.span);
    return htmlDrawing("chart", drawingWidth, drawingHeight, drawing) + chartLegend(report);
}

} // namespace tarnwick
