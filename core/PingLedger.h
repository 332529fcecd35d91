// Books every counted ping, so that its answer or loss lands in the counters that were current when it was
// sent.
#pragma once

#include "core/StatCounter.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace tarnwick {

/// A ping is settled once, as answered or as lost, whichever is told first. Epochs make a reset safe while
/// pings are in flight: what was booked before a reset never reaches the fresh counter.
class PingLedger {
public:
    explicit PingLedger(const StatCounter& site = {}) : site_(site) {}

    // Each tells whether anything has changed, so that watchers are woken for real changes only.

    /// An uncounted ping leaves no trace.
    bool sent(std::uint64_t id, bool counted);
    /// `ms` is the round-trip time; an answer after the time-out settles the ping as lost.
    bool replied(std::uint64_t id, double ms, bool withinTimeout);
    bool lost(std::uint64_t id);
    /// Forgets the bookings of all pings but these; the counters stay.
    bool retain(const std::unordered_set<std::uint64_t>& ids);

    void resetSession();
    void resetSite(const StatCounter& to);

    [[nodiscard]] const StatCounter& session() const { return session_; }

    [[nodiscard]] const StatCounter& site() const { return site_; }

    [[nodiscard]] std::size_t bookings() const { return bookings_.size(); }

    friend bool operator==(const PingLedger&, const PingLedger&) = default;

private:
    struct Booking {
        std::optional<int> session;
        std::optional<int> site;

        friend bool operator==(const Booking&, const Booking&) = default;
    };

    std::optional<Booking> settle(std::uint64_t id);

    StatCounter session_;
    StatCounter site_;
    int sessionEpoch_ = 0;
    int siteEpoch_ = 0;
    std::unordered_map<std::uint64_t, Booking> bookings_;
};

} // namespace tarnwick
