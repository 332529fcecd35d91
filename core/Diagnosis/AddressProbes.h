// Probes that take the pings' place while the host's name can't be found: whether its last address answers.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace tarnwick {

/// Told what happens and when, in monotonic seconds; sends nothing itself.
class AddressProbes {
public:
    /// Ids count up from this one, so that answers to earlier probes are not taken for those of these.
    explicit AddressProbes(std::uint64_t firstId) : nextId_(firstId) {}

    /// The id of the probe to send now; nothing before a second has passed.
    [[nodiscard]] std::optional<std::uint64_t> probe(double now);
    /// Unknown ids and second answers are ignored.
    void answered(std::uint64_t id, double at);

    void forget() { samples_.clear(); }

    /// By the latest probes; nothing while none has been answered or given up.
    [[nodiscard]] std::optional<bool> answers(double now) const;
    /// Of the probes sent from `since` on that have been answered or can no longer be, oldest first.
    [[nodiscard]] std::vector<HopSample> samples(double since, double now) const;

private:
    struct Sample {
        std::uint64_t id = 0;
        double sentAt = 0;
        std::optional<double> ms = std::nullopt;
    };

    std::deque<Sample> samples_;
    std::uint64_t nextId_;
};

} // namespace tarnwick
