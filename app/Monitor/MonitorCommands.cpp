// What a user can tell the monitor to do: another host or interval, restored defaults, resets.
#include "app/Monitor/Monitor.h"

#include "core/Text.h"

namespace tarnwick {

void Monitor::setHostname(const std::string& text) {
    const std::string_view host = Text::trimmed(text);
    if (host.empty() || host == prefs_.hostname()) {
        return;
    }
    saveStats();
    prefs_.setHostname(std::string(host));
    hostChanged();
}

void Monitor::hostChanged() {
    ledger_.mutate([this](PingLedger& ledger) {
        ledger.resetSite(recorder_.figures(prefs_.hostname()));
        ledger.resetSession();
        return true;
    });
    samples_.set({});
    score_.set(std::nullopt);
    latestPingMs_.set(std::nullopt);
    lossPercent_.set(0);
    lossIsKnown_.set(false);
    resolvedAddress_.set(std::nullopt);
    startError_.set(std::nullopt);
    stopPinging();
    pending_.clear();
    refreshWatchdogConfig();
    // Asleep, nothing is pinged: the wake decides when.
    const double restartAfter = asleep_ ? restartAfterWake : 0;
    carryOut(updatedWatchdog().reset(loop_.now(), restartAfter, true));
}

void Monitor::pingIntervalChanged() {
    refreshWatchdogConfig();
    if (pingTimer_) {
        schedulePingTimer();
    }
}

void Monitor::restoreDefaults() {
    const std::string before = prefs_.hostname();
    saveStats();
    prefs_.restoreDefaults();
    if (prefs_.hostname() != before) {
        hostChanged();
    }
    pingIntervalChanged();
}

void Monitor::reloadPreferences() {
    const std::string host = prefs_.hostname();
    const double interval = prefs_.pingInterval();
    prefs_.reload();
    if (prefs_.hostname() != host) {
        saveStatsOf(host, FileStore::Durability::powerCut);
        hostChanged();
    }
    if (prefs_.pingInterval() != interval) {
        pingIntervalChanged();
    }
}

void Monitor::resetSessionStats() {
    ledger_.mutate([](PingLedger& ledger) {
        ledger.resetSession();
        return true;
    });
}

void Monitor::resetAllTimeStats() {
    saveStats(); // taking over from another writer would bring its figures back
    ledger_.mutate([](PingLedger& ledger) {
        ledger.resetSite({});
        return true;
    });
    saveStats();
}

} // namespace tarnwick
