#include "core/Diagnosis/HopSamples.h"

#include <algorithm>
#include <ranges>

namespace tarnwick {

std::optional<double> lostShare(const std::vector<HopSample>& samples) {
    if (samples.empty()) {
        return std::nullopt;
    }
    const auto lost = std::ranges::count_if(samples, [](const HopSample& one) { return !one.ms; });
    return static_cast<double>(lost) / static_cast<double>(samples.size());
}

std::optional<double> latestMs(const std::vector<HopSample>& samples) {
    for (const HopSample& sample : samples | std::views::reverse) {
        if (sample.ms) {
            return sample.ms;
        }
    }
    return std::nullopt;
}

} // namespace tarnwick
