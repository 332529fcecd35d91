#include "core/PingLedger.h"

namespace tarnwick {

void PingLedger::sent(std::uint64_t id, bool counted) {
    if (!counted) {
        return;
    }
    session_.addPingSent();
    site_.addPingSent();
    bookings_[id] = Booking{sessionEpoch_, siteEpoch_};
}

void PingLedger::replied(std::uint64_t id, double ms, bool withinTimeout) {
    if (!withinTimeout) {
        lost(id);
        return;
    }
    const std::optional<Booking> booking = settle(id);
    if (!booking) {
        return;
    }
    if (booking->session == sessionEpoch_) {
        session_.addPingResponse(ms);
    }
    if (booking->site == siteEpoch_) {
        site_.addPingResponse(ms);
    }
}

void PingLedger::lost(std::uint64_t id) {
    const std::optional<Booking> booking = settle(id);
    if (!booking) {
        return;
    }
    if (booking->session == sessionEpoch_) {
        session_.addPingTimeout();
    }
    if (booking->site == siteEpoch_) {
        site_.addPingTimeout();
    }
}

void PingLedger::retain(const std::unordered_set<std::uint64_t>& ids) {
    std::erase_if(bookings_, [&ids](const auto& entry) { return !ids.contains(entry.first); });
}

void PingLedger::resetSession() {
    session_ = {};
    ++sessionEpoch_;
}

void PingLedger::resetSite(const StatCounter& to) {
    site_ = to;
    ++siteEpoch_;
}

std::optional<PingLedger::Booking> PingLedger::settle(std::uint64_t id) {
    const auto found = bookings_.find(id);
    if (found == bookings_.end()) {
        return std::nullopt;
    }
    const Booking booking = found->second;
    bookings_.erase(found);
    return booking;
}

} // namespace tarnwick
