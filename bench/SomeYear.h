// A year's journal, the same every time.
#pragma once

#include "platform/journal/SqliteJournal.h"

#include <chrono>
#include <string>

namespace tarnwick {

inline constexpr const char* benchHost = "one.example";
inline constexpr std::chrono::sys_days benchYearEnd{std::chrono::year(2026) / 1 / 1};
inline constexpr Span benchYear{.from = benchYearEnd - std::chrono::days(365), .to = benchYearEnd};

/// Until `end`, a full hour: a week of minutes, 83 days of quarter hours, the rest of the year by hours; a
/// day has ten outages and four gaps. False where it can't be written.
bool writeYear(SqliteJournal& journal, HistoryTime end, const std::string& host = benchHost);

/// The figures of a minute with a ping a second.
[[nodiscard]] PeriodFigures someMinute();

} // namespace tarnwick
