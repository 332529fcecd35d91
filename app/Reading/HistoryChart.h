// The chart of a longer span as data: what is drawn of an hour, a day or a week, and what it says of each
// part of it.
#pragma once

#include "app/Reading/LatencyChart.h"
#include "core/History/ChartBuckets.h"
#include "core/History/LocalTime.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick::HistoryChart {

/// How far a chart reaches back.
enum class Reach { fiveMinutes, hour, day, week };

inline constexpr std::array allReaches{Reach::fiveMinutes, Reach::hour, Reach::day, Reach::week};

/// "1 hour": for the switch between them.
[[nodiscard]] std::string nameOf(Reach reach);
/// "Last hour": for what stands below the chart.
[[nodiscard]] std::string titleOf(Reach reach);

/// A span in equal parts.
struct Division {
    Span span{};
    int parts = 0;

    friend bool operator==(const Division&, const Division&) = default;
};

/// For an hour, a day or a week until `now`: as many parts as there are, up to `most`, or the fewest. Their
/// edges are full minutes or hours of the local clock, so parts do not shift between redraws; the last one
/// has `now` in it.
[[nodiscard]] Division divisionOf(Reach reach, HistoryTime now, int most, const UtcOffset& offset);

/// What is drawn of one part.
struct Column {
    Span span{};
    std::optional<double> slowestMs{}; ///< the height; nothing without answers
    double lossShare = 0;              ///< 0 to 1, of the pings with an outcome: hangs from the top
    double gapShare = 0;               ///< 0 to 1, of the time: nothing was pinged
    LatencyChart::BarTone tone = LatencyChart::BarTone::none; ///< of the bar; an outage is a wall
    std::string time{};                                       ///< "Tue 14:05 to 14:20"
    std::string figures{};                                    ///< "slowest 84 ms, 2% lost"

    [[nodiscard]] bool isWall() const { return tone == LatencyChart::BarTone::outage; }

    /// To be hatched: nothing was pinged most of the time, or all that is known is a gap.
    [[nodiscard]] bool isGap() const;

    /// Both texts: "Tue 14:05 to 14:20: slowest 84 ms, 2% lost".
    [[nodiscard]] std::string text() const { return time + ": " + figures; }

    friend bool operator==(const Column&, const Column&) = default;
};

/// A time on the axis.
struct TimeLabel {
    double position = 0; ///< 0 to 1, of the chart's width
    std::string text{};  ///< "14:00", or "Tue" at midnight when the labels are days

    friend bool operator==(const TimeLabel&, const TimeLabel&) = default;
};

/// The latencies that tell fast replies from slow ones.
struct Thresholds {
    double lowMs = 0;  ///< slow above
    double highMs = 0; ///< useless above

    friend bool operator==(const Thresholds&, const Thresholds&) = default;
};

struct Chart {
    std::vector<Column> columns{}; ///< oldest first
    std::vector<TimeLabel> timeLabels{};
    Thresholds thresholds{};
    std::string title{};    ///< stands below it; set by the owner
    std::string figures{};  ///< of the whole span, for assistive technology
    std::string whyEmpty{}; ///< stands in a chart without anything known; set by the owner

    /// The top of the value axis, milliseconds.
    [[nodiscard]] double scaleMax() const;
    /// What stands beside the line of the threshold: "slow above 100 ms".
    [[nodiscard]] std::string thresholdText() const;
    /// Nothing is known of the span.
    [[nodiscard]] bool isEmpty() const;
    /// For assistive technology.
    [[nodiscard]] std::string summary() const;

    friend bool operator==(const Chart&, const Chart&) = default;
};

/// Without a title.
[[nodiscard]] Chart chartOf(
    const History& history, const Division& division, const Thresholds& thresholds, const UtcOffset& offset);

} // namespace tarnwick::HistoryChart
