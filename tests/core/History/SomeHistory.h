// Histories for tests, told in words as short as possible.
#pragma once

#include "core/History/History.h"
#include "core/History/LocalTime.h"

#include <string>

namespace tarnwick::test {

/// "2026-03-29 01:30" or "2026-03-29 01:30:15" in UTC.
[[nodiscard]] HistoryTime at(const std::string& text);
[[nodiscard]] Span between(const std::string& from, const std::string& to);

/// Watched throughout, a ping each five seconds, all answered in `ms`.
[[nodiscard]] Period goodPeriod(
    HistoryTime start, PeriodLength length = PeriodLength::minute, double ms = 20);
/// Such periods without a break.
[[nodiscard]] std::vector<Period> goodPeriods(const Span& span, PeriodLength length = PeriodLength::minute);

[[nodiscard]] Episode outage(const std::string& from, const std::string& to);
/// Of Central Europe: an hour ahead of UTC in winter, two in summer; changed on 2026-03-29 and 2026-10-25 at
/// 01:00 UTC.
[[nodiscard]] std::chrono::seconds centralEurope(HistoryTime time);

} // namespace tarnwick::test
