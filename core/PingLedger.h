// Books every counted ping, so that its reply or loss goes to the counters that were current when it was
// sent.
#pragma once

#include "core/StatCounter.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace tarnwick {

/// A ping is settled once: as replied or as lost, whichever comes first. A reset begins a new epoch; pings
/// booked in an earlier epoch never reach the new counter.
class PingLedger {
public:
    explicit PingLedger(const StatCounter& site = {}) : site_(site) {}

    /// A ping that is not counted is not booked.
    void sent(std::uint64_t id, bool counted);
    /// `ms` is the round-trip time. A reply after the time-out settles the ping as lost.
    void replied(std::uint64_t id, double ms, bool withinTimeout);
    void lost(std::uint64_t id);
    /// Forgets the bookings of all other pings. The counters do not change.
    void retain(const std::unordered_set<std::uint64_t>& ids);

    void resetSession();
    void resetSite(const StatCounter& to);

    [[nodiscard]] const StatCounter& session() const { return session_; }

    [[nodiscard]] const StatCounter& site() const { return site_; }

    [[nodiscard]] std::size_t bookings() const { return bookings_.size(); }

    friend bool operator==(const PingLedger&, const PingLedger&) = default;

private:
    struct Booking {
        int session;
        int site;

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
