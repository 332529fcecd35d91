// A history by days of the user's calendar.
#pragma once

#include "core/History/Availability.h"
#include "core/History/History.h"
#include "core/History/LocalTime.h"

#include <chrono>
#include <vector>

namespace tarnwick {

struct DaySummary {
    /// The worst that has been, from the best to the worst.
    enum class Worst { notWatched, good, degraded, down };

    std::chrono::year_month_day day{};
    Span span{}; ///< 23 to 25 hours; today's ends where the history does
    Worst worst = Worst::notWatched;
    Availability availability{};
    int outages = 0; ///< that began, lasted or ended on this day
    PeriodFigures figures{};
};

/// One summary for each day from `first` to `last`.
[[nodiscard]] std::vector<DaySummary> daySummaries(
    const History& history, std::chrono::year_month_day first, std::chrono::year_month_day last,
    const UtcOffset& offset);

} // namespace tarnwick
