// One ping of the scoring window.
#pragma once

#include <cstdint>
#include <optional>

namespace tarnwick {

struct PendingPing {
    std::uint64_t id = 0;
    double sent = 0;                            ///< monotonic seconds
    std::optional<double> reply = std::nullopt; ///< monotonic seconds of the answer's arrival
    bool lost = false;                          ///< found lost; a late reply does not change it

    friend bool operator==(const PendingPing&, const PendingPing&) = default;
};

} // namespace tarnwick
