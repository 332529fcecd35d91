#include "tests/app/Monitor/MonitorScript.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sstream>
#include <vector>

namespace tarnwick::simulation {

namespace {

std::string shown(const StatCounter& counter) {
    std::ostringstream text;
    text << counter.sent << " sent " << counter.replied << " replied " << counter.lost << " lost";
    if (counter.averageMs != 0 || counter.fastestMs != 0 || counter.slowestMs != 0) {
        text << ' ' << counter.averageMs << '/' << counter.fastestMs << '/' << counter.slowestMs << " ms";
    }
    return text.str();
}

std::string shown(const PingError& error) {
    return (error.kind == PingError::Kind::socket ? "socket: " : "resolution: ") + error.text;
}

std::string shown(const DownReason& reason) {
    constexpr std::array names{"socketError", "hostNotFound", "noNetwork", "noReplies"};
    const std::string name = names.at(static_cast<std::size_t>(reason.kind));
    return reason.text.empty() ? name : name + ": " + reason.text;
}

template<class Value>
std::string shown(const Value& value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

template<class Value>
std::string shown(const std::optional<Value>& value) {
    return value ? shown(*value) : "none";
}

template<class Value>
std::string shown(const std::vector<Value>& values) {
    std::string text;
    for (const Value& value : values) {
        text += (text.empty() ? "" : " ") + shown(value);
    }
    return text.empty() ? "none" : text;
}

} // namespace

std::string MonitorScript::play(const Step& step) {
    if (step.words.front() != "second") {
        return carryOut(step);
    }
    if (!second_) {
        second_ = std::make_unique<MonitorScript>(folder);
    }
    return second_->carryOut({step.line, {step.words.begin() + 1, step.words.end()}, step.expected});
}

std::string MonitorScript::carryOut(const Step& step) {
    const std::string& name = step.words.front();
    if (const auto command = commands_.find(name); command != commands_.end()) {
        command->second(step);
        return {};
    }
    const auto question = questions_.find(name);
    return question != questions_.end() ? question->second(step) : "no such step";
}

void MonitorScript::addSteps() {
    addSettings();
    addSurroundings();
    addCommands();
    addVerdicts();
    addPings();
    addStatistics();
}

void MonitorScript::addSettings() {
    commands_["stored"] = [this](const Step& step) {
        const std::string& name = step.word(1);
        if (name == "hostname") {
            defaults.put(PreferenceKey::hostname, step.word(2));
        } else if (name == "alerts") {
            defaults.put(PreferenceKey::showNotifications, step.word(2) == "on");
        } else {
            const std::map<std::string, std::string> keys{
                {"interval", PreferenceKey::pingInterval},
                {"timeout", PreferenceKey::pingTimeout},
                {"threshold", PreferenceKey::slowPingLowThreshold}};
            defaults.put(keys.at(name), step.number(2));
        }
    };
    commands_["reload"] = [this](const Step&) { prefs->reload(); };
    commands_["hostname"] = [this](const Step& step) { prefs->setHostname(step.word(1)); };
    commands_["interval"] = [this](const Step& step) { prefs->setPingInterval(step.number(1)); };
    commands_["timeout"] = [this](const Step& step) { prefs->setPingTimeout(step.number(1)); };
    commands_["threshold"] = [this](const Step& step) { prefs->setSlowPingThresholdMs(step.number(1)); };
    commands_["alerts"] = [this](const Step& step) { prefs->setShowNotifications(step.word(1) == "on"); };
    questions_["host"] = [this](const Step&) { return prefs->hostname(); };
    questions_["flushed"] = [this](const Step&) { return defaults.isFlushed() ? "yes" : "no"; };
}

void MonitorScript::addSurroundings() {
    commands_["pass"] = [this](const Step& step) { pass(step.number(1)); };
    commands_["stall"] = [this](const Step& step) { loop.stall(step.number(1)); };
    commands_["answers"] = [this](const Step& step) { setDelays(step); };
    commands_["silence"] = [this](const Step&) { fallSilent(); };
    commands_["reply"] = [this](const Step& step) {
        deliverReply(network.sent().front().id + static_cast<std::uint64_t>(step.number(1)) - 1);
        loop.runPending();
    };
    commands_["lookup"] = [this](const Step& step) { setLookup(step); };
    commands_["socketError"] = [this](const Step&) { network.setSocketError(AF_INET, "Permission denied"); };
    commands_["sendError"] = [this](const Step&) { network.setSendFails(true); };
    commands_["clock"] = [this](const Step& step) {
        loop.setWallClock(loop.wallNow() + std::chrono::seconds(static_cast<int>(step.number(1))));
    };
    commands_["asleep"] = [this](const Step& step) { loop.sleep(step.number(1)); };
    commands_["sleep"] = [this](const Step&) { sleep.goToSleep(); };
    commands_["wake"] = [this](const Step&) { sleep.wake(); };
    commands_["path"] = [this](const Step& step) {
        if (step.word(1) == "again") {
            path.repeat();
        } else {
            path.report(step.word(1) == "on", {step.words.begin() + 2, step.words.end()});
        }
    };
}

void MonitorScript::addCommands() {
    commands_["create"] = [this](const Step&) { create(); };
    commands_["start"] = [this](const Step&) { start(); };
    commands_["end"] = [this](const Step&) { end(); };
    commands_["kill"] = [this](const Step&) { kill(); };
    commands_["enter"] = [this](const Step& step) { monitor->setHostname(step.word(1)); };
    commands_["restoreDefaults"] = [this](const Step&) { monitor->restoreDefaults(); };
    commands_["save"] = [this](const Step&) { monitor->saveStats(); };
    commands_["pause"] = [this](const Step& step) { monitor->pause(static_cast<int>(step.number(1))); };
    commands_["resume"] = [this](const Step&) { monitor->resume(); };
    commands_["toggle"] = [this](const Step&) { monitor->togglePause(); };
    commands_["tryAgain"] = [this](const Step&) { monitor->tryAgain(); };
    commands_["resetSession"] = [this](const Step&) { monitor->resetSessionStats(); };
    commands_["resetAllTime"] = [this](const Step&) { monitor->resetAllTimeStats(); };
}

void MonitorScript::addVerdicts() {
    questions_["status"] = [this](const Step&) {
        constexpr std::array names{"starting", "up", "down"};
        return std::string(names.at(static_cast<std::size_t>(monitor->reading().status)));
    };
    questions_["paused"] = [this](const Step&) {
        const auto& until = monitor->reading().pausedUntil;
        return until ? shown(std::chrono::duration<double>(*until - loop.wallNow()).count()) : "no";
    };
    questions_["score"] = [this](const Step&) { return shown(monitor->reading().score); };
    questions_["bars"] = [this](const Step&) { return shown(monitor->reading().bars); };
    questions_["latency"] = [this](const Step&) { return shown(monitor->reading().latestPingMs); };
    questions_["loss"] = [this](const Step&) {
        const Reading& reading = monitor->reading();
        return reading.lossIsKnown        ? shown(reading.lossPercent)
               : reading.lossPercent == 0 ? "unknown"
                                          : "unknown but above 0";
    };
    questions_["reason"] = [this](const Step&) { return shown(monitor->reading().downReason); };
    questions_["reasonText"] = [this](const Step&) { return monitor->reading().downReasonText; };
    questions_["startError"] = [this](const Step&) { return shown(monitor->reading().startError); };
    questions_["lastError"] = [this](const Step&) { return shown(monitor->reading().lastError()); };
    questions_["address"] = [this](const Step&) { return shown(monitor->reading().resolvedAddress); };
    questions_["network"] = [this](const Step&) {
        return std::string(monitor->reading().pathSatisfied ? "on" : "off");
    };
    questions_["posted"] = [this](const Step&) { return posted(); };
}

void MonitorScript::addPings() {
    questions_["sent"] = [this](const Step&) { return shown(sendTimes()); };
    questions_["pings"] = [this](const Step& step) { return pingsWithin(step.number(1)); };
    questions_["target"] = [this](const Step&) { return network.sent().back().address; };
    questions_["starts"] = [this](const Step&) { return shown(restarts()); };
    questions_["sockets"] = [this](const Step&) { return shown(network.openSockets()); };
    questions_["timers"] = [this](const Step&) { return shown(loop.timerCount()); };
    questions_["ticks"] = [this](const Step& step) { return ticksWithin(step.number(1)); };
    questions_["listensTo"] = [this](const Step&) {
        return shown(path.starts()) + " path " + shown(sleep.starts()) + " sleep";
    };
    questions_["samples"] = [this](const Step&) { return shown(monitor->reading().samples); };
    questions_["sample"] = [this](const Step& step) {
        return sample(static_cast<std::size_t>(step.number(1)) - 1);
    };
}

void MonitorScript::addStatistics() {
    commands_["figures"] = [this](const Step& step) { storeFigures(step); };
    commands_["removeFile"] = [this](const Step&) { std::filesystem::remove(statsFile()); };
    questions_["session"] = [this](const Step&) { return shown(monitor->reading().session); };
    questions_["allTime"] = [this](const Step&) { return shown(monitor->reading().site); };
    questions_["bookings"] = [this](const Step&) { return shown(monitor->measured().ledger.bookings()); };
    questions_["saved"] = [this](const Step& step) { return saved(step.word(1)); };
    questions_["recording"] = [this](const Step&) {
        constexpr std::array names{"records", "otherRecords", "cannotRecord"};
        return std::string(names.at(static_cast<std::size_t>(monitor->reading().recording)));
    };
}

void MonitorScript::setDelays(const Step& step) {
    std::vector<Answer> answers;
    for (std::size_t word = 1; word < step.words.size(); ++word) {
        answers.push_back(step.word(word) == "-" ? Answer{.copies = 0} : Answer{.delay = step.number(word)});
    }
    if (answers.empty()) {
        answers.push_back({.delay = usualDelay});
    }
    network.setBehavior([answers, next = std::size_t{0}](const SentRequest&) mutable {
        return answers.at(std::min(next++, answers.size() - 1));
    });
}

void MonitorScript::setLookup(const Step& step) {
    const std::string& outcome = step.word(1);
    if (outcome == "takes") {
        setHost(host, {host}, step.number(2));
        return;
    }
    const std::string name = step.words.size() > 2 ? step.word(2) : host;
    if (outcome == "hangs") {
        network.setHangingHost(name);
    } else if (outcome == "fails") {
        setUnknownHost(name);
    } else {
        ASSERT_EQ(outcome, "works");
        setHost(name, {name});
    }
}

void MonitorScript::storeFigures(const Step& step) {
    const auto count = [&](std::size_t word) { return static_cast<std::int64_t>(step.number(word)); };
    StatCounter& counter = figures_[step.word(1)];
    counter.sent = count(2);
    if (step.words.size() > 3) {
        counter = {count(2), count(3), count(4), step.number(5), step.number(6), step.number(7)};
    }
    ASSERT_FALSE(store().save(figures_));
}

std::string MonitorScript::pingsWithin(double seconds) {
    const std::size_t before = network.sent().size();
    const double now = loop.now();
    pass(seconds);
    std::vector<double> times;
    for (std::size_t i = before; i < network.sent().size(); ++i) {
        times.push_back(network.sent()[i].at - now);
    }
    return shown(times);
}

std::string MonitorScript::ticksWithin(double seconds) {
    std::vector<double> times;
    monitor->onTick = [&](double now) { times.push_back(now - startedAt); };
    pass(seconds);
    monitor->onTick = nullptr;
    return shown(times);
}

std::string MonitorScript::sample(std::size_t number) const {
    const Sample& sample = monitor->measured().samples.at(number);
    return (sample.rttMs ? shown(*sample.rttMs) + " ms" : "no reply") + (sample.lost ? " lost" : "");
}

std::string MonitorScript::posted() const {
    std::vector<std::string> names;
    for (const auto& [title, body] : notifications.posted()) {
        if (title == "Tarnwick — Connection down"
            && body.starts_with("Your internet connection seems to be down. ")) {
            names.emplace_back("down");
        } else if (
            title == "Tarnwick — Connection restored"
            && body == "Your internet connection has been restored.") {
            names.emplace_back("restored");
        } else {
            names.push_back(title + ": " + body);
        }
    }
    return shown(names);
}

std::string MonitorScript::saved(const std::string& name) const {
    const StatsByHost figures = store().load();
    if (!name.empty()) {
        const auto found = figures.find(name);
        return found != figures.end() ? shown(found->second) : "none";
    }
    std::vector<std::string> names;
    for (const auto& [savedName, counter] : figures) {
        names.push_back(savedName);
    }
    return std::filesystem::exists(statsFile()) ? shown(names) : "no file";
}

} // namespace tarnwick::simulation
