// The figures of a host in one period, and what they are merged to.
#pragma once

#include "core/History/LatencyHistogram.h"

#include <cstdint>
#include <optional>

namespace tarnwick {

/// Every ping counts in the period in which it was sent, also if its outcome is known later: so `sent` may
/// exceed `replied` and `lost` together.
struct PeriodFigures {
    double watchedSeconds = 0; ///< in which the host was pinged; less than the period's length around gaps
    std::int64_t sent = 0;
    std::int64_t replied = 0;
    std::int64_t lost = 0;
    double fastestMs = 0;         ///< 0: no answer
    double slowestMs = 0;         ///< 0: no answer
    double jitterSumMs = 0;       ///< of the differences between consecutive answers
    std::int64_t jitterCount = 0; ///< how many these are
    LatencyHistogram latencies{};

    void addAnswer(double ms);
    void addDifference(double ms);
    /// Of any two periods of one host, in any order.
    void merge(const PeriodFigures& other);

    [[nodiscard]] bool isEmpty() const;

    /// From 0 to 100; nothing as long as no ping has an outcome.
    [[nodiscard]] std::optional<double> lossPercent() const;
    /// Within 2.2 % of the exact one, and exact for a single answer. Nothing without answers.
    [[nodiscard]] std::optional<double> medianMs() const;
    [[nodiscard]] std::optional<double> percentile95Ms() const;
    [[nodiscard]] std::optional<double> percentile99Ms() const;
    /// The mean difference of consecutive answers.
    [[nodiscard]] std::optional<double> jitterMs() const;

    friend bool operator==(const PeriodFigures&, const PeriodFigures&) = default;

private:
    [[nodiscard]] std::optional<double> percentileMs(double share) const;
};

} // namespace tarnwick
