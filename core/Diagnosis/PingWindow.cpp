#include "core/Diagnosis/PingWindow.h"

#include "core/Diagnosis/Median.h"
#include "core/Diagnosis/PathTrace.h"

#include <algorithm>
#include <iterator>
#include <ranges>
#include <utility>

namespace tarnwick {

namespace {

/// Seconds whose answers may be late.
constexpr double latenessSpan = 6;
constexpr std::size_t fewestAnswers = 3;
/// Milliseconds above the usual.
constexpr double leastLateness = 100;
/// Seconds without an answer that make the host suspicious.
constexpr double suspiciousSilence = 2.5;

std::optional<double> answerMs(const PendingPing& ping) {
    constexpr double msPerSecond = 1000;
    return ping.reply ? std::optional((*ping.reply - ping.sent) * msPerSecond) : std::nullopt;
}

} // namespace

bool areAnswersLate(const std::vector<PendingPing>& pings, std::optional<double> usualMs, double now) {
    std::vector<double> answers;
    for (const PendingPing& ping : pings) {
        if (const auto ms = answerMs(ping); ms && now - ping.sent <= latenessSpan) {
            answers.push_back(*ms);
        }
    }
    if (answers.size() < fewestAnswers || !usualMs) {
        return false;
    }
    const double median = medianOf(std::move(answers)).value_or(0);
    return median >= 2 * *usualMs && median >= *usualMs + leastLateness;
}

bool isSilenceSuspicious(const std::vector<PendingPing>& pings, std::optional<double> lastReply, double now) {
    if (!lastReply || now - *lastReply < suspiciousSilence) {
        return false;
    }
    return std::ranges::any_of(pings, [now, last = *lastReply](const PendingPing& ping) {
        return !ping.reply && ping.sent > last && now - ping.sent >= 1;
    });
}

double silentSince(const std::vector<PendingPing>& pings) {
    const auto lastFirst = std::views::reverse(pings);
    const auto answered =
        std::ranges::find_if(lastFirst, [](const PendingPing& ping) { return ping.reply.has_value(); });
    return answered == lastFirst.begin() ? 0 : std::prev(answered)->sent;
}

SettledPings settledPings(const std::vector<PendingPing>& pings, double since, double now) {
    SettledPings settled;
    for (const PendingPing& ping : pings) {
        if (ping.reply || ping.lost || now - ping.sent > PathTrace::patience) {
            (ping.sent >= since ? settled.since : settled.before).push_back({.ms = answerMs(ping)});
        }
    }
    return settled;
}

} // namespace tarnwick
