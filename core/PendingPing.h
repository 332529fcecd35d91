// One ping as the scorer sees it.
#pragma once

#include <cstdint>
#include <optional>

namespace tarnwick {

struct PendingPing {
    std::uint64_t id = 0;
    double sent = 0;                            ///< monotonic seconds
    std::optional<double> reply = std::nullopt; ///< monotonic seconds of the answer's arrival
    bool lost = false;                          ///< given up; stays so when a late answer comes

    friend bool operator==(const PendingPing&, const PendingPing&) = default;
};

} // namespace tarnwick
