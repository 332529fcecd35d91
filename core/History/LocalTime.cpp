#include "core/History/LocalTime.h"

#include <ctime>

namespace tarnwick {

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

/// No clock is further from UTC.
constexpr std::chrono::hours farthest{30};

/// The first moment, to the second, whose local day is `day` or later.
HistoryTime startOf(sys_days day, const UtcOffset& offset) {
    HistoryTime before = day - farthest;
    HistoryTime after = day + farthest;
    while (after - before > std::chrono::seconds(1)) {
        const HistoryTime middle = before + (after - before) / 2;
        (localTime(middle, offset) < day ? before : after) = middle;
    }
    return after;
}

} // namespace

std::chrono::seconds systemUtcOffset(HistoryTime time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    return std::chrono::seconds(local.tm_gmtoff);
}

HistoryTime localTime(HistoryTime time, const UtcOffset& offset) {
    return time + offset(time);
}

year_month_day localDay(HistoryTime time, const UtcOffset& offset) {
    return std::chrono::floor<std::chrono::days>(localTime(time, offset));
}

Span spanOfDay(year_month_day day, const UtcOffset& offset) {
    const sys_days first = day;
    return {.from = startOf(first, offset), .to = startOf(first + std::chrono::days(1), offset)};
}

bool isShownTwice(HistoryTime time, const UtcOffset& offset) {
    constexpr std::chrono::hours farthestChange{3}; // no clock is set back by as much
    const std::chrono::seconds present = offset(time);
    const std::chrono::seconds before = offset(time - farthestChange);
    const std::chrono::seconds after = offset(time + farthestChange);
    return (before > present && offset(time - (before - present)) == before)
           || (after < present && offset(time + (present - after)) == after);
}

HistoryTime startOfHour(HistoryTime time, const UtcOffset& offset) {
    const HistoryTime local = localTime(time, offset);
    return time - (local - floorTo(local, std::chrono::hours(1)));
}

} // namespace tarnwick
