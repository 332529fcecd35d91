#include "app/Watch/ScreenLayout.h"

#include "app/Reading/StatsGrid.h"
#include "core/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarnwick {

namespace {

using LatencyChart::BarTone;

constexpr int margin = 1;
constexpr int headerIndent = barLevels + 2;
constexpr int headerRows = 2;
constexpr int gridRows = 1 + static_cast<int>(StatsGrid::rowCount);
constexpr int fewestChartRows = 2;
constexpr int mostChartRows = 20;
constexpr int gridLabelWidth = 14;
constexpr int gridValueWidth = 12;
constexpr int keysWidth = gridLabelWidth + 4; ///< up to the first title of the grid
constexpr int scaleWidth = 5;                 ///< of the figures beside the chart, and a blank
constexpr int fewestRowsWithTimes = 4;        ///< of the chart
constexpr int keysGap = 3;                    ///< from the last title of the grid

/// Which part of the screen gets how many rows. Rows that stay empty set the parts apart.
struct Plan {
    bool topBlank = false;
    bool gaps = false;
    int noticeRows = 0;
    int chartRows = 0;
    bool caption = false;
    bool grid = false;
};

/// Hands out rows by importance: header, notices, a small chart, its caption, the grid, air, a larger chart.
Plan planRows(int rows, int wantedNoticeRows) {
    Plan plan;
    int left = rows - headerRows;
    plan.noticeRows = std::clamp(left, 0, wantedNoticeRows);
    left -= plan.noticeRows;
    plan.chartRows = std::clamp(left, 0, fewestChartRows);
    left -= plan.chartRows;
    plan.caption = left >= 1;
    left -= plan.caption ? 1 : 0;
    const int gapRows = plan.noticeRows > 0 ? 3 : 2;
    plan.grid = left >= gridRows;
    left -= plan.grid ? gridRows : 0;
    plan.gaps = plan.grid && left >= gapRows;
    left -= plan.gaps ? gapRows : 0;
    plan.topBlank = plan.gaps && left >= 1;
    left -= plan.topBlank ? 1 : 0;
    plan.chartRows += std::clamp(left, 0, mostChartRows - plan.chartRows);
    return plan;
}

TextStyle styleOf(QualityTone tone) {
    switch (tone) {
    case QualityTone::neutral:
        return TextStyle::secondary;
    case QualityTone::good:
        return TextStyle::good;
    case QualityTone::middle:
        return TextStyle::warn;
    case QualityTone::bad:
        break;
    }
    return TextStyle::bad;
}

TextStyle styleOf(BarTone tone) {
    switch (tone) {
    case BarTone::good:
        return TextStyle::good;
    case BarTone::warn:
        return TextStyle::warn;
    case BarTone::bad:
    case BarTone::outage:
        return TextStyle::bad;
    case BarTone::none:
        break;
    }
    return TextStyle::secondary;
}

/// A cell with this many of its eighths filled, from below.
char32_t block(int eighths, bool ascii) {
    if (ascii) {
        return U"..:::###"[std::clamp(eighths, 1, 8) - 1];
    }
    return U"▁▂▃▄▅▆▇█"[std::clamp(eighths, 1, 8) - 1];
}

/// An unlit bar is a low mark, so that bars can be told apart without color and dim text.
char32_t signalBar(int bar, bool isLit, bool ascii) {
    static constexpr std::array heights{2, 3, 5, 6, 8};
    if (ascii) {
        return isLit ? U'#' : U'.';
    }
    return block(isLit ? heights.at(static_cast<std::size_t>(bar)) : 1, false);
}

void drawSignalBars(Canvas& canvas, int row, const Reading& reading) {
    for (int bar = 0; bar < barLevels; ++bar) {
        const bool isLit = bar < reading.bars;
        const TextStyle style = isLit ? styleOf(reading.qualityTone) : TextStyle::secondary;
        canvas.put(row, margin + bar, signalBar(bar, isLit, canvas.isAscii()), style);
    }
}

void drawHeader(Canvas& canvas, int row, const Reading& reading) {
    const int width = canvas.size().columns - 2 * margin - headerIndent;
    const int latencyWidth = std::min(canvas.widthOf(reading.latencyText), width);
    drawSignalBars(canvas, row, reading);
    canvas.text(
        row, margin + headerIndent, width - latencyWidth - 1, reading.qualityTitle, TextStyle::strong);
    canvas.textRight(
        row, margin + headerIndent, width, reading.latencyText,
        reading.isDown() ? TextStyle::strongBad : TextStyle::strong);
    const std::string loss = reading.lossText.value_or("");
    const int lossWidth = loss.empty() ? 0 : canvas.widthOf(loss) + 1;
    canvas.text(row + 1, margin + headerIndent, width - lossWidth, reading.hostLine, TextStyle::secondary);
    canvas.textRight(
        row + 1, margin + headerIndent, width, loss,
        reading.isLossy() ? TextStyle::warn : TextStyle::secondary);
}

/// Where the chart lies, and its scale.
struct ChartFrame {
    int top;
    int rows;
    int columnsPerBucket;
    double scaleMax;

    [[nodiscard]] int eighths(double ms) const {
        const auto full = static_cast<double>(rows * 8);
        // A stored threshold of zero or less can make a scale without extent.
        return scaleMax > 0 ? static_cast<int>(std::clamp(std::round(ms / scaleMax * full), 1.0, full)) : 1;
    }
};

void drawThresholdLine(Canvas& canvas, const ChartFrame& frame, double thresholdMs, int columns) {
    if (thresholdMs > frame.scaleMax) {
        return;
    }
    const int row = frame.top + frame.rows - 1 - (frame.eighths(thresholdMs) - 1) / 8;
    for (int column = 0; column < columns; ++column) {
        canvas.put(row, margin + column, canvas.isAscii() ? U'-' : U'╌', TextStyle::secondary);
    }
}

/// What is drawn of one part of a chart.
struct ScreenBar {
    BarTone tone = BarTone::none;
    double ms = 0; ///< the height
    double lossShare = 0;
    bool isGap = false;
};

/// A chart of either kind.
struct ScreenChart {
    std::vector<ScreenBar> bars{};
    double scaleMax = 0;
    double lowThresholdMs = 0;
};

ScreenChart screenChartOf(const LatencyChart::Chart& chart) {
    ScreenChart shown{.scaleMax = chart.scaleMax(), .lowThresholdMs = chart.lowThresholdMs};
    for (const LatencyChart::Bucket& bucket : chart.buckets) {
        shown.bars.push_back({.tone = chart.tone(bucket), .ms = bucket.worstRtt.value_or(0)});
    }
    return shown;
}

ScreenChart screenChartOf(const HistoryChart::Chart& chart) {
    ScreenChart shown{.scaleMax = chart.scaleMax(), .lowThresholdMs = chart.thresholds.lowMs};
    for (const HistoryChart::Column& column : chart.columns) {
        shown.bars.push_back(
            {.tone = column.tone,
             .ms = column.slowestMs.value_or(0),
             .lossShare = column.isWall() ? 0 : column.lossShare,
             .isGap = column.isGap()});
    }
    return shown;
}

void drawBar(Canvas& canvas, const ChartFrame& frame, int column, const ScreenBar& bar) {
    const bool isOutage = bar.tone == BarTone::outage;
    const bool isClipped = !isOutage && bar.ms > frame.scaleMax;
    int eighths = isOutage ? frame.rows * 8 : frame.eighths(bar.ms);
    for (int row = frame.top + frame.rows - 1; eighths > 0; --row, eighths -= 8) {
        char32_t glyph = block(std::min(eighths, 8), canvas.isAscii());
        if (isOutage) {
            glyph = canvas.isAscii() ? U'x' : U'▒';
        } else if (isClipped && row == frame.top) {
            glyph = canvas.isAscii() ? U'^' : U'▲';
        }
        canvas.put(row, column, glyph, styleOf(bar.tone));
    }
}

/// Hangs from the top, as long as the share that was lost.
void drawLoss(Canvas& canvas, const ChartFrame& frame, int column, double share) {
    auto eighths = static_cast<int>(std::ceil(share * frame.rows * 8));
    for (int row = frame.top; eighths > 0; ++row, eighths -= 8) {
        char32_t glyph = canvas.isAscii() ? U'"' : U'▔';
        if (eighths > 4) {
            glyph = canvas.isAscii() ? U'x' : U'█';
        } else if (eighths > 1 && !canvas.isAscii()) {
            glyph = U'▀';
        }
        canvas.put(row, column, glyph, TextStyle::bad);
    }
}

void drawColumn(Canvas& canvas, const ChartFrame& frame, int column, const ScreenBar& bar) {
    for (int row = frame.top; bar.isGap && row < frame.top + frame.rows; ++row) {
        canvas.put(row, column, canvas.isAscii() ? U'/' : U'╱', TextStyle::secondary);
    }
    if (bar.tone != BarTone::none) {
        drawBar(canvas, frame, column, bar);
    }
    drawLoss(canvas, frame, column, bar.lossShare);
}

void drawScale(Canvas& canvas, const ChartFrame& frame, int chartColumns) {
    const int column = margin + chartColumns + 1;
    const int room = canvas.size().columns - margin - column;
    const std::string withUnit = Format::wholeMs(frame.scaleMax);
    const std::string top = canvas.widthOf(withUnit) <= room ? withUnit : Text::whole(frame.scaleMax);
    if (canvas.widthOf(top) <= room && frame.rows > 1) {
        canvas.text(frame.top, column, room, top, TextStyle::secondary);
        canvas.text(frame.top + frame.rows - 1, column, room, "0", TextStyle::secondary);
    }
}

/// Returns how many columns of the screen it takes; 0 for none.
int drawChart(Canvas& canvas, int top, int rows, const ScreenChart& chart) {
    const int count = static_cast<int>(chart.bars.size());
    const int width = canvas.size().columns - 2 * margin;
    if (rows < 1 || count < 1 || width < 1) {
        return 0;
    }
    const ChartFrame frame{
        .top = top,
        .rows = rows,
        .columnsPerBucket = std::max(width / count, 1),
        .scaleMax = chart.scaleMax,
    };
    const int chartColumns = std::min(frame.columnsPerBucket * count, width);
    drawThresholdLine(canvas, frame, chart.lowThresholdMs, chartColumns);
    drawScale(canvas, frame, chartColumns);
    // Too narrow for all: the newest are shown.
    const int skipped = std::max(count - width, 0);
    // From three columns on, one of them is air between the bars.
    const int barColumns = frame.columnsPerBucket >= 3 ? frame.columnsPerBucket - 1 : frame.columnsPerBucket;
    for (int index = skipped; index < count; ++index) {
        const int left = margin + (index - skipped) * frame.columnsPerBucket;
        for (int column = left; column < left + barColumns; ++column) {
            drawColumn(canvas, frame, column, chart.bars[static_cast<std::size_t>(index)]);
        }
    }
    return chartColumns;
}

void drawTimes(
    Canvas& canvas, int row, int chartColumns, const std::vector<HistoryChart::TimeLabel>& labels) {
    int freeFrom = 0;
    for (const HistoryChart::TimeLabel& label : labels) {
        const int width = canvas.widthOf(label.text);
        const int center = static_cast<int>(std::floor(label.position * chartColumns));
        const int left = std::clamp(center - width / 2, 0, std::max(chartColumns - width, 0));
        if (left >= freeFrom) {
            canvas.text(row, margin + left, width, label.text, TextStyle::secondary);
            freeFrom = left + width + 1;
        }
    }
}

void drawCaption(Canvas& canvas, int row, const std::string& title, const std::string& threshold) {
    const int width = canvas.size().columns - 2 * margin;
    canvas.text(row, margin, width, title, TextStyle::secondary);
    const int textWidth = canvas.widthOf(threshold);
    constexpr int dashes = 2; // and a space
    if (canvas.widthOf(title) + 1 + dashes + 1 + textWidth <= width) {
        for (int dash = 0; dash < dashes; ++dash) {
            canvas.put(
                row, margin + width - textWidth - dashes - 1 + dash, canvas.isAscii() ? U'-' : U'╌',
                TextStyle::secondary);
        }
        canvas.textRight(row, margin, width, threshold, TextStyle::secondary);
    }
}

/// What keys do: before the grid's titles, and behind them where the screen is wide enough.
struct GridKeys {
    std::string left{};
    std::string right{};
};

GridKeys gridKeys(const Reading& reading) {
    return reading.isPaused() ? GridKeys{.left = "p resumes, q quits"}
                              : GridKeys{.left = "1-4 span, q quits", .right = "p pauses"};
}

void drawGrid(
    Canvas& canvas, int row, const std::array<StatsGrid::Row, StatsGrid::rowCount>& lines,
    const GridKeys& keys) {
    const int session = margin + gridLabelWidth;
    const int allTime = session + gridValueWidth;
    canvas.text(row, margin, keysWidth, keys.left, TextStyle::secondary);
    const int right = allTime + gridValueWidth + keysGap;
    const int room = canvas.size().columns - margin - right;
    if (canvas.widthOf(keys.right) <= room) {
        canvas.text(row, right, room, keys.right, TextStyle::secondary);
    }
    canvas.textRight(row, session, gridValueWidth, StatsGrid::sessionTitle, TextStyle::strong);
    canvas.textRight(row, allTime, gridValueWidth, StatsGrid::allTimeTitle, TextStyle::strong);
    for (const StatsGrid::Row& line : lines) {
        ++row;
        canvas.text(row, margin, gridLabelWidth, line.label, TextStyle::secondary);
        canvas.textRight(row, session, gridValueWidth, line.session, TextStyle::plain);
        canvas.textRight(row, allTime, gridValueWidth, line.allTime, TextStyle::plain);
    }
}

/// The verdict, then the notices.
std::vector<std::string> remarksOn(const Reading& reading) {
    std::vector<std::string> remarks;
    if (reading.verdict) {
        remarks.push_back(reading.verdict->evidence);
    }
    for (const Notice& notice : reading.notices) {
        remarks.push_back(notice.line());
    }
    return remarks;
}

/// Broken at blanks into lines of at most `width` columns.
std::vector<std::string> wrapped(const Canvas& canvas, const std::vector<std::string>& texts, int width) {
    std::vector<std::string> lines;
    for (const std::string& text : texts) {
        std::string line;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find(' ', at), text.size());
            const std::string word = text.substr(at, end - at);
            std::string longer = line;
            longer += line.empty() ? "" : " ";
            longer += word;
            if (!line.empty() && canvas.widthOf(longer) > width) {
                lines.push_back(std::exchange(line, word));
            } else {
                line = longer;
            }
            at = end + 1;
        }
        lines.push_back(line);
    }
    return lines;
}

/// With its times below it where there is room.
void drawPast(Canvas& canvas, int top, int rows, const HistoryChart::Chart& chart) {
    if (chart.isEmpty()) {
        const int width = canvas.size().columns - 2 * margin;
        for (const std::string& line : wrapped(canvas, {chart.whyEmpty}, width)) {
            if (--rows >= 0) {
                canvas.text(top++, margin, width, line, TextStyle::secondary);
            }
        }
        return;
    }
    const int barRows = rows >= fewestRowsWithTimes ? rows - 1 : rows;
    const int columns = drawChart(canvas, top, barRows, screenChartOf(chart));
    if (barRows < rows) {
        drawTimes(canvas, top + barRows, columns, chart.timeLabels);
    }
}

} // namespace

int pastColumnsOn(ScreenSize size) {
    return size.columns - 2 * margin - scaleWidth;
}

Canvas drawScreen(const Reading& reading, const ScreenOptions& options, ScreenSize size) {
    Canvas canvas(size, options.ascii);
    const int width = canvas.size().columns - 2 * margin;
    const std::vector<std::string> notices = wrapped(canvas, remarksOn(reading), width);
    const Plan plan = planRows(canvas.size().rows, static_cast<int>(notices.size()));
    int row = plan.topBlank ? 1 : 0;
    drawHeader(canvas, row, reading);
    row += headerRows;
    for (int line = 0; line < plan.noticeRows; ++line, ++row) {
        if (line == 0 && plan.gaps) {
            ++row;
        }
        canvas.text(row, margin, width, notices[static_cast<std::size_t>(line)], TextStyle::warn);
    }
    row += plan.gaps ? 1 : 0;
    if (options.past != nullptr) {
        drawPast(canvas, row, plan.chartRows, *options.past);
    } else {
        drawChart(canvas, row, plan.chartRows, screenChartOf(reading.chart));
    }
    row += plan.chartRows;
    if (plan.caption) {
        const std::string title = options.past != nullptr ? options.past->title : LatencyChart::periodText;
        drawCaption(canvas, row, title, reading.chart.thresholdText());
        ++row;
    }
    if (plan.grid) {
        const auto rows = StatsGrid::rows(reading.session, reading.site, options.grouping);
        const GridKeys keys = options.readsKeys ? gridKeys(reading) : GridKeys{};
        drawGrid(canvas, row + (plan.gaps ? 1 : 0), rows, keys);
    }
    return canvas;
}

} // namespace tarnwick
