#include "core/Diagnosis/PathTrace.h"

#include "core/Diagnosis/Median.h"

#include <algorithm>

namespace tarnwick {

namespace {

/// More than ten minutes of probes: those of a long trouble's beginning are dropped.
constexpr std::size_t mostKeptSamples = 700;

std::size_t indexOf(int hopLimit) {
    return static_cast<std::size_t>(hopLimit) - 1;
}

} // namespace

void PathTrace::learn(double now) {
    mode_ = Mode::learning;
    hops_.assign(mostHops, Hop{});
    hostAt_.reset();
    samples_.clear();
    nextProbeAt_ = now;
}

void PathTrace::watch(double now, double since) {
    if (mode_ == Mode::watching) {
        return;
    }
    nextProbeAt_ = std::max(nextProbeAt_, now);
    mode_ = Mode::watching;
    for (Hop& hop : hops_) {
        hop.probes = 0;
    }
    for (Sample& sample : samples_) {
        sample.isQuiet = sample.isQuiet && sample.sentAt < since;
    }
}

void PathTrace::rest() {
    mode_ = Mode::resting;
}

std::optional<PathTrace::Probe> PathTrace::probe(double now) {
    if (mode_ == Mode::resting || now < nextProbeAt_) {
        return std::nullopt;
    }
    const std::optional<int> hopLimit = mode_ == Mode::learning ? nextToLearn() : nextToWatch();
    if (!hopLimit) {
        mode_ = Mode::resting;
        return std::nullopt;
    }
    const Probe probe{.id = nextId_++, .hopLimit = *hopLimit};
    ++hops_[indexOf(*hopLimit)].probes;
    samples_.push_back(
        {.id = probe.id,
         .hopLimit = *hopLimit,
         .sentAt = now,
         .ms = std::nullopt,
         .isQuiet = mode_ == Mode::learning});
    if (samples_.size() > mostKeptSamples) {
        const auto isOld = [](const Sample& sample) { return !sample.isQuiet; };
        samples_.erase(std::ranges::find_if(samples_, isOld));
    }
    nextProbeAt_ = now + interval;
    return probe;
}

void PathTrace::answered(std::uint64_t id, const std::string& sender, bool isHost, double at) {
    const auto sample = std::ranges::find(samples_, id, &Sample::id);
    if (sample == samples_.end() || sample->ms || at - sample->sentAt > patience) {
        return;
    }
    Hop& hop = hops_[indexOf(sample->hopLimit)];
    const bool isKnown = std::ranges::find(hop.quietSenders, sender) != hop.quietSenders.end();
    if (sample->isQuiet && !isKnown) {
        hop.quietSenders.push_back(sender);
    } else if (!isHost && !isKnown && !hop.quietSenders.empty()) {
        sample->stranger = sender;
        return;
    }
    constexpr double msPerSecond = 1000;
    sample->ms = std::max(0.0, at - sample->sentAt) * msPerSecond;
    hop.address = sender;
    if (isHost && (!hostAt_ || sample->hopLimit < *hostAt_)) {
        hostAt_ = sample->hopLimit;
    }
}

bool PathTrace::isFromNewWay(const Sample& sample) const {
    return !sample.ms && !sample.stranger.empty() && std::ranges::none_of(samples_, [&](const Sample& other) {
        return other.stranger == sample.stranger && other.hopLimit != sample.hopLimit;
    });
}

bool PathTrace::hasChanged() const {
    return std::ranges::any_of(samples_, [&](const Sample& sample) { return isFromNewWay(sample); });
}

int PathTrace::lastHop() const {
    return hostAt_.value_or(mostHops);
}

/// In rounds, so that the way to the host is known soon.
std::optional<int> PathTrace::nextToLearn() const {
    const auto end = hops_.begin() + lastHop();
    const auto next = std::ranges::min_element(hops_.begin(), end, {}, &Hop::probes);
    return next->probes < quietProbes ? std::optional(static_cast<int>(next - hops_.begin()) + 1)
                                      : std::nullopt;
}

std::optional<int> PathTrace::nextToWatch() const {
    constexpr int mostSilent = 2; // in a row, beyond the last hop that has answered
    std::optional<int> next;
    int silent = 0;
    for (int hopLimit = 1; hopLimit <= lastHop(); ++hopLimit) {
        const bool isKnown = hasAnswered(hopLimit);
        silent = isKnown ? 0 : silent + 1;
        const bool isWanted = isKnown || (!hostAt_ && silent <= mostSilent);
        if (isWanted && (!next || hops_[indexOf(hopLimit)].probes < hops_[indexOf(*next)].probes)) {
            next = hopLimit;
        }
    }
    return next;
}

bool PathTrace::hasAnswered(int hopLimit) const {
    return !hops_[indexOf(hopLimit)].address.empty();
}

std::vector<HopEvidence> PathTrace::hops(double since, double now) const {
    int last = hostAt_.value_or(0);
    for (int hopLimit = last + 1; !hostAt_ && hopLimit <= mostHops; ++hopLimit) {
        last = hasAnswered(hopLimit) ? hopLimit : last;
    }
    std::vector<HopEvidence> path;
    for (int hopLimit = 1; hopLimit <= last; ++hopLimit) {
        path.push_back(evidenceOf(hopLimit, since, now));
    }
    const bool isHostBehind = !hostAt_ && last == mostHops;
    if (isHostBehind) {
        path.emplace_back();
        path.push_back({.isHost = true, .quietShare = 1});
    }
    return path;
}

HopEvidence PathTrace::evidenceOf(int hopLimit, double since, double now) const {
    HopEvidence evidence{.address = hops_[indexOf(hopLimit)].address, .isHost = hostAt_ == hopLimit};
    std::vector<double> quiet;
    int quietSent = 0;
    for (const Sample& sample : samples_) {
        if (sample.hopLimit != hopLimit) {
            continue;
        }
        if (sample.isQuiet) {
            ++quietSent;
            if (sample.ms) {
                quiet.push_back(*sample.ms);
            }
        } else if (
            sample.sentAt >= since && (sample.ms || now - sample.sentAt > patience)
            && !isFromNewWay(sample)) {
            evidence.samples.push_back({.ms = sample.ms});
        }
    }
    if (quietSent > 0) {
        evidence.quietShare = static_cast<double>(quiet.size()) / quietSent;
    } else if (hasAnswered(hopLimit)) {
        evidence.quietShare = 1; // who answers now is willing
    }
    evidence.quietMs = medianOf(std::move(quiet));
    return evidence;
}

} // namespace tarnwick
