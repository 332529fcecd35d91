// A report as a page, for a day on which all was well unless a test changes it.
#pragma once

#include "app/Report/ReportHtml.h"
#include "tests/core/History/SomeHistory.h"

#include <string>
#include <vector>

namespace tarnwick::test {

inline const Span pageDay = between("2026-01-05 00:00", "2026-01-06 00:00");

[[nodiscard]] inline History aGoodDay() {
    History history{.until = pageDay.to};
    history.periods = goodPeriods(pageDay, PeriodLength::quarterHour);
    return history;
}

[[nodiscard]] inline std::string pageOf(
    const History& history, const Span& wanted = pageDay, const std::string& host = "one.example") {
    return reportHtml(
        makeReport(history, host, wanted, centralEurope),
        {.version = "1.2.3", .made = at("2026-01-06 12:00")}, centralEurope);
}

[[nodiscard]] inline std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t found = text.find(part); found != std::string::npos;
         found = text.find(part, found + 1)) {
        ++count;
    }
    return count;
}

/// Without what is not watched.
inline void letSleep(History& history, const Span& span) {
    history.gaps.push_back({.kind = Gap::Kind::asleep, .span = span});
    std::erase_if(history.periods, [&](const Period& period) { return period.span().overlaps(span); });
}

} // namespace tarnwick::test
