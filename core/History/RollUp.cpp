#include "core/History/RollUp.h"

namespace tarnwick::RollUp {

namespace {

/// The period of this length in which `time` lies.
Key around(HistoryTime time, PeriodLength length) {
    return {.start = floorTo(time, secondsIn(length)), .length = length};
}

HistoryTime endOf(const Key& period) {
    return period.start + secondsIn(period.length);
}

} // namespace

std::optional<Key> placeOf(const Key& period, HistoryTime now) {
    if (endOf(period) <= oldestKept(now)) {
        return std::nullopt;
    }
    const Key hour = around(period.start, PeriodLength::hour);
    if (endOf(hour) <= now - quarterHoursKept) {
        return hour;
    }
    const Key quarterHour = around(period.start, PeriodLength::quarterHour);
    const bool isMinute = period.length == PeriodLength::minute;
    return isMinute && endOf(quarterHour) <= now - minutesKept ? quarterHour : period;
}

Plan planFor(const std::vector<Key>& periods, HistoryTime now) {
    Plan plan;
    for (const Key& period : periods) {
        const auto place = placeOf(period, now);
        if (!place) {
            plan.removals.push_back(period);
        } else if (*place != period) {
            plan.merges[*place].push_back(period);
        }
    }
    return plan;
}

HistoryTime oldestKept(HistoryTime now) {
    return now - allKept;
}

HistoryTime youngestDue(PeriodLength length, HistoryTime now) {
    switch (length) {
    case PeriodLength::minute:
        return now - minutesKept;
    case PeriodLength::quarterHour:
        return now - quarterHoursKept;
    case PeriodLength::hour:
        break;
    }
    return oldestKept(now);
}

} // namespace tarnwick::RollUp
