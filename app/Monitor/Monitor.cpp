#include "app/Monitor/Monitor.h"

#include <algorithm>
#include <random>
#include <ranges>

namespace tarnwick {

namespace {

/// A tick may come this late. Pings fire about a millisecond after it, so both share one wake-up.
constexpr double housekeepingTolerance = 0.01;

template<class... Visitors>
struct Overloaded : Visitors... {
    using Visitors::operator()...;
};

template<class... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

std::uint64_t randomBelow(std::uint64_t bound) {
    std::random_device source;
    return std::uniform_int_distribution<std::uint64_t>(0, bound - 1)(source);
}

ConnectionWatchdog::Config watchdogConfig(const Preferences& prefs) {
    return ConnectionWatchdog::Config::original(prefs.pingTimeout(), prefs.pingInterval());
}

} // namespace

Monitor::Monitor(Preferences& prefs, const MonitorEnvironment& environment)
    : prefs_(prefs),
      loop_(environment.loop),
      network_(environment.network),
      pathMonitor_(environment.path),
      sleepMonitor_(environment.sleep),
      notifications_(environment.notifications),
      missingPingPermission_(environment.missingPingPermission),
      recorder_(environment.store),
      history_(environment.loop, environment.journal),
      sources_(environment.diagnosis),
      watchdog_(watchdogConfig(prefs), environment.loop.now()),
      identifier_(static_cast<std::uint16_t>(randomBelow(std::uint64_t{1} << 16))),
      nextPingId_(randomBelow(std::uint64_t{1} << 32)) {
    makeDiagnostician();
    publish();
}

Reading Monitor::presentReading() const {
    const ReadingSettings settings{
        .hostname = prefs_.hostname(),
        .slowPingThresholdMs = prefs_.slowPingThresholdMs(),
        .pingTimeout = prefs_.pingTimeout(),
        .pingInterval = prefs_.pingInterval(),
        .lossTextMode = prefs_.lossTextMode(),
    };
    return makeReading(measured_, settings, loop_.wallNow());
}

ConnectionState Monitor::connectionState() const {
    return {
        .trouble = trouble(),
        .verdict = measured_.verdict,
        .address = measured_.resolvedAddress.value_or(""),
        .interface = interface_};
}

void Monitor::publish() {
    if (history_.isRecording()) {
        history_.follow(connectionState());
        measured_.historyProblem = history_.problem();
    }
    reading_.set(presentReading());
}

void Monitor::start() {
    const PublishAtEnd publishAtEnd(*this);
    host_ = prefs_.hostname();
    pingInterval_ = prefs_.pingInterval();
    pingTimeout_ = prefs_.pingTimeout();
    recorder_.load();
    measured_.recording = recorder_.state();
    measured_.recordingProblem = recorder_.problem();
    measured_.ledger.resetSite(recorder_.counterOf(prefs_.hostname()));
    lastTick_ = loop_.now();
    housekeepingTimer_ =
        loop_.everyRoughly(lastTick_ + tickInterval, tickInterval, housekeepingTolerance, [this] { tick(); });
    prefs_.onChange = lifeline_.guarded([this] { settingsChanged(); });
    observeSystemEvents();
    followAlerts();
    followHistory();
    refreshWatchdogConfig();
    carryOut(watchdog_.reset(loop_.now(), 0, true));
}

void Monitor::saveStats() {
    saveStatsOf(prefs_.hostname(), FileStore::Durability::powerCut);
    history_.save();
}

void Monitor::saveStatsOf(const std::string& host, FileStore::Durability durability) {
    const PublishAtEnd publishAtEnd(*this);
    const auto saved = recorder_.save(host, measured_.ledger.site(), durability);
    if (saved == StatsRecorder::Saved::tookOver) {
        measured_.ledger.resetSite(recorder_.counterOf(host));
    }
    measured_.recording = recorder_.state();
    measured_.recordingProblem = recorder_.problem();
    measured_.unreadableStats = recorder_.keptAside().string();
    measured_.surplusHosts = recorder_.surplus();
}

History Monitor::history(const Span& span) const {
    return history_.history(prefs_.hostname(), span);
}

std::string Monitor::whyNoHistory() const {
    if (!prefs_.keepsHistory()) {
        return "No history is kept: KeepHistory is off.";
    }
    const std::string problem = history_.problem();
    return problem.empty() ? "Nothing has been recorded yet." : problem;
}

void Monitor::refreshWatchdogConfig() {
    watchdog_.setConfig(watchdogConfig(prefs_));
}

void Monitor::restartPinger() {
    stopPinging();
    lastStart_ = loop_.now();
    lookup_ = Lookup{.begun = lastStart_};
    pinger_ = std::make_unique<Pinger>(
        loop_, network_, prefs_.hostname(), identifier_, prefs_.pingTimeout(), place_);
    pinger_->onEvent = [this](const Pinger::Event& event) { handle(event); };
    pinger_->start();
}

void Monitor::stopPinging() {
    pingTimer_.reset();
    if (lookup_ && !lookup_->ended) {
        lookup_.reset();
    }
    if (pinger_) {
        place_ = pinger_->place();
    }
    pinger_.reset();
}

void Monitor::schedulePingTimer() {
    const double interval = prefs_.pingInterval();
    const double now = loop_.now();
    const double firstFire = lastPingSent_ ? std::max(now, *lastPingSent_ + interval) : now + interval;
    pingTimer_ = loop_.every(firstFire, interval, [this] { sendPing(); });
}

Sample* Monitor::sampleOf(std::uint64_t id) {
    const auto newestFirst = std::views::reverse(measured_.samples);
    const auto sample = std::ranges::find(newestFirst, id, &Sample::id);
    return sample != newestFirst.end() ? &*sample : nullptr;
}

void Monitor::sendPing() {
    if (!pinger_) {
        return;
    }
    const PublishAtEnd publishAtEnd(*this);
    const std::uint64_t id = nextPingId_++;
    const RunLoop::WallTime date = loop_.wallNow();
    const double sent = pinger_->send(id).at;
    lastPingSent_ = sent;
    pending_.push_back({.id = id, .sent = sent});
    addSample({.id = id, .date = date});
    const bool isCounted = measured_.status != Status::down;
    measured_.ledger.sent(id, isCounted);
    history_.pingSent(id, isCounted);
}

void Monitor::addSample(const Sample& sample) {
    Samples& samples = measured_.samples;
    // After the wall clock was set back, the chart would draw these once more when their time comes again.
    while (!samples.empty() && samples.back().date > sample.date) {
        samples.pop_back();
    }
    samples.push_back(sample);
    while (sample.date - samples.front().date > LatencyChart::span) {
        samples.pop_front();
    }
}

void Monitor::handle(const Pinger::Event& happened) {
    const PublishAtEnd publishAtEnd(*this);
    if (lookup_ && !lookup_->ended) {
        lookup_->ended = loop_.now(); // whatever has happened, it is over
    }
    const Overloaded visitor{
        [this](const Pinger::Started& started) { pingingStarted(started.address); },
        [this](const Pinger::Switched& switched) { pingsGoTo(switched.address); },
        [this](const Pinger::Failed& failed) { pingingFailed(failed.error); },
        [this](const Pinger::Reply& reply) { receivedReply(reply.id, reply.at); },
    };
    std::visit(visitor, happened);
}

void Monitor::pingsGoTo(const ResolvedAddress& address) {
    pinged_ = address;
    measured_.resolvedAddress = address.display;
}

void Monitor::pingingStarted(const ResolvedAddress& address) {
    pingsGoTo(address);
    measured_.startError = std::nullopt;
    watchdog_.pingingStarted(loop_.now());
    sendPing();
    schedulePingTimer();
}

void Monitor::pingingFailed(const PingError& error) {
    measured_.startError = error;
    const bool mayBeForbidden = error.kind == PingError::Kind::socket && missingPingPermission_;
    measured_.pingPermissionCommand = mayBeForbidden ? missingPingPermission_() : std::nullopt;
    carryOut(watchdog_.startFailed(loop_.now()));
}

void Monitor::receivedReply(std::uint64_t id, double at) {
    const auto ping = std::ranges::find(pending_, id, &PendingPing::id);
    if (ping == pending_.end() || ping->reply) {
        return;
    }
    // The kernel's stamp comes from another clock: it may err by more than loopback takes.
    const double arrival = std::max(at, ping->sent);
    ping->reply = arrival;
    const double rttMs = (arrival - ping->sent) * 1000;
    if (Sample* const sample = sampleOf(id)) {
        sample->rttMs = rttMs;
    }
    // The silence begins with the reading: a busy machine is no outage.
    carryOut(watchdog_.replyReceived(loop_.now()));
    measured_.latestPingMs = rttMs;
    const bool isWithinTimeout = rttMs <= prefs_.pingTimeout() * 1000;
    measured_.ledger.replied(id, rttMs, isWithinTimeout);
    history_.pingReplied(id, rttMs, isWithinTimeout);
    if (measured_.status == Status::up && !measured_.score) {
        evaluate(loop_.now()); // bars belong to the first answer: the tick would be up to a second late
    }
}

} // namespace tarnwick
