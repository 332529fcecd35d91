// Days and hours as the user's clock has them.
#pragma once

#include "core/History/Span.h"

#include <chrono>
#include <functional>

namespace tarnwick {

/// How far the local clock is ahead of UTC at a time; negative where it is behind.
using UtcOffset = std::function<std::chrono::seconds(HistoryTime)>;

/// By the time zone of the system or of the environment. Main thread.
[[nodiscard]] std::chrono::seconds systemUtcOffset(HistoryTime time);

/// What the local clock shows, as if it were UTC.
[[nodiscard]] HistoryTime localTime(HistoryTime time, const UtcOffset& offset);
[[nodiscard]] std::chrono::year_month_day localDay(HistoryTime time, const UtcOffset& offset);
/// From its first to its last moment: 23 or 25 hours long where the clock is changed.
[[nodiscard]] Span spanOfDay(std::chrono::year_month_day day, const UtcOffset& offset);
/// Whether the local clock shows the same at another moment, since it is set back.
[[nodiscard]] bool isShownTwice(HistoryTime time, const UtcOffset& offset);
/// When the local clock last showed a full hour.
[[nodiscard]] HistoryTime startOfHour(HistoryTime time, const UtcOffset& offset);

} // namespace tarnwick
