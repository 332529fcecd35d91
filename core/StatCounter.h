// Counts pings sent, replied and lost; keeps the mean and the extremes of the round-trip times.
#pragma once

#include <cstdint>

namespace tarnwick {

struct StatCounter {
    std::int64_t sent = 0;
    std::int64_t replied = 0;
    std::int64_t lost = 0;
    double averageMs = 0; ///< running mean over the replies
    double fastestMs = 0; ///< 0: no reply yet
    double slowestMs = 0; ///< 0: no reply yet

    void addPingSent();
    void addPingResponse(double ms);
    void addPingTimeout();

    /// From 0 to 100.
    /// Capped, since stored figures may hold more losses than pings.
    [[nodiscard]] double lossPercent() const;
    [[nodiscard]] bool isEmpty() const;

    friend bool operator==(const StatCounter&, const StatCounter&) = default;
};

} // namespace tarnwick
