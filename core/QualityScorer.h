// Computes a quality score and the loss from the pings of a recent window, and finds the newly lost ones.
#pragma once

#include "core/PendingPing.h"

#include <optional>
#include <vector>

namespace tarnwick {

/// All times in seconds.
struct ScoringConfig {
    double lowThreshold;  ///< a round trip up to here scores a perfect 1.0
    double highThreshold; ///< here the score of a ping reaches 0.0
    /// An answer that takes longer counts as lost. So does an unanswered ping, once it is also older than
    /// `highThreshold`.
    double timeout;
    double averageOver; ///< length of the window

    /// In milliseconds: from the threshold of a slow ping to a score of zero.
    static constexpr double thresholdSpanMs = 900;
    static constexpr double minimumWindow = 30.0;
    static constexpr double minimumPingsInWindow = 10.0;

    /// At least ten pings and at least thirty seconds.
    [[nodiscard]] static double averagingWindow(double pingInterval);
    /// From the user's settings: `slowPingThresholdMs` in milliseconds, the others in seconds.
    [[nodiscard]] static ScoringConfig original(
        double slowPingThresholdMs, double timeout, double pingInterval);

    friend bool operator==(const ScoringConfig&, const ScoringConfig&) = default;
};

struct Evaluation {
    std::optional<double> score;        ///< -2.5 to 1.0; none when no ping could be scored
    double lossPercent = 0;             ///< 0 to 100, of all pings in the window
    std::vector<PendingPing> newlyLost; ///< found lost in this evaluation

    friend bool operator==(const Evaluation&, const Evaluation&) = default;
};

namespace QualityScorer {

/// The score of a lost ping, and the floor of every ping's score.
inline constexpr double lostScore = -2.5;
/// Each ping weighs this many times as much as the one before it.
inline constexpr double recencyWeight = 1.2;

/// Evaluates `pings` (oldest first) at monotonic time `now`. Drops those older than the window and marks the
/// lost.
[[nodiscard]] Evaluation evaluate(std::vector<PendingPing>& pings, double now, const ScoringConfig& config);

/// The bars to light for a score: 1 to `levels`.
/// Aborts when the score is not a number.
[[nodiscard]] int bars(double score, int levels);

} // namespace QualityScorer

} // namespace tarnwick
