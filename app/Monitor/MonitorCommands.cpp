// What a user can tell the monitor to do: another host or interval, restored defaults, resets. A changed
// setting has the same effect from every source.
#include "app/Monitor/Monitor.h"

#include "core/HostText.h"

#include <algorithm>

namespace tarnwick {

void Monitor::setHostname(const std::string& text) {
    const auto found = hostIn(text);
    const auto* const host = std::get_if<std::string>(&found);
    if (host != nullptr && *host != prefs_.hostname()) {
        prefs_.setHostname(*host);
    }
}

void Monitor::settingsChanged() {
    const PublishAtEnd publishAtEnd(*this);
    followAlerts();
    followHistory();
    if (prefs_.hostname() != host_) {
        saveStatsOf(host_, FileStore::Durability::powerCut);
        host_ = prefs_.hostname();
        hostChanged();
    }
    if (prefs_.pingTimeout() != pingTimeout_) {
        pingTimeout_ = prefs_.pingTimeout();
        refreshWatchdogConfig();
    }
    if (prefs_.pingInterval() != pingInterval_) {
        pingInterval_ = prefs_.pingInterval();
        pingIntervalChanged();
    }
}

void Monitor::followAlerts() {
    watchdog_.setAlertsEnabled(prefs_.showNotifications());
    notifications_.setSubject(prefs_.showNotifications() ? prefs_.hostname() : std::string());
}

void Monitor::followHistory() {
    if (!prefs_.keepsHistory()) {
        history_.stop();
        measured_.historyProblem.clear();
    } else if (!history_.isRecording()) {
        history_.start(prefs_.hostname());
        if (isPaused()) {
            history_.interrupt(Gap::Kind::paused);
        }
    } else {
        history_.setHost(prefs_.hostname());
    }
}

void Monitor::hostChanged() {
    measured_.ledger.resetSite(recorder_.counterOf(prefs_.hostname()));
    measured_.ledger.resetSession();
    measured_.samples.clear();
    measured_.resolvedAddress = std::nullopt;
    pinged_ = std::nullopt;
    stopPinging();
    place_.reset();
    forgetQuality();
    refreshWatchdogConfig();
    carryOut(watchdog_.reset(loop_.now(), restartDelay(), true));
}

void Monitor::forgetQuality() {
    pending_.clear();
    forgetUnsettledBookings();
    measured_.score = std::nullopt;
    measured_.latestPingMs = std::nullopt;
    measured_.lossPercent = 0;
    measured_.lossIsKnown = false;
    measured_.startError = std::nullopt;
}

double Monitor::restartDelay() const {
    if (isPaused()) {
        return never; // its end starts pinging
    }
    if (asleep_) {
        return restartAfterWake; // the wake starts pinging
    }
    const double latest = std::max(lastStart_, lastPingSent_.value_or(lastStart_));
    return std::max(latest + shortestRun - loop_.now(), 0.0);
}

void Monitor::pingIntervalChanged() {
    refreshWatchdogConfig();
    if (pingTimer_) {
        schedulePingTimer();
    }
}

void Monitor::restoreDefaults() {
    const PublishAtEnd publishAtEnd(*this);
    saveStats();
    prefs_.restoreDefaults();
}

void Monitor::resetSessionStats() {
    const PublishAtEnd publishAtEnd(*this);
    measured_.ledger.resetSession();
}

void Monitor::resetAllTimeStats() {
    const PublishAtEnd publishAtEnd(*this);
    // Before the reset: a save may take over the figures of another writer, and these are to be reset too.
    saveStatsOf(prefs_.hostname(), FileStore::Durability::powerCut);
    recorder_.reset(prefs_.hostname());
    measured_.ledger.resetSite({});
    saveStats();
}

bool Monitor::clearHistory() {
    const PublishAtEnd publishAtEnd(*this);
    return history_.clear();
}

void Monitor::tryAgain() {
    const PublishAtEnd publishAtEnd(*this);
    measured_.allowingFailed = false;
    if (!isPaused()) {
        carryOut(watchdog_.networkChanged(loop_.now()));
    }
}

void Monitor::allowingFailed() {
    const PublishAtEnd publishAtEnd(*this);
    measured_.allowingFailed = true;
}

void Monitor::setNotice(const Notice& notice) {
    const PublishAtEnd publishAtEnd(*this);
    clearNotice(notice.kind);
    measured_.notices.push_back(notice);
}

void Monitor::setSettingsMistakes(const std::vector<std::string>& mistakes) {
    if (mistakes.empty()) {
        clearNotice(Notice::Kind::settingsMistake);
    } else {
        setNotice(settingsNotice(mistakes));
    }
}

void Monitor::clearNotice(Notice::Kind kind) {
    const PublishAtEnd publishAtEnd(*this);
    std::erase_if(measured_.notices, [kind](const Notice& notice) { return notice.kind == kind; });
}

} // namespace tarnwick
