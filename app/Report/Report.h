// What a history says about a time.
#pragma once

#include "core/History/Availability.h"
#include "core/History/ChartBuckets.h"
#include "core/History/Days.h"
#include "core/History/History.h"
#include "core/History/LocalTime.h"
#include "core/History/WorstHours.h"

#include <chrono>
#include <string>
#include <vector>

namespace tarnwick {

struct OutageEntry {
    Episode episode{};
    std::chrono::seconds length{}; ///< without gaps
    bool lasts = false;            ///< it had not ended when the history did
};

/// All of it lies in the report's span.
struct ReportChart {
    std::vector<HistoryBucket> buckets{}; ///< of a round length, and a minute at least
    std::vector<Span> outages{};          ///< without gaps, each moment once
    std::vector<Span> unwatched{};        ///< gaps, and buckets in which another host was pinged
};

struct Report {
    std::string host{};
    Span wanted{};
    Span span{}; ///< what of the wanted time the history covers
    Availability availability{};
    PeriodFigures figures{};
    std::vector<OutageEntry> outages{};    ///< in the order of their starts
    std::vector<HourSummary> worstHours{}; ///< five at most, the worst first
    std::vector<DaySummary> days{};        ///< that the span touches, from the first one watched
    ReportChart chart{};
};

/// `wanted` may begin before the history and end after it.
[[nodiscard]] Report makeReport(
    const History& history, const std::string& host, const Span& wanted, const UtcOffset& offset);

/// 0 without outages.
[[nodiscard]] std::chrono::seconds longestOutage(const Report& report);

} // namespace tarnwick
