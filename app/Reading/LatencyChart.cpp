#include "app/Reading/LatencyChart.h"

#include "app/Reading/Format.h"
#include "core/Text.h"

#include <algorithm>
#include <cmath>

namespace tarnwick::LatencyChart {

namespace {

constexpr double chartSeconds = std::chrono::duration<double>(span).count();
constexpr int mostBuckets = 36;

std::int64_t bucketNumber(RunLoop::WallTime date, double width) {
    const std::chrono::duration<double> sinceEpoch = date.time_since_epoch();
    return static_cast<std::int64_t>(std::floor(sinceEpoch.count() / width));
}

/// The round trips of the buckets that have one.
std::vector<double> replyTimes(const std::vector<Bucket>& buckets) {
    std::vector<double> times;
    for (const Bucket& bucket : buckets) {
        if (bucket.worstRtt) {
            times.push_back(*bucket.worstRtt);
        }
    }
    return times;
}

} // namespace

std::vector<Bucket> buckets(const Samples& samples, RunLoop::WallTime now, double pingInterval) {
    const double width = std::max(pingInterval, chartSeconds / mostBuckets);
    const int count = std::clamp(static_cast<int>(std::round(chartSeconds / width)), 1, mostBuckets);
    const std::int64_t first = bucketNumber(now, width) - count + 1;
    std::vector<Bucket> result(static_cast<std::size_t>(count));
    for (std::size_t index = 0; index < result.size(); ++index) {
        result[index].id = first + static_cast<std::int64_t>(index);
    }
    for (const Sample& sample : samples) {
        const std::int64_t index = bucketNumber(sample.date, width) - first;
        if (index < 0 || index >= count) {
            continue;
        }
        Bucket& bucket = result[static_cast<std::size_t>(index)];
        if (sample.rttMs) {
            bucket.worstRtt = std::max(bucket.worstRtt.value_or(0), *sample.rttMs);
        } else if (sample.lost) {
            bucket.lost = true;
        }
    }
    return result;
}

double scaleMax(std::vector<double> rtts, double lowThreshold) {
    if (rtts.empty()) {
        return niceCeil(lowThreshold * 1.5);
    }
    std::ranges::sort(rtts);
    const auto position = static_cast<std::size_t>(std::floor(static_cast<double>(rtts.size()) * 0.95));
    const double percentile = rtts[position];
    const double candidate = std::max(percentile * 1.25, 20.0);
    // Data near the threshold keeps the threshold in view.
    const double withThreshold = lowThreshold * 1.25;
    const bool isNear = candidate <= withThreshold && lowThreshold <= percentile * 3;
    return niceCeil(isNear ? withThreshold : candidate);
}

double niceCeil(double value) {
    for (const double step : {10.0, 25.0, 50.0, 100.0, 250.0, 500.0}) {
        if (value <= 10 * step) {
            return step * std::ceil(value / step);
        }
    }
    return 1000 * std::ceil(value / 1000);
}

std::string summary(std::vector<double> rtts, int lost) {
    if (rtts.empty()) {
        return lost < 1 ? "No replies yet" : std::to_string(lost) + " lost, no replies";
    }
    std::ranges::sort(rtts);
    return "Median " + Text::whole(rtts[rtts.size() / 2]) + " milliseconds, slowest "
           + Text::whole(rtts.back()) + " milliseconds, " + std::to_string(lost) + " lost";
}

double Chart::scaleMax() const {
    return LatencyChart::scaleMax(replyTimes(buckets), lowThresholdMs);
}

std::string Chart::thresholdText() const {
    return "slow above " + Format::wholeMs(lowThresholdMs);
}

std::string Chart::summary() const {
    const auto lost = std::ranges::count_if(buckets, &Bucket::lost);
    return LatencyChart::summary(replyTimes(buckets), static_cast<int>(lost));
}

BarTone Chart::tone(const Bucket& bucket) const {
    if (!bucket.worstRtt) {
        return bucket.lost ? BarTone::outage : BarTone::none;
    }
    if (bucket.lost) {
        return BarTone::bad;
    }
    if (*bucket.worstRtt <= lowThresholdMs) {
        return BarTone::good;
    }
    return *bucket.worstRtt <= (lowThresholdMs + highThresholdMs) / 2 ? BarTone::warn : BarTone::bad;
}

} // namespace tarnwick::LatencyChart
