#include "core/Diagnosis/PathVerdict.h"

#include "core/Diagnosis/FaultPlace.h"
#include "core/Diagnosis/HopSamples.h"
#include "core/Diagnosis/ProviderNetwork.h"
#include "core/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ranges>
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

enum class Symptom { silent, loses, late };

/// In their order.
constexpr std::array<const char*, 3> doings{"does not answer", "loses answers", "answers late"};

/// Before the connection is called down.
bool isSilentLately(const std::vector<HopSample>& pings) {
    constexpr std::size_t inARow = 3;
    const auto latestFirst = pings | std::views::reverse | std::views::take(inARow);
    return pings.size() >= inARow
           && std::ranges::none_of(latestFirst, [](const HopSample& one) { return one.ms.has_value(); });
}

Symptom symptomOf(const Evidence& evidence) {
    if (evidence.trouble == Trouble::down || isSilentLately(evidence.pings)) {
        return Symptom::silent;
    }
    constexpr double smallLoss = 0.05;
    return lostShare(evidence.pings).value_or(0) >= smallLoss ? Symptom::loses : Symptom::late;
}

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

struct Suspicion {
    Blame blame = Blame::unclear;
    double chance = 0;     ///< of all places with this blame
    double before = 0;     ///< of all places nearer than these
    std::size_t place = 0; ///< the likeliest of them
    std::size_t nearest = 0;
};

Suspicion strongest(const std::vector<double>& chances, const std::vector<HopEvidence>& hops) {
    constexpr std::array blames{Blame::localNetwork, Blame::provider, Blame::beyondProvider, Blame::host};
    Suspicion found;
    double before = 0;
    for (const Blame blame : blames) { // from the nearest place to the farthest
        Suspicion one{.blame = blame, .before = before, .nearest = hops.size()};
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
        before += one.chance;
        if (one.chance > found.chance) {
            found = one;
        }
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

/// Whether what is nearer is well for sure.
bool isNearerAcquitted(const Suspicion& suspicion, const Evidence& evidence) {
    switch (symptomOf(evidence)) {
    case Symptom::silent:
        return suspicion.nearest == 0 || isNearerHeardOf(suspicion, evidence);
    case Symptom::loses:
        return suspicion.before <= wellChance;
    case Symptom::late:
        break;
    }
    return true;
}

/// Whether a link that seems to be the provider's is so for sure enough.
bool isProviders(std::size_t place, const std::vector<HopEvidence>& hops) {
    const bool leadsToSecondRouter = place == 1 && mayBeAtHome(hops[1], hops[0]);
    return isProviderKnown(hops) && !leadsToSecondRouter;
}

/// "14 s", "3 min", "2 h": after a minute the sentence changes once a minute, then once an hour.
std::string durationText(double seconds) {
    constexpr double minute = 60;
    constexpr double hour = 3600;
    if (seconds < minute) {
        return Text::whole(seconds) + " s";
    }
    return seconds < hour ? Text::whole(std::floor(seconds / minute)) + " min"
                          : Text::whole(std::floor(seconds / hour)) + " h";
}

/// "nothing beyond it has answered for 14 s.", "beyond it 20% of the answers are lost." or "beyond it answers
/// come 140 ms late."
std::string happens(const Evidence& evidence) {
    switch (symptomOf(evidence)) {
    case Symptom::silent:
        break;
    case Symptom::loses:
        return "beyond it " + Text::whole(100 * lostShare(evidence.pings).value_or(0))
               + "% of the answers are lost.";
    case Symptom::late:
        return "beyond it answers come " + Text::whole(extraDelay(evidence)) + " ms late.";
    }
    return "nothing beyond it has answered for " + durationText(evidence.silentSeconds) + ".";
}

std::string_view nameOfSymptom(const Evidence& evidence) {
    return symptomOf(evidence) == Symptom::late ? "delay" : "loss";
}

std::string routerSentence(const Evidence& evidence) {
    const std::optional<double> answer = latestMs(evidence.hops.front().samples);
    return (answer ? "Your router answers in " + (*answer < 1 ? "under 1" : Text::whole(*answer)) + " ms; "
                   : "Your router passes on what is sent; ")
           + happens(evidence);
}

/// The last address before a place that is known; empty: none.
std::string addressBefore(std::size_t place, const std::vector<HopEvidence>& hops) {
    while (place-- > 0) {
        if (!hops[place].address.empty()) {
            return hops[place].address;
        }
    }
    return "";
}

std::string providerSentence(const Evidence& evidence, std::size_t place) {
    const std::string last = addressBefore(place, evidence.hops);
    if (place == 1 || last == evidence.hops.front().address) {
        return routerSentence(evidence);
    }
    return "The provider's network answers up to " + last + "; " + happens(evidence);
}

std::string beyondSentence(const Evidence& evidence, std::size_t place) {
    const std::string last = addressBefore(place, evidence.hops);
    const bool isProvidersEnd = place == endOfProvider(evidence.hops);
    return (isProvidersEnd ? "The provider's network answers up to " : "Answers come from up to ") + last
           + "; " + std::string(nameOfSymptom(evidence)) + " begins after it.";
}

std::string hostSentence(const Evidence& evidence) {
    switch (symptomOf(evidence)) {
    case Symptom::silent:
        break;
    case Symptom::loses:
        return "Everything up to the host's network answers; only the host loses "
               + Text::whole(100 * lostShare(evidence.pings).value_or(0)) + "% of the answers.";
    case Symptom::late:
        return "Everything up to the host's network answers in time; only the host is "
               + Text::whole(extraDelay(evidence)) + " ms late.";
    }
    return "Everything up to the host's network answers; only the host does not.";
}

std::string unclearSentence(const std::vector<double>& chances, const std::vector<HopEvidence>& hops) {
    // How far it is surely well.
    std::size_t well = 0;
    double chance = 0;
    while (well < hops.size() && chance + chances[well] < wellChance) {
        chance += chances[well++];
    }
    const std::string last = addressBefore(well, hops);
    if (well == 0 || last.empty()) {
        return notClearYet;
    }
    return (well == 1 ? "Your router is well" : "All is well up to " + last)
           + "; what is wrong beyond it is not clear.";
}

/// Where Wi-Fi may explain what someone at its other end does: "the router answers late".
std::optional<Verdict> weakWifi(const Evidence& evidence, Likelihood likelihood, const std::string& doing) {
    const bool isWifi = evidence.link && evidence.link->kind == LinkEvidence::Kind::wifi;
    const std::optional<int> signal = isWifi ? evidence.link->signalDbm : std::nullopt;
    if (!signal || *signal > weakSignal) {
        return std::nullopt;
    }
    return Verdict{
        .blame = Blame::wifi,
        .likelihood = std::min(likelihood, Likelihood::likely),
        .evidence = "The Wi-Fi signal is weak (" + std::to_string(*signal) + " dBm), and " + doing + "."};
}

/// No router lies between: nothing tells the host from the network that it shares with this machine.
Verdict ownNetworkVerdict(const Evidence& evidence) {
    const std::string host = evidence.hops.front().address;
    const std::string does = doings[static_cast<std::size_t>(symptomOf(evidence))];
    return weakWifi(evidence, Likelihood::possible, host + " " + does)
        .value_or(Verdict{.blame = Blame::host, .evidence = host + ", in your own network, " + does + "."});
}

} // namespace

Verdict localVerdict(const Evidence& evidence, Likelihood likelihood) {
    const std::string does = doings[static_cast<std::size_t>(symptomOf(evidence))];
    const std::string router = evidence.router ? " (" + *evidence.router + ")" : "";
    return weakWifi(evidence, likelihood, "the router " + does)
        .value_or(Verdict{
            .blame = Blame::localNetwork,
            .likelihood = likelihood,
            .evidence = "Your router" + router + " " + does + "."});
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
    const Suspicion suspicion = strongest(chances, evidence.hops);
    // The way is about to fail altogether, and answers from before that would count against it. Or it loses
    // so much that silence is luck, and so is an answer that acquits a hop.
    const bool isTurning =
        (isSilentLately(evidence.pings) && latestMs(evidence.pings)) || evidence.lossBefore >= muchLoss;
    const bool isPlaceKnown =
        suspicion.blame != Blame::provider || isProviders(suspicion.place, evidence.hops);
    const bool isNearerWell = isNearerAcquitted(suspicion, evidence);
    const bool isLikely = suspicion.chance >= likelyChance && !isTurning && !evidence.hasPathChanged
                          && isPlaceKnown && isNearerWell;
    const Likelihood likelihood = isLikely ? Likelihood::likely : Likelihood::possible;
    Verdict verdict{.blame = suspicion.blame, .likelihood = likelihood};
    if (suspicion.chance < possibleChance) {
        verdict = {.blame = Blame::unclear, .evidence = unclearSentence(chances, evidence.hops)};
    } else if (suspicion.blame == Blame::localNetwork) {
        verdict = localVerdict(evidence, likelihood);
    } else if (suspicion.blame == Blame::provider) {
        verdict.evidence = providerSentence(evidence, suspicion.place);
    } else if (suspicion.blame == Blame::beyondProvider) {
        verdict.evidence = beyondSentence(evidence, suspicion.place);
    } else {
        verdict.evidence = hostSentence(evidence);
    }
    return verdict;
}

} // namespace tarnwick
