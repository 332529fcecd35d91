#include "app/Diagnostician/NameInquiry.h"

#include "core/Diagnosis/NameVerdict.h"

#include <algorithm>
#include <iterator>
#include <sys/socket.h>
#include <utility>

namespace tarnwick {

namespace {

/// Seconds from one question to the next.
constexpr double betweenQueries = 5;
/// Seconds for which a late lookup counts.
constexpr double lookBackOnLookups = 30;
constexpr double msPerSecond = 1000;

bool isMissing(const Situation& situation) {
    if (situation.startError) {
        return situation.startError->kind == PingError::Kind::resolution;
    }
    const auto& lookup = situation.lookup;
    return lookup && !lookup->ended && (situation.now - lookup->begun) * msPerSecond >= lateLookupMs;
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
    if (isGone || wasFoundLate(situation)) {
        servers_.askWhenDue(situation.now, [&](auto answer) {
            check_.ask(situation.host, last ? last->family : AF_INET, std::move(answer));
        });
    } else {
        servers_.forget();
    }
    if (!isGone) {
        lastAddress_.forget();
    }
    return isGone && last ? lastAddress_.probe(situation.now) : std::nullopt;
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
