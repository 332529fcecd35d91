#include "core/Diagnosis/PathVerdict.h"

#include "core/Diagnosis/FaultPlace.h"
#include "core/Diagnosis/HopSamples.h"
#include "core/Diagnosis/PathSentences.h"
#include "core/Diagnosis/ProviderNetwork.h"
#include "core/Diagnosis/RouterWords.h"
#include "core/Diagnosis/Symptom.h"
#include "core/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

namespace tarnwick {

namespace {

/// From which chance on a place is named, and is likely. What is concluded from answers is never certain.
constexpr double possibleChance = 0.6;
constexpr double likelyChance = 0.85;
/// Up to which chance of a fault something counts as well.
constexpr double wellChance = 0.02;
/// Share of lost pings from which on silence may be luck.
constexpr double muchLoss = 0.2;
/// So many answers are no luck on a way that loses nearly all.
constexpr std::size_t beyondLuck = 2;
/// dBm: below it a link loses packets and slows down.
constexpr int weakSignal = -75;
/// Mbit/s: radios send slower than that only to be heard at all.
constexpr double fewMbit = 10;

/// The blame for a fault on the link that leads to a hop.
Blame blameOf(std::size_t place, const std::vector<HopEvidence>& hops) {
    if (place + 1 == hops.size()) {
        return Blame::host;
    }
    if (place == 0) {
        return Blame::localNetwork;
    }
    return place < endOfProvider(hops) ? Blame::provider : Blame::beyondProvider;
}

bool isForbidden(std::size_t place, const Evidence& evidence) {
    const UnreachableEvidence* const word = wordBefore(place, evidence);
    return word != nullptr && word->word == RouterWord::forbidden;
}

/// The blame for a router that forbids the way over the link behind it: its owner's.
Blame blameOfForbidding(std::size_t place, const std::vector<HopEvidence>& hops) {
    if (place == 1) {
        return Blame::localNetwork;
    }
    return place - 1 < endOfProvider(hops) ? Blame::provider : blameOf(place, hops);
}

struct Suspicion {
    Blame blame = Blame::unclear;
    double chance = 0;     ///< of all places with this blame
    std::size_t place = 0; ///< the likeliest of them
    std::size_t nearest = 0;
    bool isForbidden = false; ///< by the router before that place
};

Suspicion strongest(const std::vector<double>& chances, const std::vector<HopEvidence>& hops) {
    constexpr std::array blames{Blame::localNetwork, Blame::provider, Blame::beyondProvider, Blame::host};
    Suspicion found;
    for (const Blame blame : blames) { // from the nearest place to the farthest
        Suspicion one{.blame = blame, .nearest = hops.size()};
        double best = -1;
        for (std::size_t place = 0; place < hops.size(); ++place) {
            if (blameOf(place, hops) == blame) {
                one.chance += chances[place];
                one.nearest = std::min(one.nearest, place);
                if (chances[place] > best) {
                    best = chances[place];
                    one.place = place;
                }
            }
        }
        if (one.chance > found.chance) {
            found = one;
        }
    }
    return found;
}

/// Where a router says that it forbids the way, the blame is its owner's.
Suspicion suspicionOf(const std::vector<double>& chances, const Evidence& evidence) {
    Suspicion found = strongest(chances, evidence.hops);
    if (isForbidden(found.place, evidence)) {
        found.blame = blameOfForbidding(found.place, evidence.hops);
        found.chance = chances[found.place];
        found.nearest = found.place;
        found.isForbidden = true;
    }
    return found;
}

/// Of a hop: the answers to probes, and its words that the host can't be reached.
std::size_t countSigns(const HopEvidence& hop, const std::vector<UnreachableEvidence>& words) {
    const auto answers =
        std::ranges::count_if(hop.samples, [](const HopSample& one) { return one.ms.has_value(); });
    const auto word = std::ranges::find(words, hop.address, &UnreachableEvidence::sender);
    return static_cast<std::size_t>(answers + (word == words.end() ? 0 : word->count));
}

/// Whether more than luck acquits what is nearer. A way that loses most may be silent for a while, and let
/// the one answer through that acquits a hop behind the fault.
bool isNearerHeardOf(const Suspicion& suspicion, const Evidence& evidence) {
    std::size_t signs = 0;
    for (std::size_t hop = suspicion.nearest - 1; hop < suspicion.place; ++hop) {
        signs += countSigns(evidence.hops[hop], evidence.unreachable);
    }
    return signs >= beyondLuck;
}

/// The chance that the fault is nearer than `place`, though what is nearer answers: the pings may have been
/// unlucky, and those answers then are no wonder.
double chanceBefore(std::size_t place, const Evidence& evidence) {
    const std::vector<double> chances = faultPlaces(evidence, BadShare::atLeast);
    return std::accumulate(chances.begin(), chances.begin() + static_cast<std::ptrdiff_t>(place), 0.0);
}

/// Whether what is nearer is well for sure.
bool isNearerAcquitted(const Suspicion& suspicion, const Evidence& evidence) {
    switch (symptomOf(evidence)) {
    case Symptom::silent:
        return suspicion.nearest == 0 || isNearerHeardOf(suspicion, evidence);
    case Symptom::loses:
        return chanceBefore(suspicion.nearest, evidence) <= wellChance;
    case Symptom::late:
        break;
    }
    return true;
}

/// Whether what seems to be the provider's is so for sure enough: the link that leads to a hop, or the hop.
bool isProviders(std::size_t hop, const std::vector<HopEvidence>& hops) {
    const bool isSecondRouter = hop == 1 && mayBeAtHome(hops[1], hops[0]);
    return isProviderKnown(hops) && !isSecondRouter;
}

/// Of all but a local network that merely fails.
std::string sentenceOf(const Suspicion& suspicion, const Evidence& evidence) {
    switch (suspicion.blame) {
    case Blame::localNetwork:
        return forbiddenAtHomeSentence(evidence);
    case Blame::provider:
        return providerSentence(evidence, suspicion.place);
    case Blame::beyondProvider:
        return beyondSentence(evidence, suspicion.place);
    default:
        return hostSentence(evidence);
    }
}

/// How many hops are well for sure.
std::size_t countWell(const std::vector<double>& chances) {
    std::size_t well = 0;
    double chance = 0;
    while (well < chances.size() && chance + chances[well] < wellChance) {
        chance += chances[well++];
    }
    return well;
}

/// "6 Mbit/s", of Wi-Fi that sends so slowly; else empty. Where nothing comes through it is a rate of before.
std::string slowRate(const Evidence& evidence) {
    const bool isWifi = evidence.link && evidence.link->kind == LinkEvidence::Kind::wifi;
    const std::optional<double> rate = isWifi ? evidence.link->rateMbit : std::nullopt;
    const bool isSlow = rate && *rate < fewMbit && symptomOf(evidence) != Symptom::silent;
    return isSlow ? Text::whole(*rate) + " Mbit/s" : "";
}

/// Where Wi-Fi may explain what someone at its other end does: "the router answers late".
std::optional<Verdict> weakWifi(const Evidence& evidence, Likelihood likelihood, const std::string& doing) {
    const bool isWifi = evidence.link && evidence.link->kind == LinkEvidence::Kind::wifi;
    const std::optional<int> signal = isWifi ? evidence.link->signalDbm : std::nullopt;
    if (!signal || *signal > weakSignal) {
        return std::nullopt;
    }
    const std::string rate = slowRate(evidence);
    return Verdict{
        .blame = Blame::wifi,
        .likelihood = std::min(likelihood, Likelihood::likely),
        .evidence = "The Wi-Fi signal is weak (" + std::to_string(*signal) + " dBm"
                    + (rate.empty() ? "" : ", " + rate) + "), and " + doing + "."};
}

/// No router lies between: nothing tells the host from the network that it shares with this machine.
Verdict ownNetworkVerdict(const Evidence& evidence) {
    const std::string host = evidence.hops.front().address;
    const std::string does = doingOf(evidence);
    return weakWifi(evidence, Likelihood::possible, host + " " + does)
        .value_or(Verdict{.blame = Blame::host, .evidence = host + ", in your own network, " + does + "."});
}

} // namespace

Verdict localVerdict(const Evidence& evidence, Likelihood likelihood) {
    const std::string does = doingOf(evidence);
    const std::string router = evidence.router ? " (" + *evidence.router + ")" : "";
    const std::string rate = slowRate(evidence);
    return weakWifi(evidence, likelihood, "the router " + does)
        .value_or(Verdict{
            .blame = Blame::localNetwork,
            .likelihood = likelihood,
            .evidence =
                "Your router" + router + " " + does + (rate.empty() ? "" : ", over Wi-Fi at " + rate) + "."});
}

std::optional<Verdict> pathVerdict(const Evidence& evidence) {
    const std::vector<double> chances = faultPlaces(evidence);
    if (chances.empty()) {
        return std::nullopt;
    }
    if (evidence.hops.size() == 1) {
        const bool isRouter = evidence.router == evidence.hops.front().address;
        return isRouter ? localVerdict(evidence, Likelihood::likely) : ownNetworkVerdict(evidence);
    }
    const Suspicion suspicion = suspicionOf(chances, evidence);
    // The way is about to fail altogether, and answers from before that would count against it. Or it loses
    // so much that silence is luck, and so is an answer that acquits a hop.
    const bool isTurning =
        (isSilentLately(evidence.pings) && latestMs(evidence.pings)) || evidence.lossBefore >= muchLoss;
    const std::size_t whose = suspicion.isForbidden ? suspicion.place - 1 : suspicion.place;
    const bool isOwnerKnown = suspicion.blame != Blame::provider || isProviders(whose, evidence.hops);
    const bool isNearerWell = isNearerAcquitted(suspicion, evidence);
    const bool isLikely = suspicion.chance >= likelyChance && !isTurning && !evidence.hasPathChanged
                          && isOwnerKnown && isNearerWell;
    const Likelihood likelihood = isLikely ? Likelihood::likely : Likelihood::possible;
    if (suspicion.chance < possibleChance) {
        return Verdict{.evidence = unclearSentence(countWell(chances), evidence.hops)};
    }
    if (suspicion.blame == Blame::localNetwork && !suspicion.isForbidden) {
        return localVerdict(evidence, likelihood);
    }
    return Verdict{
        .blame = suspicion.blame, .likelihood = likelihood, .evidence = sentenceOf(suspicion, evidence)};
}

} // namespace tarnwick
