#include "core/History/PeriodFigures.h"

#include <algorithm>

namespace tarnwick {

void PeriodFigures::addAnswer(double ms) {
    fastestMs = replied == 0 ? ms : std::min(fastestMs, ms);
    slowestMs = std::max(slowestMs, ms);
    ++replied;
    latencies.add(ms);
}

void PeriodFigures::addDifference(double ms) {
    jitterSumMs += ms;
    ++jitterCount;
}

void PeriodFigures::merge(const PeriodFigures& other) {
    if (other.replied > 0) {
        fastestMs = replied == 0 ? other.fastestMs : std::min(fastestMs, other.fastestMs);
        slowestMs = std::max(slowestMs, other.slowestMs);
    }
    watchedSeconds += other.watchedSeconds;
    sent += other.sent;
    replied += other.replied;
    lost += other.lost;
    jitterSumMs += other.jitterSumMs;
    jitterCount += other.jitterCount;
    latencies.merge(other.latencies);
}

bool PeriodFigures::isEmpty() const {
    return *this == PeriodFigures{};
}

std::optional<double> PeriodFigures::lossPercent() const {
    const std::int64_t settled = replied + lost;
    if (settled == 0) {
        return std::nullopt;
    }
    return static_cast<double>(lost) / static_cast<double>(settled) * 100;
}

std::optional<double> PeriodFigures::medianMs() const {
    return percentileMs(0.5);
}

std::optional<double> PeriodFigures::percentile95Ms() const {
    return percentileMs(0.95);
}

std::optional<double> PeriodFigures::percentile99Ms() const {
    return percentileMs(0.99);
}

std::optional<double> PeriodFigures::percentileMs(double share) const {
    const auto ms = latencies.percentile(share);
    return ms ? std::optional(std::clamp(*ms, fastestMs, std::max(fastestMs, slowestMs))) : std::nullopt;
}

std::optional<double> PeriodFigures::jitterMs() const {
    return jitterCount > 0 ? std::optional(jitterSumMs / static_cast<double>(jitterCount)) : std::nullopt;
}

} // namespace tarnwick
