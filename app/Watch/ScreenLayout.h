// What the terminal view shows, and where, at any size.
#pragma once

#include "app/Reading/LatencyBuckets.h"
#include "app/Reading/StatsRows.h"
#include "app/Watch/Canvas.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

struct ScreenContent {
    int bars = 0; ///< lit, of five
    Monitor::QualityTone tone = Monitor::QualityTone::neutral;
    std::string quality;
    std::string hostLine;
    std::string latency;
    bool isDown = false;
    std::optional<std::string> loss;
    bool isLossy = false;
    std::vector<LatencyChart::Bucket> buckets;
    double lowThresholdMs = 0;
    double highThresholdMs = 0;
    std::array<StatsGrid::Row, StatsGrid::rowCount> stats;
    std::vector<std::string> notes; ///< what the user should know or do, most urgent first
};

[[nodiscard]] ScreenContent screenContent(
    const Monitor& monitor, RunLoop::WallTime now, const Format::Grouping& grouping,
    std::vector<std::string> notes);

/// From 40 columns by 6 rows up everything has its place; a smaller screen shows what fits.
[[nodiscard]] Canvas drawScreen(const ScreenContent& content, ScreenSize size, bool ascii);

} // namespace tarnwick
