// The watchdog under any sequence of events, watched by a supervisor that knows only what it may do.
#include "core/ConnectionWatchdog.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>

namespace tarnwick {
namespace {

using Action = ConnectionWatchdog::Action;
using Actions = ConnectionWatchdog::Actions;
using Config = ConnectionWatchdog::Config;
using Status = ConnectionWatchdog::Status;

constexpr double longestStep = 1.0; ///< seconds between two ticks
constexpr double rounding = 1e-9;

/// Passes events on to a watchdog and asserts after each what the watchdog's answer may be.
class Supervisor {
public:
    explicit Supervisor(const Config& config) : config_(config), watchdog_(config, 0) {}

    void pass(double seconds) { now_ += seconds; }

    void reset(bool newHost) {
        episodeStart_ = now_;
        pingingSince_.reset();
        graceUntil_ = now_ + config_.grace;
        lastRestart_.reset();
        settledSince_ = now_;
        isResolving_ = false;
        status_ = Status::starting;
        if (newHost) {
            lastReply_.reset();
            confirmed_ = false;
            upIsOwed_ = false;
        }
        judge(watchdog_.reset(now_, *rc::gen::inRange(0, 4) * 0.5, newHost), Cause::time);
    }

    void start() {
        isResolving_ = false;
        settledSince_ = now_;
        pingingSince_ = pingingSince_.value_or(now_);
        watchdog_.pingingStarted(now_);
        judge({}, Cause::none);
    }

    void startFails() {
        isResolving_ = false;
        settledSince_ = now_;
        judge(watchdog_.startFailed(now_), Cause::failedStart);
    }

    void reply() {
        lastReply_ = now_;
        confirmed_ = true;
        const Actions actions = watchdog_.replyReceived(now_);
        RC_ASSERT(watchdog_.status() == Status::up);
        const bool mustAnnounce = upIsOwed_ && alerts_;
        RC_ASSERT(actions == (mustAnnounce ? Actions{Action::announceUp} : Actions{}));
        upIsOwed_ = false;
        status_ = Status::up;
    }

    void changeNetwork() {
        graceUntil_ = std::max(graceUntil_, now_ + config_.grace);
        judge(watchdog_.networkChanged(now_), Cause::time);
    }

    void switchAlerts(bool on) {
        alerts_ = on;
        watchdog_.setAlertsEnabled(on);
    }

    void tick() {
        judge(watchdog_.tick(now_), Cause::time);
        expectNeverStuck();
    }

    [[nodiscard]] bool isResolving() const { return watchdog_.isResolving(); }

private:
    enum class Cause { none, time, failedStart };

    void judge(const Actions& actions, Cause cause) {
        Cause latest = cause;
        for (const Action action : actions) {
            switch (action) {
            case Action::startTimedOut:
                expectStalled();
                latest = Cause::failedStart;
                break;
            case Action::restartPinger:
                expectRestartAllowed();
                break;
            case Action::announceDown:
                expectDownMayBeAnnounced();
                break;
            case Action::announceUp:
                RC_FAIL("only a reply brings the connection up");
            }
        }
        judgeStatus(latest);
        RC_ASSERT(watchdog_.isResolving() == isResolving_);
    }

    void expectStalled() {
        RC_ASSERT(isResolving_ && lastRestart_);
        RC_ASSERT(now_ - *lastRestart_ >= config_.resolutionTimeout - rounding);
        isResolving_ = false;
        settledSince_ = now_;
    }

    void expectRestartAllowed() {
        RC_ASSERT(!isResolving_);
        RC_ASSERT(!lastRestart_ || now_ - *lastRestart_ >= config_.minRestartInterval - rounding);
        lastRestart_ = now_;
        isResolving_ = true;
    }

    /// Announcements alternate, beginning with down, and none comes before the host's first reply.
    void expectDownMayBeAnnounced() {
        RC_ASSERT(confirmed_ && alerts_ && !upIsOwed_);
        RC_ASSERT(watchdog_.status() == Status::down);
        RC_ASSERT(status_ != Status::down);
        upIsOwed_ = true;
    }

    void judgeStatus(Cause cause) {
        const Status status = watchdog_.status();
        const bool silent = cause != Cause::none && isTooSilent();
        const bool failed = cause == Cause::failedStart && now_ >= graceUntil_;
        if (status_ != Status::down && status == Status::down) {
            RC_ASSERT(silent || failed);
            RC_ASSERT(!confirmed_ || !alerts_ || upIsOwed_);
            settledSince_ = std::max(settledSince_, now_);
        } else {
            RC_ASSERT(status == status_);
            RC_ASSERT(status_ == Status::down || !failed);
        }
        status_ = status;
    }

    [[nodiscard]] bool isTooSilent() const {
        const double reference = std::max(episodeStart_, lastReply_.value_or(episodeStart_));
        const bool sincePinging =
            pingingSince_ && now_ - std::max(*pingingSince_, reference) > config_.replyTimeout;
        return sincePinging || now_ - reference > config_.maxSilence;
    }

    void expectNeverStuck() {
        RC_ASSERT(status_ == Status::down || !isTooSilent());
        if (isResolving_) {
            RC_ASSERT(now_ - *lastRestart_ <= config_.resolutionTimeout + longestStep);
        } else if (status_ == Status::down) {
            const double longestBackOff = std::max(config_.replyTimeout, config_.maxRestartInterval);
            RC_ASSERT(now_ - settledSince_ <= longestBackOff + longestStep);
        }
    }

    Config config_;
    ConnectionWatchdog watchdog_;
    double now_ = 0;
    double episodeStart_ = 0;
    double graceUntil_ = config_.grace;
    double settledSince_ = 0; ///< when the latest of going down, starting or failing to start happened
    std::optional<double> pingingSince_;
    std::optional<double> lastReply_;
    std::optional<double> lastRestart_;
    bool isResolving_ = false;
    bool confirmed_ = false;
    bool alerts_ = false;
    bool upIsOwed_ = false;
    Status status_ = Status::starting;
};

void somethingHappens(Supervisor& supervisor) {
    const int kind = *rc::gen::inRange(0, 100);
    if (kind < 30 && supervisor.isResolving()) {
        supervisor.start();
    } else if (kind < 40 && supervisor.isResolving()) {
        supervisor.startFails();
    } else if (kind < 50) {
        supervisor.reply();
    } else if (kind < 56) {
        supervisor.changeNetwork();
    } else if (kind < 60) {
        supervisor.switchAlerts(*rc::gen::arbitrary<bool>());
    } else if (kind < 61) {
        supervisor.reset(*rc::gen::arbitrary<bool>());
    }
}

/// Few replies, so that outages are long enough for the back-off to grow.
void somethingHappensInAnOutage(Supervisor& supervisor) {
    const int kind = *rc::gen::inRange(0, 400);
    if (kind < 120 && supervisor.isResolving()) {
        supervisor.start();
    } else if (kind < 160 && supervisor.isResolving()) {
        supervisor.startFails();
    } else if (kind < 163) {
        supervisor.reply();
    } else if (kind < 168) {
        supervisor.changeNetwork();
    }
}

void watch(void (*happens)(Supervisor&), int mostSteps) {
    Supervisor supervisor(
        Config::original(*rc::gen::inRange(1, 20) * 0.5, static_cast<double>(*rc::gen::inRange(1, 61))));
    supervisor.switchAlerts(*rc::gen::arbitrary<bool>());
    supervisor.reset(true);
    const int steps = *rc::gen::inRange(0, mostSteps);
    for (int step = 0; step < steps; ++step) {
        supervisor.pass(*rc::gen::inRange(1, 5) * longestStep / 4);
        happens(supervisor);
        supervisor.tick();
    }
}

TEST(WatchdogProperty, KeepsItsRulesWhateverHappens) {
    EXPECT_TRUE(rc::check("anything", [] { watch(somethingHappens, 300); }));
}

TEST(WatchdogProperty, KeepsItsRulesInLongOutages) {
    EXPECT_TRUE(rc::check("long outages", [] { watch(somethingHappensInAnOutage, 600); }));
}

} // namespace
} // namespace tarnwick
