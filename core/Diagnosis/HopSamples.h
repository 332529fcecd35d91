// What the samples of a hop say in one figure.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <optional>
#include <vector>

namespace tarnwick {

/// The share of lost samples, 0 to 1; nothing without samples.
[[nodiscard]] std::optional<double> lostShare(const std::vector<HopSample>& samples);

/// The last answer's milliseconds; nothing when all were lost.
[[nodiscard]] std::optional<double> latestMs(const std::vector<HopSample>& samples);

} // namespace tarnwick
