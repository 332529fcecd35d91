// Random days: outages, host changes, sleeps, path and setting changes in any order, and what must hold
// through all of them.
#include "core/MenuBarTitle.h"
#include "tests/simulation/ChangeCounter.h"
#include "tests/simulation/MonitorWorld.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <rapidcheck.h>
#include <utility>

namespace tarnwick::simulation {

namespace {

using Status = Monitor::Status;

enum class Event {
    nothing,
    silence,
    answers,
    loss,
    sendsFail,
    socketsRefused,
    host,
    sleep,
    path,
    stop,
    interval,
    timeout,
    threshold,
    alerts,
    restoreDefaults,
    resetSession,
    resetAllTime,
    pause,
    last = pause,
};

/// Something happens, in the way that `choice` says, and then time goes by.
struct Step {
    Event event;
    unsigned choice;
    unsigned sixteenths; ///< of a second until the next step

    friend std::ostream& operator<<(std::ostream& out, const Step& step) {
        constexpr std::array names{"nothing",         "silence",        "answers",   "loss",   "sends fail",
                                   "sockets refused", "host",           "sleep",     "path",   "stop",
                                   "interval",        "timeout",        "threshold", "alerts", "restore",
                                   "reset session",   "reset all time", "pause"};
        return out << names.at(static_cast<std::size_t>(step.event)) << ' ' << step.choice << ", then "
                   << step.sixteenths / 16.0 << " s";
    }
};

rc::Gen<Step> anyStep(unsigned longestPause) {
    return rc::gen::build<Step>(
        rc::gen::set(
            &Step::event, rc::gen::map(
                              rc::gen::inRange(0, static_cast<int>(Event::last) + 1),
                              [](int number) { return static_cast<Event>(number); })),
        rc::gen::set(&Step::choice, rc::gen::inRange(0U, 60U)),
        rc::gen::set(&Step::sixteenths, rc::gen::inRange(0U, longestPause * 16)));
}

/// Checks at every tick what must hold at any time.
class Inspector {
public:
    explicit Inspector(MonitorWorld& world) : world_(world), monitor_(*world.monitor) {}

    void inspect() {
        checkFigures(monitor_.reading().session);
        checkFigures(monitor_.reading().site);
        checkWindow();
        checkChart();
        checkPause();
        checkTexts();
        checkObservers();
        reviewAnnouncements();
    }

    void reviewAnnouncements() {
        const auto& posted = world_.notifications.posted();
        for (; reviewed_ < posted.size(); ++reviewed_) {
            const bool isDown = posted[reviewed_].title == "Tarnwick — Connection down";
            const bool isInTurn = isDown ? !isOwed_ || mayBeForgotten_ : isOwed_;
            RC_ASSERT(isInTurn);
            isOwed_ = isDown;
            mayBeForgotten_ = false;
        }
    }

    /// A new host owes nothing.
    void hostChanged() { isOwed_ = false; }

    /// An outage that ends now is never announced to have ended.
    void alertsOff() { mayBeForgotten_ = true; }

    /// Since the last inspection, if only for a moment.
    void resumed() { wasResumed_ = true; }

private:
    static void checkFigures(const StatCounter& counter) {
        RC_ASSERT(counter.replied + counter.lost <= counter.sent);
        RC_ASSERT(counter.fastestMs <= counter.averageMs + 1e-6);
        RC_ASSERT(counter.averageMs <= counter.slowestMs + 1e-6);
    }

    /// What is still booked has been sent within the window.
    void checkWindow() const {
        const double oldest = world_.loop.now() - world_.prefs->scoringConfig().averageOver;
        const auto& sent = world_.network.sent();
        const auto first = std::ranges::lower_bound(sent, oldest, {}, &SentRequest::at);
        RC_ASSERT(monitor_.measured().ledger.bookings() <= static_cast<std::size_t>(sent.end() - first));
        RC_ASSERT(monitor_.reading().lossIsKnown || monitor_.reading().lossPercent == 0);
        RC_ASSERT(monitor_.reading().lossPercent >= 0 && monitor_.reading().lossPercent <= 100);
        RC_ASSERT(!monitor_.reading().lossIsKnown || first != sent.end());
    }

    void checkChart() const {
        const Samples& samples = monitor_.measured().samples;
        if (samples.empty()) {
            return;
        }
        RC_ASSERT(samples.back().date - samples.front().date <= std::chrono::seconds(300));
        RC_ASSERT(
            std::ranges::adjacent_find(samples, std::ranges::greater_equal(), &Sample::id) == samples.end());
    }

    /// Nothing is sent, and nothing is open.
    void checkPause() {
        const std::size_t sent = world_.network.sent().size();
        const bool wasPaused = std::exchange(isPaused_, monitor_.reading().isPaused());
        const std::size_t sentBefore = std::exchange(sent_, sent);
        RC_ASSERT(!isPaused_ || world_.network.openSockets() == 0);
        RC_ASSERT(!isPaused_ || !wasPaused || wasResumed_ || sent == sentBefore);
        wasResumed_ = false;
    }

    void checkTexts() const {
        const Reading& reading = monitor_.reading();
        const bool isDown = reading.isDown();
        const bool isConnecting = reading.status == Status::starting && !reading.score;
        RC_ASSERT(reading.menuTitle(true) == expectedTitle(reading));
        RC_ASSERT(reading.downReason.has_value() == isDown);
        RC_ASSERT((reading.qualityTitle == "Connection down") == isDown);
        RC_ASSERT(reading.qualityTitle.starts_with("Paused until ") == reading.isPaused());
        RC_ASSERT((reading.qualityTitle == "Connecting…") == (isConnecting && !reading.isPaused()));
        RC_ASSERT(!reading.isPaused() || isConnecting);
        RC_ASSERT((reading.qualityTone == QualityTone::neutral) == isConnecting);
        RC_ASSERT(!isDown || reading.qualityTone == QualityTone::bad);
        RC_ASSERT((reading.bars == 0) == (isDown || !reading.score));
        RC_ASSERT(reading.accessibilitySummary.starts_with("Connection down, ") == isDown);
        RC_ASSERT(reading.tooltip.starts_with("Latest Ping Time: –\n") == !reading.latestPingMs.has_value());
        RC_ASSERT(reading.tooltip.ends_with("Loss: –") == !reading.lossIsKnown);
        RC_ASSERT(std::abs(reading.score.value_or(0) + 0.75) <= 1.75 + 1e-9); // -2.5 to 1
    }

    [[nodiscard]] static std::string expectedTitle(const Reading& reading) {
        if (reading.isDown()) {
            return "Failed";
        }
        if (reading.isPaused()) {
            return "Paused";
        }
        if (!reading.latestPingMs) {
            return "…";
        }
        const std::string latency = MenuBarTitle::ping(*reading.latestPingMs);
        return reading.lossIsKnown ? latency + MenuBarTitle::lossSuffix(reading.lossPercent) : latency;
    }

    void checkObservers() const { RC_ASSERT(readings_.falseAlarms() == 0); }

    MonitorWorld& world_;
    Monitor& monitor_;
    std::size_t reviewed_ = 0;
    bool isOwed_ = false;
    bool mayBeForgotten_ = false;
    bool isPaused_ = false;
    bool wasResumed_ = false;
    std::size_t sent_ = 0;
    ChangeCounter<Reading> readings_{[this] { return monitor_.reading(); }};
};

/// A world to which steps happen.
class RandomDay {
public:
    RandomDay() {
        world_.setHost("twofold.test", {"192.0.2.3", "2001:db8::3"});
        world_.setHost("slow.test", {"192.0.2.4"}, 6);
        world_.setUnknownHost("unknown.test");
        world_.network.setHangingHost("hanging.test");
        world_.start();
        inspector_.emplace(world_);
        world_.monitor->onTick = [this](double /*now*/) { inspector_->inspect(); };
    }

    RandomDay(const RandomDay&) = delete;
    RandomDay& operator=(const RandomDay&) = delete;

    void take(const Step& step) {
        inspector_->reviewAnnouncements();
        happen(step);
        world_.pass(step.sixteenths / 16.0);
    }

    /// Whatever has happened: with a good network and a good host it is up again.
    void recover() {
        world_.answerAfter(MonitorWorld::usualDelay);
        world_.network.setSendFails(false);
        world_.network.setSocketError(AF_INET, std::nullopt);
        world_.monitor->resume();
        inspector_->resumed();
        changeHost("192.0.2.200");
        world_.pass(5);
        RC_ASSERT(world_.monitor->reading().status == Status::up);
    }

    /// What is counted is on disk at the end.
    void end() {
        const StatCounter site = world_.monitor->reading().site;
        world_.end();
        RC_ASSERT(world_.store().load().at(world_.prefs->hostname()) == site);
    }

private:
    void happen(const Step& step) {
        switch (step.event) {
        case Event::silence:
        case Event::answers:
        case Event::loss:
        case Event::sendsFail:
        case Event::socketsRefused:
            changeNetwork(step);
            break;
        case Event::interval:
        case Event::timeout:
        case Event::threshold:
        case Event::alerts:
        case Event::restoreDefaults:
            changeSettings(step);
            break;
        default:
            happenAround(step);
        }
    }

    void changeNetwork(const Step& step) {
        switch (step.event) {
        case Event::silence:
            world_.fallSilent();
            break;
        case Event::answers:
            world_.answerAfter(
                0.01 + step.choice / 10.0); // none takes no time: 0 ms stands for "no reply yet"
            break;
        case Event::loss:
            world_.network.setBehavior([choice = step.choice, number = 0U](const SentRequest&) mutable {
                ++number;
                return Answer{
                    .delay = 0.01 + (number % 7) / 10.0, .copies = number * 37 % 60 < choice ? 0 : 1};
            });
            break;
        case Event::sendsFail:
            world_.network.setSendFails(step.choice % 2 == 0);
            break;
        default:
            world_.network.setSocketError(
                AF_INET,
                step.choice % 2 == 0 ? std::optional<std::string>("Permission denied") : std::nullopt);
        }
    }

    void changeSettings(const Step& step) {
        Preferences& prefs = *world_.prefs;
        switch (step.event) {
        case Event::interval:
            prefs.setPingInterval(step.choice + 1);
            break;
        case Event::timeout:
            prefs.setPingTimeout(1 + step.choice / 4.0);
            break;
        case Event::threshold:
            prefs.setSlowPingThresholdMs(step.choice * 10);
            break;
        case Event::alerts:
            setAlerts(step.choice % 4 != 0);
            break;
        default:
            restoreDefaults();
        }
    }

    void happenAround(const Step& step) {
        constexpr std::array hosts{"192.0.2.1", "192.0.2.2",    "twofold.test",
                                   "slow.test", "unknown.test", "hanging.test"};
        switch (step.event) {
        case Event::host:
            changeHost(hosts.at(step.choice % hosts.size()));
            break;
        case Event::sleep:
            world_.sleep.goToSleep();
            world_.pass(step.choice);
            world_.loop.sleep(step.choice * 600.0);
            world_.sleep.wake();
            break;
        case Event::path:
            world_.path.report(step.choice % 3 != 0, {"eth" + std::to_string(step.choice % 2)});
            break;
        case Event::stop:
            world_.loop.stall(step.choice);
            break;
        case Event::resetSession:
            world_.monitor->resetSessionStats();
            break;
        case Event::resetAllTime:
            world_.monitor->resetAllTimeStats();
            break;
        case Event::pause:
            pause(step.choice);
            break;
        default:
            break;
        }
    }

    void pause(unsigned choice) {
        if (choice % 4 == 0) {
            world_.monitor->resume();
            inspector_->resumed();
        } else {
            world_.monitor->pause(static_cast<int>(choice * choice));
        }
    }

    void changeHost(const std::string& host) {
        if (host != world_.prefs->hostname()) {
            inspector_->hostChanged();
        }
        world_.monitor->setHostname(host);
    }

    void setAlerts(bool on) {
        world_.prefs->setShowNotifications(on);
        if (!on) {
            inspector_->alertsOff();
        }
    }

    void restoreDefaults() {
        const std::string before = world_.prefs->hostname();
        world_.monitor->restoreDefaults();
        inspector_->alertsOff();
        if (world_.prefs->hostname() != before) {
            inspector_->hostChanged();
        }
    }

    MonitorWorld world_;
    std::optional<Inspector> inspector_;
};

void live(const std::vector<Step>& steps) {
    RandomDay day;
    for (const Step& step : steps) {
        day.take(step);
    }
    day.recover();
    day.end();
}

/// Like `rc::check`, for cases that are too long for a hundred of them.
template<class Testable>
bool checkTimes(int times, const std::string& description, Testable testable) {
    rc::detail::TestMetadata metadata;
    metadata.id = description;
    metadata.description = description;
    rc::detail::TestParams params = rc::detail::configuration().testParams;
    params.maxSuccess = times;
    params.disableShrinking = times == 1; // each try would cost a day again
    const auto result = rc::detail::checkTestable(testable, metadata, params);
    rc::detail::printResultMessage(result, std::cerr);
    std::cerr << '\n';
    return result.template is<rc::detail::SuccessResult>();
}

TEST(RandomDaySimulationTest, WhateverHappensInShortOrderTheModelStaysConsistent) {
    EXPECT_TRUE(
        checkTimes(40, "random minutes", [] { live(*rc::gen::container<std::vector<Step>>(anyStep(20))); }));
}

TEST(RandomDaySimulationTest, WhateverHappensInADayTheModelStaysConsistent) {
    constexpr std::size_t steps = 48;
    constexpr unsigned longestPause = 3600;
    const auto day = rc::gen::resize(
        rc::kNominalSize, rc::gen::container<std::vector<Step>>(steps, anyStep(longestPause)));
    EXPECT_TRUE(checkTimes(1, "a random day", [&day] { live(*day); }));
}

} // namespace

} // namespace tarnwick::simulation
