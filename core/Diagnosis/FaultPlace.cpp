#include "core/Diagnosis/FaultPlace.h"

#include "core/Diagnosis/Median.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tarnwick {

namespace {

/// A link without fault loses something now and then.
constexpr double strayLoss = 0.03;
/// The chance that a router is unwilling by now: busy, or limiting its errors. Then it leaves out any share
/// of its answers, with its link well.
constexpr double unwilling = 0.1;
/// Nothing is so bad that no answer comes through, or so well that all do.
constexpr double leastShare = 0.02;
/// Milliseconds that are within what networks do when they are well.
constexpr double usualSpread = 15;
/// A router that says the host is not to be reached is believed this much more than silence.
constexpr double weightOfAWord = 20;

double share(std::size_t part, std::size_t whole) {
    return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

std::size_t countBad(const std::vector<HopSample>& samples, std::optional<double> usualMs, double extraMs) {
    return static_cast<std::size_t>(std::ranges::count_if(
        samples, [&](const HopSample& one) { return isBadSample(one, usualMs, extraMs); }));
}

struct Outcome {
    std::size_t bad;
    std::size_t good;
};

/// The lower bound of Wilson's score interval: in one of ten cases the true share is smaller.
double leastShareOf(std::size_t part, std::size_t whole) {
    constexpr double z = 1.28;
    if (whole == 0) {
        return 0;
    }
    const auto count = static_cast<double>(whole);
    const double seen = share(part, whole);
    const double center = seen + z * z / (2 * count);
    const double margin = z * std::sqrt((seen * (1 - seen) + z * z / (4 * count)) / count);
    return (center - margin) / (1 + z * z / count);
}

/// The chance of an outcome whose samples are bad with the chance given, each for itself.
double chanceOf(const Outcome& outcome, double chanceOfBad) {
    const double chance = std::clamp(chanceOfBad, leastShare, 1 - leastShare);
    return std::pow(chance, outcome.bad) * std::pow(1 - chance, outcome.good);
}

/// The same where that chance may be any from the one given up to 1.
double chanceOfAnyFrom(const Outcome& outcome, double least) {
    constexpr int steps = 20;
    double sum = 0;
    for (int step = 0; step < steps; ++step) {
        sum += chanceOf(outcome, least + (1 - least) * (step + 0.5) / steps);
    }
    return sum / steps;
}

/// `linkLoss`: the chance that the path up to the hop spoils a sample. A router that left out answers while
/// all was well does so now.
double chanceAt(const HopEvidence& hop, const Outcome& outcome, double linkLoss) {
    const double chanceOfBad = 1 - (1 - linkLoss) * (hop.isHost ? 1 : hop.quietShare);
    const double chance = chanceOf(outcome, chanceOfBad);
    return hop.isHost ? chance : (1 - unwilling) * chance + unwilling * chanceOfAnyFrom(outcome, chanceOfBad);
}

/// With more samples than these the chances would leave the range of numbers; the latest ones count.
constexpr std::size_t mostSamples = 40;

Outcome outcomeAt(const HopEvidence& hop, double extraMs) {
    const std::size_t skipped = hop.samples.size() - std::min(hop.samples.size(), mostSamples);
    const std::vector<HopSample> latest(
        hop.samples.begin() + static_cast<std::ptrdiff_t>(skipped), hop.samples.end());
    const std::size_t bad = countBad(latest, hop.quietMs, extraMs);
    // Whether an answer is late can only be told by the hop's usual latency.
    const bool isLatenessOpen = !hop.quietMs && extraMs > usualSpread;
    return {.bad = bad, .good = isLatenessOpen ? 0 : latest.size() - bad};
}

/// The hop that an address belongs to, from 1; 0: none of the path.
std::size_t numberOf(const std::vector<HopEvidence>& hops, const std::string& address) {
    const auto found = std::ranges::find(hops, address, &HopEvidence::address);
    return found == hops.end() ? 0 : static_cast<std::size_t>(found - hops.begin()) + 1;
}

} // namespace

bool isBadSample(const HopSample& sample, std::optional<double> usualMs, double extraMs) {
    if (!sample.ms) {
        return true;
    }
    return usualMs && extraMs > usualSpread && *sample.ms > *usualMs + extraMs / 2;
}

double extraDelay(const Evidence& evidence) {
    std::vector<double> answers;
    for (const HopSample& one : evidence.pings) {
        if (one.ms) {
            answers.push_back(*one.ms);
        }
    }
    const std::optional<double> now = medianOf(std::move(answers));
    return now && evidence.quietMs ? std::max(0.0, *now - *evidence.quietMs) : 0;
}

std::vector<double> faultPlaces(const Evidence& evidence, BadShare wanted) {
    const std::vector<HopEvidence>& hops = evidence.hops;
    if (hops.empty() || !hops.back().isHost) {
        return {};
    }
    const double extra = extraDelay(evidence);
    const std::size_t badPings = countBad(evidence.pings, evidence.quietMs, extra);
    const double badShare = wanted == BadShare::asSeen ? share(badPings, evidence.pings.size())
                                                       : leastShareOf(badPings, evidence.pings.size());
    std::vector<double> chances(hops.size(), 0); // as logarithms first
    for (std::size_t place = 0; place < hops.size(); ++place) {
        for (std::size_t number = 0; number < hops.size(); ++number) {
            const double linkLoss = number < place ? strayLoss : std::max(strayLoss, badShare);
            chances[place] += std::log(chanceAt(hops[number], outcomeAt(hops[number], extra), linkLoss));
        }
    }
    for (const UnreachableEvidence& word : evidence.unreachable) {
        if (const std::size_t number = numberOf(hops, word.sender); number > 0 && number < hops.size()) {
            chances[number] += std::log(weightOfAWord);
        }
    }
    const double largest = std::ranges::max(chances);
    std::ranges::transform(chances, chances.begin(), [&](double one) { return std::exp(one - largest); });
    const double sum = std::accumulate(chances.begin(), chances.end(), 0.0);
    std::ranges::transform(chances, chances.begin(), [&](double one) { return one / sum; });
    return chances;
}

} // namespace tarnwick
