#include "app/Reading/PathRows.h"

#include "app/Reading/Format.h"
#include "core/Diagnosis/HopSamples.h"
#include "core/Text.h"

#include <algorithm>

namespace tarnwick {

namespace {

constexpr const char* unknown = "—";
/// Less can be chance.
constexpr double smallestLoss = 0.05;
/// Milliseconds of the whole length at least: what is short looks short.
constexpr double shortestScale = 20;

std::string latencyOf(double ms) {
    return ms < 1 ? "<1 ms" : Format::wholeMs(ms);
}

} // namespace

std::string PathRow::summary() const {
    std::string text = "Hop " + hop + ", " + address;
    if (!name.empty()) {
        text += ", " + name;
    }
    if (loss != unknown) {
        text += ", " + loss + " lost";
    }
    if (latency != unknown) {
        text += ", " + latency;
    }
    return text;
}

std::vector<PathRow> pathRows(const std::vector<HopEvidence>& path) {
    double longest = shortestScale;
    for (const HopEvidence& hop : path) {
        longest = std::max(longest, latestMs(hop.samples).value_or(0));
    }
    std::vector<PathRow> rows;
    for (const HopEvidence& hop : path) {
        const auto lost = lostShare(hop.samples);
        const auto ms = latestMs(hop.samples);
        rows.push_back(
            {.hop = std::to_string(rows.size() + 1),
             .address = hop.address.empty() ? "No answer" : hop.address,
             .name = hop.name,
             .loss = lost ? Text::whole(100 * *lost) + "%" : unknown,
             .latency = ms ? latencyOf(*ms) : unknown,
             .barShare = ms.value_or(0) / longest,
             .isLossy = lost.value_or(0) >= smallestLoss});
    }
    return rows;
}

} // namespace tarnwick
