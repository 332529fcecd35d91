#include "core/QualityScorer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tarnwick {

namespace {

/// The mean of scores that are added in order; each weighs more than the one before.
class RecencyWeightedMean {
public:
    void add(double score) {
        sum_ += weight_ * score;
        weights_ += weight_;
        weight_ *= QualityScorer::recencyWeight;
    }

    [[nodiscard]] std::optional<double> value() const {
        return weights_ > 0 ? std::optional(sum_ / weights_) : std::nullopt;
    }

private:
    double weight_ = 1;
    double sum_ = 0;
    double weights_ = 0;
};

/// Falls below zero on purpose: a very slow ping counts almost as much as a lost one.
double roundTripScore(double seconds, const ScoringConfig& config) {
    if (seconds <= config.lowThreshold) {
        return 1;
    }
    const double score = 1 - (seconds - config.lowThreshold) / (config.highThreshold - config.lowThreshold);
    return std::max(score, QualityScorer::lostScore);
}

/// The round-trip time, or the time waited so far.
double elapsed(const PendingPing& ping, double now) {
    return ping.reply.value_or(now) - ping.sent;
}

} // namespace

double ScoringConfig::averagingWindow(double pingInterval) {
    return std::max(pingInterval * minimumPingsInWindow, minimumWindow);
}

ScoringConfig ScoringConfig::original(double slowPingThresholdMs, double timeout, double pingInterval) {
    return {
        .lowThreshold = slowPingThresholdMs / 1000,
        .highThreshold = (slowPingThresholdMs + thresholdSpanMs) / 1000,
        .timeout = timeout,
        .averageOver = averagingWindow(pingInterval),
    };
}

namespace QualityScorer {

Evaluation evaluate(std::vector<PendingPing>& pings, double now, const ScoringConfig& config) {
    std::erase_if(pings, [&](const PendingPing& ping) { return now - ping.sent > config.averageOver; });
    if (pings.empty()) {
        return {};
    }
    Evaluation evaluation;
    RecencyWeightedMean mean;
    int lost = 0;
    for (PendingPing& ping : pings) {
        const double seconds = elapsed(ping, now);
        if (!ping.reply && seconds < config.highThreshold) {
            continue; // too young to judge
        }
        if (seconds <= config.timeout) {
            mean.add(roundTripScore(seconds, config));
            continue;
        }
        ++lost;
        mean.add(lostScore);
        if (!ping.lost) {
            ping.lost = true;
            evaluation.newlyLost.push_back(ping);
        }
    }
    evaluation.lossPercent = static_cast<double>(lost) / static_cast<double>(pings.size()) * 100;
    evaluation.score = mean.value();
    return evaluation;
}

int bars(double score, int levels) {
    if (std::isnan(score)) {
        std::abort();
    }
    const int full = static_cast<int>(std::floor(std::clamp(score, 0.0, 1.0) * levels));
    return std::min(full, levels - 1) + 1;
}

} // namespace QualityScorer

} // namespace tarnwick
