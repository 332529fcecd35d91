#include "core/History/ChartBuckets.h"

#include "core/History/Spans.h"

#include <algorithm>

namespace tarnwick {

namespace {

double shareOf(std::chrono::seconds part, const Span& whole) {
    return std::chrono::duration<double>(part) / std::chrono::duration<double>(whole.length());
}

HistoryBucket bucketFor(const History& history, const Span& span) {
    HistoryBucket bucket{.span = span};
    double settled = 0;
    double lost = 0;
    for (const Period& period : periodsIn(history, span)) {
        const PeriodFigures& figures = period.figures;
        const double share = shareOf(common(period.span(), span).length(), period.span());
        settled += share * static_cast<double>(figures.replied + figures.lost);
        lost += share * static_cast<double>(figures.lost);
        if (figures.replied > 0) {
            bucket.slowestMs = std::max(bucket.slowestMs.value_or(0), figures.slowestMs);
        }
    }
    bucket.lossShare = settled > 0 ? lost / settled : 0;
    if (!span.isEmpty()) {
        bucket.gapShare = shareOf(lengthOf(gapsIn(history, span)), span);
    }
    bucket.isDown = !episodeSpansIn(history, span, Episode::Kind::outage).empty();
    return bucket;
}

} // namespace

std::vector<HistoryBucket> chartBuckets(const History& history, const Span& span, int count) {
    std::vector<HistoryBucket> buckets;
    for (int index = 0; index < count; ++index) {
        // Each edge from the whole, so that parts of a second do not add up.
        const Span part{
            .from = span.from + span.length() * index / count,
            .to = span.from + span.length() * (index + 1) / count};
        buckets.push_back(bucketFor(history, part));
    }
    return buckets;
}

} // namespace tarnwick
