// A long span as a chart shows it: in equal parts.
#pragma once

#include "core/History/History.h"

#include <optional>
#include <vector>

namespace tarnwick {

struct HistoryBucket {
    Span span{};
    std::optional<double> slowestMs{}; ///< nothing without answers
    double lossShare = 0;              ///< 0 to 1, of the pings with an outcome
    double gapShare = 0;               ///< 0 to 1, of the time: nothing was pinged
    bool isDown = false;               ///< an outage lasted then

    friend bool operator==(const HistoryBucket&, const HistoryBucket&) = default;
};

/// `count` buckets for `span`, oldest first. A period longer than a bucket, or at the edge of two, shows in
/// all buckets that it overlaps: its slowest answer may have been in any of them.
[[nodiscard]] std::vector<HistoryBucket> chartBuckets(const History& history, const Span& span, int count);

} // namespace tarnwick
