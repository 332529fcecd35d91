#include "tests/core/History/SomeHistory.h"

#include <cstdio>
#include <stdexcept>

namespace tarnwick::test {

HistoryTime at(const std::string& text) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (std::sscanf(text.c_str(), "%d-%u-%u %d:%d:%d", &year, &month, &day, &hour, &minute, &second) < 5) {
        throw std::invalid_argument(text);
    }
    const std::chrono::year_month_day date{
        std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    return std::chrono::sys_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute)
           + std::chrono::seconds(second);
}

Span between(const std::string& from, const std::string& to) {
    return {.from = at(from), .to = at(to)};
}

Period goodPeriod(HistoryTime start, PeriodLength length, double ms) {
    Period period{.start = start, .length = length};
    const auto seconds = secondsIn(length).count();
    period.figures.watchedSeconds = static_cast<double>(seconds);
    for (std::int64_t ping = 0; ping < seconds / 5; ++ping) {
        ++period.figures.sent;
        period.figures.addAnswer(ms);
    }
    return period;
}

std::vector<Period> goodPeriods(const Span& span, PeriodLength length) {
    std::vector<Period> periods;
    for (HistoryTime start = span.from; start < span.to; start += secondsIn(length)) {
        periods.push_back(goodPeriod(start, length));
    }
    return periods;
}

Episode outage(const std::string& from, const std::string& to) {
    return {.kind = Episode::Kind::outage, .start = at(from), .end = at(to)};
}

std::chrono::seconds centralEurope(HistoryTime time) {
    const bool isSummer =
        between("2026-03-29 01:00", "2026-10-25 01:00").overlaps({time, time + std::chrono::seconds(1)});
    return std::chrono::hours(isSummer ? 2 : 1);
}

} // namespace tarnwick::test
