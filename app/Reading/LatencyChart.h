// The latency chart as data: five minutes of pings in time buckets, the scale of its value axis, its
// description.
#pragma once

#include "app/Reading/Measurements.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick::LatencyChart {

struct Bucket {
    std::int64_t id = 0; ///< absolute number of the bucket, so that bars do not shift between redraws
    std::optional<double> worstRtt = std::nullopt; ///< slowest reply, milliseconds
    bool lost = false;                             ///< at least one ping was lost

    friend bool operator==(const Bucket&, const Bucket&) = default;
};

/// How far the chart reaches back.
inline constexpr std::chrono::seconds span{300};

/// The last five minutes, oldest first, in 36 buckets. When the ping interval is longer than such a bucket,
/// each bucket is one interval long, and there are fewer.
[[nodiscard]] std::vector<Bucket> buckets(const Samples& samples, RunLoop::WallTime now, double pingInterval);

/// The top of the value axis, milliseconds, for these round trips. A single outlier does not flatten the
/// chart.
[[nodiscard]] double scaleMax(std::vector<double> rtts, double lowThreshold);

/// `value` rounded up to a round axis maximum.
[[nodiscard]] double niceCeil(double value);

/// In words, `lost` being the number of buckets with a loss.
[[nodiscard]] std::string summary(std::vector<double> rtts, int lost);

/// What stands below the chart.
inline constexpr const char* periodText = "Last 5 minutes";

/// How a bucket is drawn: by its latency, as a wall when all of its pings were lost, or not at all.
enum class BarTone { none, good, warn, bad, outage };

/// Five minutes, and the latencies that tell fast replies from slow ones.
struct Chart {
    std::vector<Bucket> buckets{}; ///< oldest first
    double lowThresholdMs = 0;     ///< slow above
    double highThresholdMs = 0;    ///< useless above

    /// The top of the value axis, milliseconds.
    [[nodiscard]] double scaleMax() const;
    [[nodiscard]] BarTone tone(const Bucket& bucket) const;
    /// What stands beside the line of the threshold: "slow above 100 ms".
    [[nodiscard]] std::string thresholdText() const;
    /// For assistive technology.
    [[nodiscard]] std::string summary() const;

    friend bool operator==(const Chart&, const Chart&) = default;
};

} // namespace tarnwick::LatencyChart
