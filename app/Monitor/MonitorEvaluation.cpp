// The monitor's tick: driving the watchdog, scoring the window, counting losses.
#include "app/Monitor/Monitor.h"

#include <unordered_set>

namespace tarnwick {

namespace {

constexpr int ticksBetweenSaves = 20;

} // namespace

void Monitor::tick() {
    if (asleep_) {
        return;
    }
    const double now = loop_.now();
    carryOut(updatedWatchdog().tick(now));
    evaluate(now);
    if (++tickCount_ == ticksBetweenSaves) {
        tickCount_ = 0;
        saveStats(FileStore::Durability::crash);
    }
    if (onTick) {
        onTick();
    }
}

void Monitor::evaluate(double now) {
    evaluatedAt_ = now;
    const Evaluation evaluation = QualityScorer::evaluate(pending_, now, prefs_.scoringConfig());
    for (const PendingPing& ping : evaluation.newlyLost) {
        markLost(ping.id);
    }
    forgetUnsettledBookings();
    const bool isKnown = !pending_.empty();
    lossIsKnown_.set(isKnown);
    lossPercent_.set(isKnown ? evaluation.lossPercent : 0);
    // Without a score the last one stands: nothing better is known.
    if (evaluation.score) {
        score_.set(evaluation.score);
    }
}

void Monitor::markLost(std::uint64_t id) {
    ledger_.mutate([id](PingLedger& ledger) { return ledger.lost(id); });
    samples_.mutate([id](Samples& samples) {
        Sample* sample = sampleOf(samples, id);
        if (sample == nullptr || sample->lost) {
            return false;
        }
        sample->lost = true;
        return true;
    });
}

void Monitor::forgetUnsettledBookings() {
    ledger_.mutate([this](PingLedger& ledger) {
        if (ledger.bookings() == 0) {
            return false;
        }
        std::unordered_set<std::uint64_t> ids;
        ids.reserve(pending_.size());
        for (const PendingPing& ping : pending_) {
            ids.insert(ping.id);
        }
        return ledger.retain(ids);
    });
}

ConnectionWatchdog& Monitor::updatedWatchdog() {
    watchdog_.setAlertsEnabled(prefs_.showNotifications());
    return watchdog_;
}

void Monitor::carryOut(const ConnectionWatchdog::Actions& actions) {
    status_.set(watchdog_.status());
    for (const ConnectionWatchdog::Action action : actions) {
        carryOut(action);
    }
    const std::optional<PingError>& error = startError_.get();
    lastError_.set(error ? std::optional(error->message()) : std::nullopt);
}

void Monitor::carryOut(ConnectionWatchdog::Action action) {
    switch (action) {
    case ConnectionWatchdog::Action::restartPinger:
        restartPinger();
        break;
    case ConnectionWatchdog::Action::startTimedOut:
        stopPinging();
        startError_.set(PingError::resolution("lookup timed out"));
        break;
    case ConnectionWatchdog::Action::announceDown:
        notifications_.post("Tarnwick — Connection down", "Your internet connection seems to be down.");
        break;
    case ConnectionWatchdog::Action::announceUp:
        notifications_.post("Tarnwick — Connection restored", "Your internet connection has been restored.");
        break;
    }
}

} // namespace tarnwick
