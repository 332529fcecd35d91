#include "core/Diagnosis/Diagnosis.h"

#include "core/Diagnosis/FaultPlace.h"
#include "core/Diagnosis/HopSamples.h"
#include "core/Diagnosis/NameVerdict.h"
#include "core/Diagnosis/PathVerdict.h"
#include "core/Diagnosis/ProviderNetwork.h"
#include "core/Text.h"

#include <algorithm>
#include <array>
#include <string>

namespace tarnwick {

namespace {

using Rule = std::optional<Verdict> (*)(const Evidence&);

/// Seconds that traffic must have lasted before it explains anything.
constexpr double shortestLoad = 2;
/// Mbit/s: less fills no line that is worth the name.
constexpr double leastLoad = 1;
/// Milliseconds that a full queue adds at least, to be told from what networks do anyway.
constexpr double leastQueue = 40;
/// From which chance on that the delay begins at the own line its load is named.
constexpr double possibleLoad = 0.5;

Verdict certain(Blame blame, std::string evidence) {
    return {.blame = blame, .likelihood = Likelihood::certain, .evidence = std::move(evidence)};
}

std::optional<Verdict> signIn(const Evidence& evidence) {
    if (evidence.connectivity != Connectivity::portal) {
        return std::nullopt;
    }
    return certain(Blame::signIn, "The network wants you to sign in.");
}

std::optional<Verdict> noNetwork(const Evidence& evidence) {
    if (!evidence.link) {
        return std::nullopt;
    }
    const LinkEvidence& link = *evidence.link;
    const bool isWifi = link.kind == LinkEvidence::Kind::wifi;
    if (link.interface.empty()) {
        return certain(Blame::thisComputer, "No network: this computer has no connection.");
    }
    if (!link.isUp) {
        return certain(
            Blame::thisComputer,
            isWifi ? "No network: Wi-Fi is off." : "No network: " + link.interface + " is off.");
    }
    if (!link.hasCarrier) {
        return certain(
            Blame::thisComputer, isWifi ? "No network: Wi-Fi is not connected."
                                        : "No network: " + link.interface + " has no cable.");
    }
    if (!link.hasAddress) {
        return certain(Blame::thisComputer, "No address from the network.");
    }
    if (!link.hasRoute) {
        return certain(Blame::thisComputer, "No way to the internet: no router is set.");
    }
    return std::nullopt;
}

/// The link has an address, but what is sent to the host has one that the machine gave itself. No router
/// takes that farther. Between two machines alone such addresses are used on purpose.
std::optional<Verdict> noAddressOfFamily(const Evidence& evidence) {
    using Kind = LinkEvidence::Kind;
    if (!evidence.link || evidence.link->kind == Kind::tunnel || evidence.link->kind == Kind::other) {
        return std::nullopt;
    }
    const std::string& source = evidence.link->source;
    const bool isHostNear = isSelfAssigned(evidence.address.value_or(""));
    if (!isSelfAssigned(source) || isHostNear || latestMs(evidence.pings)) {
        return std::nullopt;
    }
    const bool isIpv6 = source.find(':') != std::string::npos;
    return certain(
        Blame::thisComputer,
        isIpv6 ? "No IPv6 address from the network." : "No IPv4 address from the network.");
}

std::optional<Verdict> refusedBySystem(const Evidence& evidence) {
    if (!evidence.socketError) {
        return std::nullopt;
    }
    return certain(Blame::thisComputer, "This computer can't send: " + *evidence.socketError + ".");
}

/// The chance that the delay begins where this computer's own traffic queues: on the way to the router, or on
/// the line behind it. Without a path it is open.
double chanceOfOwnLine(const Evidence& evidence) {
    const std::vector<double> chances = faultPlaces(evidence);
    if (chances.empty()) {
        return possibleLoad;
    }
    return chances[0] + (chances.size() > 1 ? chances[1] : 0);
}

/// A hint, never likely: a line that is slow for another reason looks the same while there is traffic on it.
std::optional<Verdict> ownLoad(const Evidence& evidence) {
    const LoadEvidence& load = evidence.load;
    const bool isUpload = load.sentMbit >= load.receivedMbit;
    const double rate = isUpload ? load.sentMbit : load.receivedMbit;
    const double extra = extraDelay(evidence);
    if (evidence.trouble != Trouble::degraded || !evidence.quietMs || load.seconds < shortestLoad
        || rate < leastLoad || extra < leastQueue || extra < *evidence.quietMs) {
        return std::nullopt;
    }
    if (chanceOfOwnLine(evidence) < possibleLoad) {
        return std::nullopt;
    }
    return Verdict{
        .blame = Blame::ownLoad,
        .likelihood = Likelihood::possible,
        .evidence = "Latency rises from " + Text::whole(*evidence.quietMs) + " to "
                    + Text::whole(*evidence.quietMs + extra) + " ms while this computer "
                    + (isUpload ? "uploads " : "downloads ") + Text::whole(rate) + " Mbit/s."};
}

std::optional<Verdict> failedRouter(const Evidence& evidence) {
    if (evidence.neighbor != NeighborState::failed || !evidence.router) {
        return std::nullopt;
    }
    return localVerdict(evidence, Likelihood::certain);
}

Verdict unclear(const Evidence& evidence) {
    const bool isRouterWell = !evidence.hops.empty() && !evidence.hops.front().isHost
                              && std::ranges::any_of(evidence.hops.front().samples, [](const HopSample& one) {
                                     return one.ms.has_value();
                                 });
    return {
        .blame = Blame::unclear,
        .likelihood = Likelihood::possible,
        .evidence =
            isRouterWell ? "Your router answers. What is wrong beyond it is not clear." : notClearYet};
}

} // namespace

std::optional<Verdict> diagnose(const Evidence& evidence) {
    // What the machine itself knows for sure stands before what is concluded.
    constexpr std::array<Rule, 10> rules{noNetwork,    noAddressOfFamily,  refusedBySystem, signIn,
                                         failedRouter, missingNameVerdict, lateNameVerdict, ownLoad,
                                         pathVerdict,  slowServerVerdict};
    if (evidence.trouble == Trouble::none) {
        return std::nullopt;
    }
    for (const Rule rule : rules) {
        if (auto verdict = rule(evidence)) {
            return verdict;
        }
    }
    return unclear(evidence);
}

} // namespace tarnwick
