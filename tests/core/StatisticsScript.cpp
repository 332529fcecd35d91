#include "tests/core/StatisticsScript.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <unordered_set>
#include <utility>

namespace tarnwick::test {

namespace {

enum Rank { replyRank, sendRank, tickRank, commandRank };

constexpr double acceptedError = 0.0005; ///< expectations are written with three decimals

std::string written(double value) {
    std::ostringstream text;
    text << std::setprecision(12) << value;
    return text.str();
}

std::string figureOf(const StatCounter& counter, const std::string& name) {
    const std::array<std::pair<const char*, double>, 7> figures{{
        {"sent", static_cast<double>(counter.sent)},
        {"replied", static_cast<double>(counter.replied)},
        {"lost", static_cast<double>(counter.lost)},
        {"average", counter.averageMs},
        {"fastest", counter.fastestMs},
        {"slowest", counter.slowestMs},
        {"loss", counter.lossPercent()},
    }};
    const auto* const found =
        std::ranges::find_if(figures, [&name](const auto& entry) { return entry.first == name; });
    return found != figures.end() ? written(found->second) : "no such figure";
}

bool isNumber(const std::string& text) {
    std::istringstream words(text);
    double number = 0;
    return static_cast<bool>(words >> number) && words.eof();
}

bool agree(const std::string& expected, const std::string& actual) {
    if (isNumber(expected) && isNumber(actual)) {
        return std::abs(std::stod(expected) - std::stod(actual)) <= acceptedError;
    }
    return expected == actual;
}

} // namespace

StatisticsScript::StatisticsScript(const std::filesystem::path& file) {
    std::ifstream lines(file);
    std::string text;
    std::size_t line = 0;
    while (std::getline(lines, text)) {
        readLine(++line, text.substr(0, text.find('#')));
    }
    if (line == 0) {
        complain(0, "cannot be read: " + file.string());
    }
    addTicks();
}

std::vector<std::string> StatisticsScript::play() {
    for (const auto& [moment, act] : steps_) {
        act();
    }
    return complaints_;
}

void StatisticsScript::readLine(std::size_t line, const std::string& text) {
    std::istringstream words(text);
    std::string first;
    if (!(words >> first)) {
        return;
    }
    double at = 0;
    if (first == "settings") {
        readSettings(words);
    } else if (first == "pings") {
        readPings(line, words);
    } else if (first == "at" && words >> at) {
        readCommand(line, at, words);
    } else {
        complain(line, "not understood: " + text);
    }
    if (words.fail() && !words.eof()) {
        complain(line, "not understood: " + text);
    }
}

void StatisticsScript::readSettings(std::istream& words) {
    double thresholdMs = 0;
    double timeout = 0;
    double interval = 0;
    if (words >> thresholdMs >> timeout >> interval) {
        config_ = ScoringConfig::original(thresholdMs, timeout, interval);
    }
}

/// "COUNT from SECOND every SECONDS" and then round-trip times in milliseconds, taken in turn; "-" is
/// silence.
void StatisticsScript::readPings(std::size_t line, std::istream& words) {
    int count = 0;
    std::string from;
    std::string every;
    double first = 0;
    double interval = 0;
    if (!(words >> count >> from >> first >> every >> interval) || from != "from" || every != "every") {
        complain(line, "expected: pings COUNT from SECOND every SECONDS [uncounted] TIME...");
        return;
    }
    std::vector<std::optional<double>> times;
    bool counted = true;
    for (std::string word; words >> word;) {
        if (word == "uncounted") {
            counted = false;
        } else if (word == "-" || isNumber(word)) {
            times.push_back(word == "-" ? std::nullopt : std::optional(std::stod(word)));
        } else {
            complain(line, "no round-trip time: " + word);
        }
    }
    for (int number = 0; number < count && !times.empty(); ++number) {
        addPing(
            line, first + number * interval, times[static_cast<std::size_t>(number) % times.size()], counted);
    }
}

void StatisticsScript::readCommand(std::size_t line, double at, std::istream& words) {
    std::string command;
    words >> command;
    const Moment moment{at, commandRank, line};
    StatCounter site;
    if (command == "expect") {
        readExpectations(line, at, words);
    } else if (command == "resetSession") {
        addStep(moment, [this] { ledger_.resetSession(); });
    } else if (
        command == "resetSite"
        && words >> site.sent >> site.replied >> site.lost >> site.averageMs >> site.fastestMs
               >> site.slowestMs) {
        addStep(moment, [this, site] { ledger_.resetSite(site); });
    } else if (command == "forgetPings") {
        addStep(moment, [this] {
            pings_.clear();
            ledger_.retain({});
        });
    } else {
        complain(line, "no such command: " + command);
    }
}

void StatisticsScript::readExpectations(std::size_t line, double at, std::istream& words) {
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos) {
            complain(line, "expected FIGURE=VALUE instead of " + word);
            continue;
        }
        ++expectationCount_;
        addStep(
            {at, commandRank, line}, [this, line, name = word.substr(0, equals),
                                      value = word.substr(equals + 1)] { expect(line, name, value); });
    }
}

void StatisticsScript::addStep(Moment moment, std::function<void()> act) {
    steps_.emplace(moment, std::move(act));
}

void StatisticsScript::addPing(
    std::size_t line, double sent, std::optional<double> roundTripMs, bool counted) {
    const std::uint64_t id = nextId_++;
    addStep({sent, sendRank, line}, [this, id, sent, counted] { sendPing(id, sent, counted); });
    if (roundTripMs) {
        const double arrival = sent + *roundTripMs / 1000;
        addStep({arrival, replyRank, line}, [this, id, arrival, ms = *roundTripMs] {
            receiveReply(id, arrival, ms);
        });
    }
}

/// One a second until the last thing that happens.
void StatisticsScript::addTicks() {
    const double end = steps_.empty() ? 0 : steps_.rbegin()->first.at;
    for (double now = 1; now <= end; ++now) {
        addStep({now, tickRank, 0}, [this, now] { tick(now); });
    }
}

void StatisticsScript::sendPing(std::uint64_t id, double now, bool counted) {
    pings_.push_back({.id = id, .sent = now});
    ledger_.sent(id, counted);
}

void StatisticsScript::receiveReply(std::uint64_t id, double now, double roundTripMs) {
    const auto ping = std::ranges::find(pings_, id, &PendingPing::id);
    if (ping == pings_.end()) {
        return;
    }
    ping->reply = now;
    ledger_.replied(id, roundTripMs, roundTripMs <= config_.timeout * 1000);
}

void StatisticsScript::tick(double now) {
    evaluation_ = QualityScorer::evaluate(pings_, now, config_);
    for (const PendingPing& ping : evaluation_.newlyLost) {
        ledger_.lost(ping.id);
    }
    std::unordered_set<std::uint64_t> held;
    for (const PendingPing& ping : pings_) {
        held.insert(ping.id);
    }
    ledger_.retain(held);
}

void StatisticsScript::expect(std::size_t line, const std::string& name, const std::string& value) {
    const std::string actual = figure(name);
    if (!agree(value, actual)) {
        complain(line, name + " is " + actual + " instead of " + value);
    }
}

std::string StatisticsScript::figure(const std::string& name) const {
    if (name.starts_with("session.")) {
        return figureOf(ledger_.session(), name.substr(8));
    }
    if (name.starts_with("site.")) {
        return figureOf(ledger_.site(), name.substr(5));
    }
    if (name == "score") {
        return evaluation_.score ? written(*evaluation_.score) : "none";
    }
    if (name == "bars") {
        return evaluation_.score ? std::to_string(QualityScorer::bars(*evaluation_.score, 5)) : "none";
    }
    if (name == "loss") {
        return written(evaluation_.lossPercent);
    }
    if (name == "window") {
        return std::to_string(pings_.size());
    }
    return "no such figure";
}

void StatisticsScript::complain(std::size_t line, const std::string& what) {
    complaints_.push_back("line " + std::to_string(line) + ": " + what);
}

} // namespace tarnwick::test
