#include "core/Diagnosis/AddressProbes.h"

#include "core/Diagnosis/PathTrace.h"

#include <algorithm>
#include <ranges>

namespace tarnwick {

namespace {

/// At one a second, more than anyone looks back on.
constexpr std::size_t mostProbes = 64;
/// Seconds by which a tick may come too soon.
constexpr double tickTolerance = 0.5;
/// One that is lost among them says nothing.
constexpr std::size_t latestThatCount = 3;

} // namespace

std::optional<std::uint64_t> AddressProbes::probe(double now) {
    if (!samples_.empty() && now - samples_.back().sentAt < PathTrace::interval - tickTolerance) {
        return std::nullopt;
    }
    samples_.push_back({.id = nextId_++, .sentAt = now});
    if (samples_.size() > mostProbes) {
        samples_.pop_front();
    }
    return samples_.back().id;
}

void AddressProbes::answered(std::uint64_t id, double at) {
    const auto sample = std::ranges::find(samples_, id, &Sample::id);
    if (sample != samples_.end() && !sample->ms && at - sample->sentAt <= PathTrace::patience) {
        constexpr double msPerSecond = 1000;
        sample->ms = std::max(0.0, at - sample->sentAt) * msPerSecond;
    }
}

std::optional<bool> AddressProbes::answers(double now) const {
    const std::vector<HopSample> settled = samples(0, now);
    if (settled.empty()) {
        return std::nullopt;
    }
    return std::ranges::any_of(
        settled | std::views::reverse | std::views::take(latestThatCount),
        [](const HopSample& one) { return one.ms.has_value(); });
}

std::vector<HopSample> AddressProbes::samples(double since, double now) const {
    std::vector<HopSample> settled;
    for (const Sample& sample : samples_) {
        if (sample.sentAt >= since && (sample.ms || now - sample.sentAt > PathTrace::patience)) {
            settled.push_back({.ms = sample.ms});
        }
    }
    return settled;
}

} // namespace tarnwick
