#include "app/Diagnostician/Diagnostician.h"

#include "core/Diagnosis/Diagnosis.h"
#include "core/Diagnosis/HopSamples.h"
#include "core/Diagnosis/PingWindow.h"
#include "core/Diagnosis/VerdictPatience.h"

#include <algorithm>
#include <random>
#include <utility>
#include <variant>

namespace tarnwick {

namespace {

/// Seconds of what is looked back on: several rounds of probes.
constexpr double lookBack = 30;
/// Seconds for which evidence is gathered after trouble, in case that it comes back.
constexpr double lingering = 30;
/// Seconds by which trouble is older than the tick that tells of it.
constexpr double noticing = 4;
/// Seconds after which a longer way is the usual one.
constexpr double newUsual = 300;
/// Seconds from one question to the next.
constexpr double betweenConnectivityQuestions = 10;
/// Enough for every way.
constexpr int mostHopsOfAPing = 64;
/// More are read at the loop's next turn, so that a flood holds nothing else up.
constexpr int mostAnswersAtOnce = 64;

std::uint64_t randomId() {
    std::random_device source;
    return std::uniform_int_distribution<std::uint64_t>(0, std::uint64_t{1} << 32)(source);
}

} // namespace

Diagnostician::Diagnostician(RunLoop& loop, const DiagnosisSources& sources)
    : loop_(loop),
      sources_(sources),
      trace_(randomId()),
      name_(sources.nameServers, randomId()),
      hopNames_(sources.addressNames),
      connectivity_(betweenConnectivityQuestions) {
}

void Diagnostician::tick(const Situation& told) {
    Situation situation = told;
    follow(situation);
    probeName(situation);
    const bool isWellSoFar =
        situation.trouble == Trouble::none && !areAnswersLate(situation.pings, usualMs_, situation.now);
    isOnlyNameBad_ = isWellSoFar && name_.hasBadServer();
    if (situation.trouble == Trouble::none && (isOnlyNameBad_ || !isWellSoFar)) {
        situation.trouble = Trouble::degraded;
    }
    noteTrouble(situation, told.trouble == Trouble::none);
    if (situation.trouble != Trouble::none
        || isSilenceSuspicious(situation.pings, lastReply_, situation.now)) {
        watch(situation);
    } else {
        relax(situation);
    }
    const bool isShown = steady_.update(situation.now, presentVerdict(situation)).has_value();
    path_ = isShown ? trace_.hops(troubleSince(situation), situation.now) : std::vector<HopEvidence>{};
    hopNames_.fill(path_);
}

void Diagnostician::probeName(const Situation& situation) {
    const auto id = name_.tick(situation, addressToProbe());
    if (id && socket_ && address_) {
        socket_->send(*id, *address_, mostHopsOfAPing);
    }
}

std::optional<ResolvedAddress> Diagnostician::addressToProbe() const {
    return socket_ ? address_ : std::nullopt;
}

void Diagnostician::noteTrouble(const Situation& situation, bool areBarsWell) {
    if (situation.trouble != Trouble::none) {
        badSince_ = badSince_.value_or(situation.now);
        lastBad_ = situation.now;
    }
    const bool isUsualByNow = areBarsWell && badSince_ && situation.now - *badSince_ >= newUsual;
    if (situation.trouble == Trouble::none || isUsualByNow) {
        badSince_.reset();
        usualMs_ = situation.usualMs;
    }
}

std::optional<Verdict> Diagnostician::presentVerdict(const Situation& situation) const {
    const auto verdict = diagnose(evidenceOf(situation));
    return verdict && badSince_
               ? sayable(*verdict, situation.trouble, situation.now - *badSince_, steady_.shown())
               : verdict;
}

void Diagnostician::pathChanged() {
    changedAt_ = loop_.now();
    hasLearnt_ = false;
    lastBad_.reset();
    trace_ = PathTrace(randomId());
    linkState_.reset();
    load_.forget();
    usualMs_.reset();
    steady_ = {};
    words_.forget();
    name_.forgetServers();
    hopNames_.forget();
    connectivity_.forget();
}

void Diagnostician::follow(const Situation& situation) {
    if (situation.host != host_) {
        host_ = situation.host;
        lastReply_.reset();
        forgetAddress();
        pathChanged();
    }
    for (const PendingPing& ping : situation.pings) {
        if (ping.reply) {
            lastReply_ = std::max(lastReply_.value_or(*ping.reply), *ping.reply);
        }
    }
    if (situation.address != pinged_) {
        pinged_ = situation.address;
        pingedSince_ = situation.now;
    }
    // In an outage pings try one address after the other. The path that is known is that of the one before.
    const bool counts = !address_ || (lastReply_ && *lastReply_ > pingedSince_);
    if (pinged_ && pinged_ != address_ && counts) {
        turnTo(*pinged_);
    }
}

void Diagnostician::forgetAddress() {
    address_.reset();
    socket_.reset();
    name_.forgetAddress();
}

void Diagnostician::turnTo(const ResolvedAddress& address) {
    const bool needsSocket = !address_ || address_->family != address.family;
    address_ = address;
    pathChanged();
    if (needsSocket) {
        auto opened = sources_.probes.open(address.family, [this] { receive(); });
        auto* const socket = std::get_if<std::unique_ptr<ProbeSocket>>(&opened);
        socket_ = socket != nullptr ? std::move(*socket) : nullptr;
    }
}

/// All is well. For a while after trouble, evidence is gathered all the same.
void Diagnostician::relax(const Situation& situation) {
    const bool lingers = lastBad_ && situation.now - *lastBad_ < lingering;
    connectivity_.forget();
    hopNames_.retryUnknown();
    if (lingers) {
        inspectLink();
    } else {
        linkState_.reset();
        load_.forget();
    }
    if (trace_.isWatching()) {
        // Trouble may have come in the middle of it.
        hasLearnt_ = hasLearnt_ && trace_.reachesHost() && !trace_.hasChanged();
        if (!lingers) {
            trace_.rest();
        }
    }
    if (!hasLearnt_ && socket_ && lastReply_ && *lastReply_ > changedAt_) {
        hasLearnt_ = true;
        inspectLink(); // so that the interface is known when it has gone
        trace_.learn(situation.now);
        scheduleProbe();
    }
}

void Diagnostician::watch(const Situation& situation) {
    inspectLink();
    connectivity_.askWhenDue(
        situation.now, [this](auto answer) { sources_.connectivity.ask(std::move(answer)); });
    if (socket_) {
        trace_.watch(situation.now, troubleSince(situation));
        scheduleProbe();
    }
}

void Diagnostician::inspectLink() {
    sources_.link.inspect(
        address_, lifeline_.guarded([this](const std::optional<LinkState>& state) { linkInspected(state); }));
}

/// One that comes when all is well again is forgotten at the next tick.
void Diagnostician::linkInspected(const std::optional<LinkState>& state) {
    linkState_ = state;
    if (state && state->sentBytes && state->receivedBytes) {
        load_.note(*state->sentBytes, *state->receivedBytes, loop_.now());
    }
}

/// While a timer is set, it decides.
void Diagnostician::scheduleProbe() {
    if (!timer_ && trace_.isActive()) {
        timer_ = loop_.after(trace_.nextProbeAt() - loop_.now(), [this] { sendProbe(); });
    }
}

void Diagnostician::sendProbe() {
    timer_.reset();
    if (const auto probe = trace_.probe(loop_.now()); probe && socket_ && address_) {
        socket_->send(probe->id, *address_, probe->hopLimit);
    }
    scheduleProbe();
}

void Diagnostician::receive() {
    for (int count = 0; count < mostAnswersAtOnce; ++count) {
        const auto answer = socket_->receive();
        if (!answer) {
            return;
        }
        if (answer->kind == ProbeAnswer::Kind::unreachable) {
            words_.note(answer->sender, RouterWord::unreachable, answer->at);
        } else if (answer->kind == ProbeAnswer::Kind::forbidden) {
            words_.note(answer->sender, RouterWord::forbidden, answer->at);
        } else {
            const bool isHost = answer->kind == ProbeAnswer::Kind::reply;
            // Each ignores the other's.
            trace_.answered(answer->id, answer->sender, isHost, answer->at);
            if (isHost) {
                name_.answered(answer->id, answer->at);
            }
        }
    }
}

double Diagnostician::troubleSince(const Situation& situation) const {
    const double begin = badSince_.value_or(situation.now) - noticing;
    const double start = std::max(situation.now - lookBack, begin);
    return situation.trouble == Trouble::degraded ? start : std::max(start, silentSince(situation.pings));
}

Evidence Diagnostician::evidenceOf(const Situation& situation) const {
    Evidence evidence{.trouble = situation.trouble, .host = situation.host, .quietMs = usualMs_};
    if (situation.trouble == Trouble::none) {
        return evidence;
    }
    const double since = troubleSince(situation);
    if (address_) {
        evidence.address = address_->display;
    }
    evidence.silentSeconds =
        lastReply_ ? situation.now - *lastReply_ : situation.now - badSince_.value_or(situation.now);
    if (situation.startError && situation.startError->kind == PingError::Kind::socket) {
        evidence.socketError = situation.startError->text;
    }
    SettledPings pings = settledPings(situation.pings, since, situation.now);
    evidence.pings = std::move(pings.since);
    evidence.lossBefore = situation.trouble == Trouble::down ? lostShare(pings.before).value_or(0) : 0;
    name_.addTo(evidence, situation, addressToProbe(), since, isOnlyNameBad_);
    evidence.connectivity = connectivity_.latest();
    if (linkState_) {
        evidence.link = linkState_->link;
        evidence.router = linkState_->router;
        evidence.neighbor = linkState_->neighbor;
        evidence.load = load_.load();
    }
    evidence.hops = trace_.hops(since, situation.now);
    evidence.hasPathChanged = trace_.hasChanged();
    evidence.unreachable = words_.since(situation.now - lookBack);
    return evidence;
}

} // namespace tarnwick
