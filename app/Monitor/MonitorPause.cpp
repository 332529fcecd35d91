// A pause that the user wants: nothing is sent and nothing is announced until it is over.
#include "app/Monitor/Monitor.h"

#include "core/PauseLength.h"

#include <chrono>

namespace tarnwick {

void Monitor::pause(int seconds) {
    if (!PauseLength::admits(seconds)) {
        return;
    }
    const PublishAtEnd publishAtEnd(*this);
    const bool begins = !isPaused();
    measured_.pausedUntil = loop_.wallNow() + std::chrono::seconds(seconds);
    pauseEnd_ = loop_.now() + seconds;
    if (begins) {
        beginPause();
    }
}

void Monitor::beginPause() {
    pathWork_.reset();
    stopPinging();
    forgetQuality();
    diagnostician_.reset(); // and with it what it has under way
    measured_.verdict.reset();
    measured_.path.clear();
    carryOut(watchdog_.reset(loop_.now(), never, false));
    history_.interrupt(Gap::Kind::paused);                        // a sleep goes on as what it is
    saveStatsOf(prefs_.hostname(), FileStore::Durability::crash); // nothing counts for long
}

void Monitor::resume() {
    if (!isPaused()) {
        return;
    }
    const PublishAtEnd publishAtEnd(*this);
    endPause();
    if (asleep_) {
        return; // the wake starts pinging
    }
    history_.resume();
    refreshWatchdogConfig();
    carryOut(watchdog_.reset(loop_.now(), restartDelay(), false));
}

void Monitor::endPause() {
    measured_.pausedUntil.reset();
    networkSince_ = loop_.wallNow(); // it may be another one
    makeDiagnostician();
}

void Monitor::togglePause() {
    if (isPaused()) {
        resume();
    } else {
        pause(PauseLength::usual);
    }
}

bool Monitor::isPauseOver() const {
    return measured_.pausedUntil && (loop_.wallNow() >= *measured_.pausedUntil || loop_.now() >= pauseEnd_);
}

void Monitor::tickInPause() {
    const PublishAtEnd publishAtEnd(*this); // the chart moves on
    if (isPauseOver()) {
        resume();
    } else {
        history_.tick();
    }
}

} // namespace tarnwick
