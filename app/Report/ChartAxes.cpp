#include "app/Report/ChartAxes.h"

#include "app/Report/LocalText.h"
#include "core/History/CalendarNames.h"

#include <cmath>

namespace tarnwick::ChartAxes {

namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::months;
using std::chrono::sys_days;
using std::chrono::year_month;
using std::chrono::year_month_day;

constexpr int mostMarks = 12;

/// Of the hours and minutes at which the local clock shows a multiple of `step`, which divides a day.
std::vector<TimeMark> clockMarks(const Span& span, minutes step, const UtcOffset& offset) {
    std::vector<TimeMark> marks;
    // The quarters of an hour are the same everywhere, to the clock's change and back.
    constexpr minutes finest{5};
    for (HistoryTime time = floorTo(span.from + finest, finest); time < span.to; time += finest) {
        const HistoryTime local = localTime(time, offset);
        if (floorTo(local, step) == local) {
            marks.push_back({.time = time, .text = LocalText::minute(time, offset).substr(11, 5)});
        }
    }
    return marks;
}

std::vector<TimeMark> dayMarks(const Span& span, int step, const UtcOffset& offset) {
    std::vector<TimeMark> marks;
    for (sys_days day = localDay(span.from, offset);; day += days(1)) {
        const HistoryTime start = spanOfDay(day, offset).from;
        if (start >= span.to) {
            return marks;
        }
        if (start >= span.from && day.time_since_epoch().count() % step == 0) {
            marks.push_back({.time = start, .text = dayText(day)});
        }
    }
}

std::vector<TimeMark> monthMarks(const Span& span, int step, const UtcOffset& offset) {
    std::vector<TimeMark> marks;
    const year_month_day first = localDay(span.from, offset);
    for (year_month month = first.year() / first.month();; month += months(1)) {
        const HistoryTime start = spanOfDay(month / 1, offset).from;
        if (start >= span.to) {
            return marks;
        }
        if (start >= span.from
            && (static_cast<unsigned>(month.month()) - 1) % static_cast<unsigned>(step) == 0) {
            marks.push_back({.time = start, .text = monthText(month)});
        }
    }
}

} // namespace

std::vector<TimeMark> timeMarks(const Span& span, const UtcOffset& offset) {
    for (const minutes step :
         {minutes(5), minutes(15), minutes(30), minutes(60), minutes(120), minutes(180), minutes(360)}) {
        if (span.length() <= step * mostMarks) {
            return clockMarks(span, step, offset);
        }
    }
    for (const int step : {1, 2, 7}) {
        if (span.length() <= days(step) * mostMarks) {
            return dayMarks(span, step, offset);
        }
    }
    return monthMarks(span, span.length() <= days(366) ? 1 : 3, offset);
}

double roundUp(double value) {
    const double power = std::pow(10, std::floor(std::log10(value)));
    for (const double round : {1.0, 2.0, 4.0, 6.0, 8.0}) {
        if (value <= round * power) {
            return round * power;
        }
    }
    return 10 * power;
}

std::string dayText(year_month_day day) {
    return std::to_string(static_cast<unsigned>(day.day())) + " "
           + std::string(CalendarNames::shortOf(day.month()));
}

std::string monthText(year_month month) {
    return std::string(CalendarNames::shortOf(month.month())) + " "
           + std::to_string(static_cast<int>(month.year()));
}

} // namespace tarnwick::ChartAxes
