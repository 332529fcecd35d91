// Times, lengths and shares as a report writes them.
#pragma once

#include "core/History/LocalTime.h"

#include <chrono>
#include <optional>
#include <string>

namespace tarnwick::LocalText {

/// "2026-11-23 14:05:09" by the local clock. Where the clock shows that twice, since it is set back, the time
/// zone follows: "2026-10-25 02:30:00 UTC+02:00".
[[nodiscard]] std::string time(HistoryTime time, const UtcOffset& offset);
/// Likewise without the seconds: "2026-11-23 14:05".
[[nodiscard]] std::string minute(HistoryTime time, const UtcOffset& offset);
/// "2026-11-23T14:05:09+01:00".
[[nodiscard]] std::string isoTime(HistoryTime time, const UtcOffset& offset);
/// "UTC+01:00".
[[nodiscard]] std::string zone(HistoryTime time, const UtcOffset& offset);
/// All that the local clock has in this time: "UTC+02:00, from 2026-10-25 on UTC+01:00".
[[nodiscard]] std::string zones(const Span& span, const UtcOffset& offset);
/// "2026-11-23".
[[nodiscard]] std::string day(std::chrono::year_month_day day);
/// The two largest units: "42 s", "3 min 7 s", "5 h 12 min", "3 d 4 h".
[[nodiscard]] std::string length(std::chrono::seconds length);
/// The same, to the nearest second.
[[nodiscard]] std::string length(double seconds);
/// "20.0 ms"; "unknown" for none.
[[nodiscard]] std::string milliseconds(std::optional<double> ms);
/// "99.982%", rounded down so that only a whole time is "100%"; "unknown" for none.
[[nodiscard]] std::string availability(std::optional<double> percent);
/// With as many decimals: "2.50".
[[nodiscard]] std::string number(double value, int decimals);

} // namespace tarnwick::LocalText
