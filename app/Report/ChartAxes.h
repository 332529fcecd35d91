// Where the axes of a report's chart have their marks.
#pragma once

#include "core/History/LocalTime.h"

#include <string>
#include <vector>

namespace tarnwick::ChartAxes {

struct TimeMark {
    HistoryTime time{};
    std::string text{}; ///< "14:05", "17 Nov" or "Nov 2026"
};

/// Moments that people count by, at most a dozen: hours of the local clock, days or months of its calendar.
[[nodiscard]] std::vector<TimeMark> timeMarks(const Span& span, const UtcOffset& offset);

/// The next round number that is not below `value`, which is above 0: 1, 2, 4, 6 or 8 with zeros.
[[nodiscard]] double roundUp(double value);

/// "17 Nov".
[[nodiscard]] std::string dayText(std::chrono::year_month_day day);
/// "Nov 2026".
[[nodiscard]] std::string monthText(std::chrono::year_month month);

} // namespace tarnwick::ChartAxes
