// How the monitor reacts to sleep and wake, and to changes of the network path.
#include "app/Monitor/Monitor.h"

namespace tarnwick {

namespace {

/// Seconds without a change before the reaction: interfaces come and go in bursts.
constexpr double pathDebounce = 1.0;

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

void Monitor::observeSystemEvents() {
    sleepMonitor_.start({
        .willSleep = lifeline_.guarded([this] { willSleep(); }),
        .didWake = lifeline_.guarded([this] { didWake(); }),
    });
    pathMonitor_.start(lifeline_.guarded([this](const NetworkPath& path) { pathUpdated(path); }));
}

void Monitor::willSleep() {
    const PublishAtEnd publishAtEnd(*this);
    asleep_ = true;
    pathWork_.reset();
    stopPinging();
    pending_.clear();
    history_.resume(); // a pause is told apart from the sleep in it
    history_.interrupt(Gap::Kind::asleep);
    // The machine may run out of power before it wakes.
    saveStats();
    prefs_.flush();
}

void Monitor::didWake() {
    const PublishAtEnd publishAtEnd(*this);
    asleep_ = false;
    history_.resume();
    if (isPauseOver()) {
        endPause();
    }
    if (isPaused()) {
        history_.interrupt(Gap::Kind::paused);
        return;
    }
    refreshWatchdogConfig();
    carryOut(watchdog_.reset(loop_.now(), restartAfterWake, false));
}

void Monitor::pathUpdated(const NetworkPath& path) {
    const PublishAtEnd publishAtEnd(*this);
    measured_.pathSatisfied = path.satisfied;
    interface_ = path.interfaces.empty() ? "" : path.interfaces.front();
    pathChanged(pathKey(path));
}

void Monitor::pathChanged(const std::string& key) {
    // The first update is no change: there is nothing to compare it with.
    if (lastPathKey_ && *lastPathKey_ != key && !asleep_ && !isPaused()) {
        pathWork_ = loop_.after(pathDebounce, [this] {
            const PublishAtEnd publishAtEnd(*this);
            if (diagnostician_) {
                networkSince_ = loop_.wallNow();
                diagnostician_->pathChanged();
            }
            carryOut(watchdog_.networkChanged(loop_.now()));
        });
    }
    lastPathKey_ = key;
}

} // namespace tarnwick
