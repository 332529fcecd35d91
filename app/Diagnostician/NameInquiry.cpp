#include "app/Diagnostician/NameInquiry.h"

#include "core/Diagnosis/NameVerdict.h"

#include <algorithm>
#include <iterator>
#include <sys/socket.h>
#include <utility>

namespace tarnwick {

namespace {

/// Seconds from one question to the next: until then a silent server is waited for.
constexpr double betweenQueries = 5;
/// Seconds for which a late lookup counts.
constexpr double lookBackOnLookups = 30;
constexpr double msPerSecond = 1000;

/// Whether the latest lookup has gone on for so long that it counts as failed.
bool isLookupLong(const Situation& situation) {
    const auto& lookup = situation.lookup;
    return lookup && !lookup->ended && (situation.now - lookup->begun) * msPerSecond >= lateLookupMs;
}

bool isMissing(const Situation& situation) {
    return situation.startError ? situation.startError->kind == PingError::Kind::resolution
                                : isLookupLong(situation);
}

bool wasFoundLate(const Situation& situation) {
    const auto& lookup = situation.lookup;
    return lookup && lookup->ended && (*lookup->ended - lookup->begun) * msPerSecond >= lateLookupMs
           && situation.now - *lookup->ended <= lookBackOnLookups;
}

} // namespace

NameInquiry::NameInquiry(NameServerCheck& servers, std::uint64_t firstProbe)
    : check_(servers), servers_(betweenQueries), lastAddress_(firstProbe) {
}

std::optional<std::uint64_t> NameInquiry::tick(
    const Situation& situation, const std::optional<ResolvedAddress>& last) {
    const bool isGone = isMissing(situation);
    if (isWayBack(situation.now)) {
        forgetServers(); // they may have been silent for want of a way
    }
    if (isGone || wasFoundLate(situation)) {
        askServers(situation, last ? last->family : AF_INET);
    } else {
        forgetServers();
    }
    if (!isGone) {
        forgetAddress();
    }
    return isGone && last ? lastAddress_.probe(situation.now) : std::nullopt;
}

/// What they have said stands until the resolver is asked anew, and fails again.
void NameInquiry::askServers(const Situation& situation, std::int32_t family) {
    const auto& lookup = situation.lookup;
    const bool isOver = !lookup || lookup->ended || isLookupLong(situation);
    // One that was given up is no longer told of.
    const double begun = lookup ? lookup->begun : askedFor_.value_or(0);
    if (!isOver || askedFor_ == begun) {
        return;
    }
    const bool hasAsked = servers_.askWhenDue(
        situation.now, [&](auto answer) { check_.ask(situation.host, family, std::move(answer)); });
    if (hasAsked) {
        askedFor_ = begun;
    }
}

/// Whether the host's last address answers after it did not.
bool NameInquiry::isWayBack(double now) {
    const std::optional<bool> answers = lastAddress_.answers(now);
    const std::optional<bool> before = std::exchange(lastAddressAnswered_, answers);
    return answers == true && before == false;
}

void NameInquiry::forgetAddress() {
    lastAddress_.forget();
    lastAddressAnswered_.reset();
}

void NameInquiry::forgetServers() {
    servers_.forget();
    askedFor_.reset();
}

bool NameInquiry::hasBadServer() const {
    return std::ranges::any_of(
        servers_.latest(), [](const NameServerEvidence& server) { return isReason(server); });
}

void NameInquiry::addTo(
    Evidence& evidence, const Situation& situation, const std::optional<ResolvedAddress>& last, double since,
    bool isOnlyNameBad) const {
    evidence.nameServers = servers_.latest();
    evidence.isNameMissing = isMissing(situation);
    evidence.isNameLate = isOnlyNameBad && wasFoundLate(situation);
    if (!evidence.isNameMissing || !last) {
        return;
    }
    evidence.lastAddress = last->display;
    evidence.lastAddressAnswers = lastAddress_.answers(situation.now);
    // They stand in for pings: none is sent while the name is missing.
    std::ranges::copy(lastAddress_.samples(since, situation.now), std::back_inserter(evidence.pings));
}

} // namespace tarnwick
