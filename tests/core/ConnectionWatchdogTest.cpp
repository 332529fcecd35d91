// When the connection is down or up, when the pinger is restarted, and what is announced: cases/watchdog.txt.
#include "core/ConnectionWatchdog.h"

#include "tests/core/CaseFile.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <map>
#include <sstream>

namespace tarnwick {
namespace {

using Config = ConnectionWatchdog::Config;

struct Settings {
    double timeout;
    double interval;
    Config expected;
};

class WatchdogConfig : public testing::TestWithParam<Settings> {};

INSTANTIATE_TEST_SUITE_P(
    FromSettings, WatchdogConfig,
    testing::Values(
        Settings{4, 1, {8, 20, 10, 2, 2, 15, 10}}, Settings{2.5, 10, {42.5, 54.5, 10, 2, 2, 15, 10}},
        Settings{4, 15, {64, 76, 10, 2, 2, 15, 10}}, Settings{4, 20, {64, 76, 10, 2, 2, 20, 10}},
        Settings{4, 30, {64, 76, 10, 2, 2, 30, 10}}, Settings{4, 40, {84, 96, 10, 2, 2, 40, 10}},
        Settings{4, 60, {124, 136, 10, 2, 2, 60, 10}}));

TEST_P(WatchdogConfig, HasItsLimits) {
    EXPECT_EQ(Config::original(GetParam().timeout, GetParam().interval), GetParam().expected);
}

/// Plays one case. What an event leads to is a text: the status if it has changed, then the actions.
class Watchdog : public testing::TestWithParam<test::Case> {
protected:
    std::string play(const test::CaseStep& step) {
        const std::map<std::string, std::function<std::string()>> steps{
            {"settings", [&] { return limit(Config::original(step.number(1), step.number(2))); }},
            {"limit", [&] { return limit(step.word(1), step.number(2)); }},
            {"begin", [&] { return begin(step.word(1)); }},
            {"alerts", [&] { return alerts(step.word(1) == "on"); }},
            {"reset", [&] { return reset(step.number(1), step.number(2), step.word(3) == "new"); }},
            {"started", [&] { return started(step.number(1)); }},
            {"failed", [&] { return outcome(watchdog_.startFailed(step.number(1))); }},
            {"reply", [&] { return outcome(watchdog_.replyReceived(step.number(1))); }},
            {"heldUp",
             [&] {
                 watchdog_.heldUp(step.number(1));
                 return outcome({});
             }},
            {"network", [&] { return outcome(watchdog_.networkChanged(step.number(1))); }},
            {"tick", [&] { return outcome(watchdog_.tick(step.number(1))); }},
            {"ticks", [&] { return restarts(step.number(1), step.number(2)); }},
            {"status", [&] { return nameOf(watchdog_.status()); }},
            {"resolving", [&] { return std::string(watchdog_.isResolving() ? "yes" : "no"); }},
        };
        const auto found = steps.find(step.words.front());
        return found != steps.end() ? found->second() : "no such step";
    }

private:
    static std::string nameOf(ConnectionWatchdog::Status status) {
        constexpr std::array names{"starting", "up", "down"};
        return names.at(static_cast<std::size_t>(status));
    }

    std::string outcome(const ConnectionWatchdog::Actions& actions) {
        constexpr std::array names{"restartPinger", "startTimedOut", "announceDown", "announceUp"};
        std::string text;
        if (watchdog_.status() != status_) {
            status_ = watchdog_.status();
            text = nameOf(status_);
        }
        for (const ConnectionWatchdog::Action action : actions) {
            text += text.empty() ? "" : " ";
            text += names.at(static_cast<std::size_t>(action));
        }
        return text;
    }

    std::string limit(const Config& config) {
        config_ = config;
        watchdog_.setConfig(config);
        return {};
    }

    std::string limit(const std::string& name, double value) {
        const std::map<std::string, double Config::*> limits{
            {"replyTimeout", &Config::replyTimeout},
            {"grace", &Config::grace},
            {"retryDelay", &Config::retryDelay},
            {"minRestartInterval", &Config::minRestartInterval},
            {"maxRestartInterval", &Config::maxRestartInterval},
        };
        config_.*limits.at(name) = value;
        return limit(config_);
    }

    /// The states that most cases begin with, each one step further.
    std::string begin(const std::string& state) {
        EXPECT_EQ(reset(0, 0, true), "restartPinger");
        if (state == "resolving") {
            return {};
        }
        started(0);
        if (state == "pinging") {
            return {};
        }
        alerts(true);
        EXPECT_EQ(outcome(watchdog_.replyReceived(1)), "up");
        if (state == "confirmed") {
            return {};
        }
        EXPECT_EQ(state, "announcedDown");
        EXPECT_EQ(outcome(watchdog_.tick(10)), "down announceDown restartPinger");
        return started(10);
    }

    std::string alerts(bool on) {
        watchdog_.setAlertsEnabled(on);
        return {};
    }

    std::string reset(double now, double restartAfter, bool newHost) {
        return outcome(watchdog_.reset(now, restartAfter, newHost));
    }

    std::string started(double now) {
        watchdog_.pingingStarted(now);
        return outcome({});
    }

    /// Ticks every quarter of a second; each restart is settled at once.
    std::string restarts(double begin, double end) {
        std::ostringstream times;
        for (double now = begin; now <= end; now += 0.25) {
            if (outcome(watchdog_.tick(now)).ends_with("restartPinger")) {
                times << (times.tellp() == 0 ? "" : " ") << now;
                watchdog_.pingingStarted(now);
            }
        }
        return times.str();
    }

    Config config_ = Config::original(4, 1);
    ConnectionWatchdog watchdog_{config_, 0};
    ConnectionWatchdog::Status status_ = ConnectionWatchdog::Status::starting;
};

INSTANTIATE_TEST_SUITE_P(
    Connection, Watchdog, testing::ValuesIn(test::readCases("watchdog.txt")), test::caseName);

TEST_P(Watchdog, Holds) {
    for (const test::CaseStep& step : GetParam().steps) {
        EXPECT_EQ(play(step), step.expected) << test::place(GetParam(), step);
    }
}

} // namespace
} // namespace tarnwick
