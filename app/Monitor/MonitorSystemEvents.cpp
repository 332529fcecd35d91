// How the monitor reacts to a new host or interval, to sleep and wake, and to changes of the network path.
#include "app/Monitor/Monitor.h"

#include "core/Text.h"

namespace tarnwick {

namespace {

/// Interfaces come and go in bursts: the reaction waits until it has been quiet for so long.
constexpr double pathDebounce = 1.0;
/// Gives the network time to come back after a sleep.
constexpr double restartAfterWake = 2.0;

std::string pathKey(const NetworkPath& path) {
    std::string key = path.satisfied ? "satisfied|" : "unsatisfied|";
    for (const std::string& interface : path.interfaces) {
        if (key.back() != '|') {
            key += ',';
        }
        key += interface;
    }
    return key;
}

} // namespace

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
    drive([restartAfter](ConnectionWatchdog& watchdog, double now) {
        return watchdog.reset(now, restartAfter, true);
    });
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

void Monitor::observeSystemEvents() {
    sleepMonitor_.start({
        .willSleep = lifeline_.guarded([this] {
            willSleep();
            // The machine may run out of power before it wakes.
            saveStats();
        }),
        .didWake = lifeline_.guarded([this] { didWake(); }),
    });
    pathMonitor_.start(lifeline_.guarded([this](const NetworkPath& path) { pathUpdated(path); }));
}

void Monitor::willSleep() {
    asleep_ = true;
    pathWork_.reset();
    stopPinging();
    pending_.clear();
}

void Monitor::didWake() {
    asleep_ = false;
    refreshWatchdogConfig();
    drive([](ConnectionWatchdog& watchdog, double now) {
        return watchdog.reset(now, restartAfterWake, false);
    });
}

void Monitor::pathUpdated(const NetworkPath& path) {
    pathSatisfied_.set(path.satisfied);
    pathChanged(pathKey(path));
}

void Monitor::pathChanged(const std::string& key) {
    // The first update only tells how things are.
    if (lastPathKey_ && *lastPathKey_ != key && !asleep_) {
        pathWork_ = loop_.after(pathDebounce, [this] {
            if (!asleep_) {
                drive([](ConnectionWatchdog& watchdog, double now) { return watchdog.networkChanged(now); });
            }
        });
    }
    lastPathKey_ = key;
}

} // namespace tarnwick
