// The latency chart as data: five minutes of pings in time buckets, the scale of its value axis, its
// description.
#pragma once

#include "app/Monitor/Monitor.h"

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

/// The last five minutes, oldest first: 36 buckets, or one for each ping when the interval is longer than
/// that.
[[nodiscard]] std::vector<Bucket> buckets(
    const Monitor::Samples& samples, RunLoop::WallTime now, double pingInterval);

/// The top of the value axis, milliseconds. A single outlier does not flatten the chart. Takes replies'
/// times.
[[nodiscard]] double scaleMax(std::vector<double> rtts, double lowThreshold);

/// `value` rounded up to a round axis maximum.
[[nodiscard]] double niceCeil(double value);

/// For assistive technology.
[[nodiscard]] std::string summary(std::vector<double> rtts, int lost);

/// How a bucket is drawn: by its latency, as a wall when it knows nothing but losses, or not at all.
enum class BarTone { none, good, warn, bad, outage };
[[nodiscard]] BarTone tone(const Bucket& bucket, double lowThreshold, double highThreshold);

/// The present replies' times of the buckets, in their order; the number of buckets with a loss.
[[nodiscard]] std::vector<double> replyTimes(const std::vector<Bucket>& buckets);
[[nodiscard]] int lostCount(const std::vector<Bucket>& buckets);

} // namespace tarnwick::LatencyChart
