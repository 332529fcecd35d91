// What a user can tell the monitor to do: another host or interval, restored defaults, resets. Changed
// settings act in one way, whatever changes them.
#include "app/Monitor/Monitor.h"

namespace tarnwick {

void Monitor::setHostname(const std::string& text) {
    const std::optional<std::string> host = hostIn(text);
    if (host && *host != prefs_.hostname()) {
        prefs_.setHostname(*host);
    }
}

void Monitor::settingsChanged() {
    if (prefs_.hostname() != host_) {
        saveStatsOf(host_, FileStore::Durability::powerCut);
        host_ = prefs_.hostname();
        hostChanged();
    }
    if (prefs_.pingInterval() != pingInterval_) {
        pingInterval_ = prefs_.pingInterval();
        pingIntervalChanged();
    }
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
    saveStats();
    prefs_.restoreDefaults();
    pingIntervalChanged(); // also for an unchanged interval: the watchdog takes the default time-out
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
