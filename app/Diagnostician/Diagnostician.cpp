#include "app/Diagnostician/Diagnostician.h"

#include "core/Diagnosis/Diagnosis.h"
#include "core/Diagnosis/HopSamples.h"
#include "core/Diagnosis/Median.h"
#include "core/Diagnosis/NameVerdict.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <ranges>
#include <sys/socket.h>
#include <utility>
#include <variant>

namespace tarnwick {

namespace {

/// Seconds of what is looked back on: several rounds of probes.
constexpr double lookBack = 30;
/// Seconds by which trouble is older than the tick that tells of it.
constexpr double noticing = 4;
/// Seconds without an answer that make the host suspicious, before anything is called down.
constexpr double suspiciousSilence = 2.5;
/// Seconds of trouble before the user reads what is only possible. Where some is lost, chance needs longer to
/// even out; until then it is not clear.
constexpr double patienceWhenDown = 4;
constexpr double patienceWhenDegraded = 15;
constexpr double patienceForUnclear = 5;
/// Seconds of trouble, not of being down, in which nothing is said that load could explain as well.
constexpr double timeToMeasureLoad = 4;
/// Answers are late when the median of those to the latest seconds' pings is twice the usual one, and at
/// least so many milliseconds above it: less is no trouble.
constexpr double latenessSpan = 6;
constexpr std::size_t fewestAnswers = 3;
constexpr double leastLateness = 100;
/// Seconds after which a longer way is the usual one.
constexpr double newUsual = 300;
constexpr double msPerSecond = 1000;
/// Mbit/s from which on seconds of load are counted.
constexpr double loadWorthTheName = 1;
/// At a word for each probe, more than anyone looks back on.
constexpr std::size_t mostWords = 64;

/// Seconds from one question to the next.
constexpr double betweenNameQueries = 5;
constexpr double betweenConnectivityQuestions = 10;
/// Enough for every way.
constexpr int mostHopsOfAPing = 64;

std::uint64_t randomId() {
    std::random_device source;
    return std::uniform_int_distribution<std::uint64_t>(0, std::uint64_t{1} << 32)(source);
}

} // namespace

Diagnostician::Diagnostician(RunLoop& loop, const DiagnosisSources& sources)
    : loop_(loop),
      sources_(sources),
      trace_(randomId()),
      lastAddress_(randomId()),
      nameServers_(betweenNameQueries),
      connectivity_(betweenConnectivityQuestions) {
}

void Diagnostician::tick(const Situation& told) {
    Situation situation = told;
    follow(situation);
    lookIntoName(situation);
    const bool isWellSoFar = situation.trouble == Trouble::none && !isLate(situation);
    isOnlyNameBad_ = isWellSoFar && hasBadNameServer();
    if (situation.trouble == Trouble::none && (isOnlyNameBad_ || !isWellSoFar)) {
        situation.trouble = Trouble::degraded;
    }
    noteTrouble(situation, told.trouble == Trouble::none);
    if (situation.trouble != Trouble::none || isSuspicious(situation)) {
        watch(situation);
    } else {
        rest(situation);
    }
    const bool isShown = steady_.update(situation.now, presentVerdict(situation)).has_value();
    path_ = isShown ? trace_.hops(troubleSince(situation), situation.now) : std::vector<HopEvidence>{};
}

void Diagnostician::lookIntoName(const Situation& situation) {
    const bool isMissing = isNameMissing(situation);
    if (isMissing || wasFoundLate(situation)) {
        nameServers_.askWhenDue(situation.now, [&](auto answer) {
            const std::int32_t family = address_ ? address_->family : AF_INET;
            sources_.nameServers.ask(situation.host, family, std::move(answer));
        });
    } else {
        nameServers_.forget();
    }
    if (!isMissing) {
        lastAddress_.forget();
    } else if (socket_ && address_) {
        if (const auto id = lastAddress_.probe(situation.now)) {
            socket_->send(*id, *address_, mostHopsOfAPing);
        }
    }
}

bool Diagnostician::isNameMissing(const Situation& situation) {
    if (situation.startError) {
        return situation.startError->kind == PingError::Kind::resolution;
    }
    const auto& lookup = situation.lookup;
    return lookup && !lookup->ended && (situation.now - lookup->begun) * msPerSecond >= lateLookupMs;
}

bool Diagnostician::wasFoundLate(const Situation& situation) {
    const auto& lookup = situation.lookup;
    return lookup && lookup->ended && (*lookup->ended - lookup->begun) * msPerSecond >= lateLookupMs
           && situation.now - *lookup->ended <= lookBack;
}

bool Diagnostician::hasBadNameServer() const {
    return std::ranges::any_of(
        nameServers_.latest(), [](const NameServerEvidence& server) { return isBad(server); });
}

void Diagnostician::noteTrouble(const Situation& situation, bool isOnlyLate) {
    if (situation.trouble != Trouble::none && !badSince_) {
        badSince_ = situation.now;
    }
    const bool isUsualByNow = isOnlyLate && badSince_ && situation.now - *badSince_ >= newUsual;
    if (situation.trouble == Trouble::none || isUsualByNow) {
        badSince_.reset();
        usualMs_ = situation.usualMs;
    }
}

/// While little is known, only what is likely; before the load is known, only what is certain. Who has been
/// named stays named when that turns out to be only possible.
std::optional<Verdict> Diagnostician::presentVerdict(const Situation& situation) const {
    auto verdict = diagnose(evidenceOf(situation));
    if (!verdict || !badSince_) {
        return verdict;
    }
    const bool isDown = situation.trouble == Trouble::down;
    const double seconds = situation.now - *badSince_;
    if (!isDown && seconds < timeToMeasureLoad) {
        return verdict->likelihood == Likelihood::certain ? verdict : std::nullopt;
    }
    const std::optional<Verdict>& shown = steady_.shown();
    const bool isNamed = shown && shown->blame != Blame::unclear;
    if (isNamed || verdict->likelihood != Likelihood::possible
        || seconds >= (isDown ? patienceWhenDown : patienceWhenDegraded)) {
        return verdict;
    }
    return isDown || seconds < patienceForUnclear ? std::nullopt
                                                  : std::optional(Verdict{.evidence = notClearYet});
}

bool Diagnostician::isLate(const Situation& situation) const {
    std::vector<double> answers;
    for (const PendingPing& ping : situation.pings) {
        if (ping.reply && situation.now - ping.sent <= latenessSpan) {
            answers.push_back((*ping.reply - ping.sent) * msPerSecond);
        }
    }
    if (answers.size() < fewestAnswers || !usualMs_) {
        return false;
    }
    const double now = medianOf(std::move(answers)).value_or(0);
    return now >= 2 * *usualMs_ && now >= *usualMs_ + leastLateness;
}

void Diagnostician::pathChanged() {
    hasLearnt_ = false;
    words_.clear();
    nameServers_.forget();
    connectivity_.forget();
}

void Diagnostician::follow(const Situation& situation) {
    if (situation.host != host_) {
        host_ = situation.host;
        lastReply_.reset();
        usualMs_.reset();
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
    trace_ = PathTrace(randomId());
    lastAddress_.forget();
}

void Diagnostician::turnTo(const ResolvedAddress& address) {
    const bool needsSocket = !address_ || address_->family != address.family;
    address_ = address;
    pathChanged();
    trace_.rest();
    if (needsSocket) {
        auto opened = sources_.probes.open(address.family, [this] { receive(); });
        auto* const socket = std::get_if<std::unique_ptr<ProbeSocket>>(&opened);
        socket_ = socket != nullptr ? std::move(*socket) : nullptr;
    }
}

/// All is well.
void Diagnostician::rest(const Situation& situation) {
    linkState_.reset();
    traffic_.reset();
    load_ = {};
    connectivity_.forget();
    if (trace_.isWatching()) {
        trace_.rest();
        hasLearnt_ = trace_.reachesHost(); // trouble may have come in the middle of it
    }
    if (!hasLearnt_ && socket_ && lastReply_) {
        hasLearnt_ = true;
        inspectLink(); // so that the interface is known when it has gone
        trace_.learn(situation.now);
        scheduleProbe();
    }
}

bool Diagnostician::isSuspicious(const Situation& situation) const {
    const bool isWaiting = std::ranges::any_of(situation.pings, [&](const PendingPing& ping) {
        return !ping.reply && situation.now - ping.sent >= 1;
    });
    return isWaiting && lastReply_ && situation.now - *lastReply_ >= suspiciousSilence;
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
    if (state) {
        noteTraffic(*state, loop_.now());
    }
}

void Diagnostician::noteTraffic(const LinkState& state, double now) {
    if (!state.sentBytes || !state.receivedBytes) {
        return;
    }
    const Traffic present{.sentBytes = *state.sentBytes, .receivedBytes = *state.receivedBytes, .at = now};
    const std::optional<Traffic> before = std::exchange(traffic_, present);
    const bool hasGrown =
        before && present.sentBytes >= before->sentBytes && present.receivedBytes >= before->receivedBytes;
    if (!hasGrown || now <= before->at) {
        load_ = {};
        return;
    }
    const auto rate = [&](std::uint64_t bytes) {
        constexpr double mbitPerByte = 8e-6;
        return static_cast<double>(bytes) * mbitPerByte / (now - before->at);
    };
    load_.sentMbit = rate(present.sentBytes - before->sentBytes);
    load_.receivedMbit = rate(present.receivedBytes - before->receivedBytes);
    const bool isLoaded = std::max(load_.sentMbit, load_.receivedMbit) >= loadWorthTheName;
    load_.seconds = isLoaded ? load_.seconds + now - before->at : 0;
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
    while (const auto answer = socket_->receive()) {
        if (answer->kind == ProbeAnswer::Kind::unreachable) {
            words_.push_back({.sender = answer->sender, .at = answer->at});
            if (words_.size() > mostWords) {
                words_.pop_front();
            }
        } else {
            const bool isHost = answer->kind == ProbeAnswer::Kind::reply;
            // Each ignores the other's.
            trace_.answered(answer->id, answer->sender, isHost, answer->at);
            if (isHost) {
                lastAddress_.answered(answer->id, answer->at);
            }
        }
    }
}

double Diagnostician::troubleSince(const Situation& situation) const {
    const double begin = badSince_.value_or(situation.now) - noticing;
    const double start = std::max(situation.now - lookBack, begin);
    return situation.trouble == Trouble::degraded ? start : std::max(start, silentSince(situation));
}

/// When the first ping of those without an answer was sent: before that, whatever is wrong had not begun for
/// sure. Long ago when none is without.
double Diagnostician::silentSince(const Situation& situation) {
    const auto lastFirst = std::views::reverse(situation.pings);
    const auto answered =
        std::ranges::find_if(lastFirst, [](const PendingPing& ping) { return ping.reply.has_value(); });
    return answered == lastFirst.begin() ? 0 : std::prev(answered)->sent;
}

std::vector<UnreachableEvidence> Diagnostician::recentWords(double now) const {
    std::vector<UnreachableEvidence> senders;
    for (const Word& word : words_) {
        if (now - word.at > lookBack) {
            continue;
        }
        const auto known = std::ranges::find(senders, word.sender, &UnreachableEvidence::sender);
        if (known == senders.end()) {
            senders.push_back({.sender = word.sender, .count = 1});
        } else {
            ++known->count;
        }
    }
    return senders;
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
    std::vector<HopSample> before;
    for (const PendingPing& ping : situation.pings) {
        if (ping.reply || ping.lost || situation.now - ping.sent > PathTrace::patience) {
            (ping.sent >= since ? evidence.pings : before)
                .push_back(
                    {.ms =
                         ping.reply ? std::optional((*ping.reply - ping.sent) * msPerSecond) : std::nullopt});
        }
    }
    evidence.lossBefore = situation.trouble == Trouble::down ? lostShare(before).value_or(0) : 0;
    addName(situation, evidence);
    evidence.connectivity = connectivity_.latest();
    if (linkState_) {
        evidence.link = linkState_->link;
        evidence.router = linkState_->router;
        evidence.neighbor = linkState_->neighbor;
        evidence.load = load_;
    }
    evidence.hops = trace_.hops(since, situation.now);
    evidence.unreachable = recentWords(situation.now);
    return evidence;
}

void Diagnostician::addName(const Situation& situation, Evidence& evidence) const {
    evidence.nameServers = nameServers_.latest();
    evidence.isNameMissing = isNameMissing(situation);
    evidence.isNameLate = isOnlyNameBad_ && wasFoundLate(situation);
    if (!evidence.isNameMissing || !socket_) {
        return;
    }
    evidence.lastAddress = evidence.address;
    evidence.lastAddressAnswers = lastAddress_.answers(situation.now);
    // They stand in for pings: none is sent while the name is missing.
    std::ranges::copy(
        lastAddress_.samples(troubleSince(situation), situation.now), std::back_inserter(evidence.pings));
}

} // namespace tarnwick
