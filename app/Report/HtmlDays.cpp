#include "app/Report/HtmlDays.h"

#include "app/Report/ChartAxes.h"
#include "app/Report/Html.h"
#include "app/Report/HtmlDrawing.h"
#include "app/Report/LocalText.h"
#include "core/History/CalendarNames.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarnwick {

namespace {

using Html::attribute;
using Html::element;
using std::chrono::year_month;

constexpr std::size_t mostListedDays = 14;

constexpr double monthsWidth = 720;
constexpr double monthsLeft = 64;
constexpr double daySide = 21;
constexpr double tallestMonth = 18;
constexpr double headHeight = 16;

/// How the day is colored. A minute of outage is no lost day.
const char* dayClass(const DaySummary& day) {
    switch (day.worst) {
    case DaySummary::Worst::notWatched:
        return "unwatched";
    case DaySummary::Worst::good:
        return "good";
    case DaySummary::Worst::degraded:
        return "degraded";
    case DaySummary::Worst::down:
        break;
    }
    return day.availability.percent().value_or(0) >= 99 ? "shaken" : "down";
}

std::string countOfOutages(int count) {
    return count == 0 ? "no outage" : std::to_string(count) + (count == 1 ? " outage" : " outages");
}

std::string availabilityOf(const DaySummary& day) {
    const auto percent = day.availability.percent();
    return percent ? LocalText::availability(percent) : "not watched";
}

std::string listedDay(const DaySummary& day) {
    const std::string name = std::string(CalendarNames::shortOf(std::chrono::weekday(day.day))) + " "
                             + ChartAxes::dayText(day.day);
    std::string text = element("time", attribute("datetime", LocalText::day(day.day)), name);
    text += element("strong", availabilityOf(day));
    if (day.availability.watched > 0) {
        text += element("span", countOfOutages(day.outages));
    }
    if (day.availability.down > 0) {
        text += element("span", "down " + LocalText::length(day.availability.down));
    }
    return element("li", attribute("class", dayClass(day)), text);
}

std::string dayLabel(const char* kind, double left, double baseline, const std::string& text) {
    return element("text", attribute("class", kind) + attribute("x", left) + attribute("y", baseline), text);
}

double leftOf(unsigned day) {
    return monthsLeft + daySide * (day - 1);
}

std::string drawnDay(const DaySummary& day, double top, double height) {
    const double left = leftOf(static_cast<unsigned>(day.day.day()));
    std::string square = LocalText::day(day.day) + ": " + availabilityOf(day);
    square += day.outages > 0 ? ", " + countOfOutages(day.outages) : "";
    std::string drawn = element(
        "rect",
        attribute("class", dayClass(day)) + attribute("x", left) + attribute("y", top)
            + attribute("width", daySide - 2) + attribute("height", height - 2),
        element("title", square));
    if (day.outages > 0 && height == tallestMonth) {
        const std::string count = day.outages > 99 ? "99+" : std::to_string(day.outages);
        drawn += dayLabel("count", left + (daySide - 2) / 2, top + height - 6, count);
    }
    return drawn;
}

std::string dayNumbers() {
    std::string drawn;
    for (unsigned day = 1; day <= 31; ++day) {
        drawn += dayLabel("number", leftOf(day) + (daySide - 2) / 2, headHeight - 5, std::to_string(day));
    }
    return drawn;
}

std::string daySign(const char* kind, const char* text) {
    return element("li", htmlSign(kind) + text);
}

/// Of more than half a year, all have the room of half a year.
double heightOfMonths(const std::vector<DaySummary>& days) {
    constexpr double room = 160;
    const double months = std::ceil(static_cast<double>(days.size()) / 28);
    return std::min(tallestMonth, std::floor(room / months));
}

std::string drawnMonths(const std::vector<DaySummary>& days) {
    std::string drawing = element("title", "Availability and outages of each day") + dayNumbers();
    year_month present{};
    const double height = heightOfMonths(days);
    double top = headHeight - height;
    for (const DaySummary& day : days) {
        const year_month month = day.day.year() / day.day.month();
        if (std::exchange(present, month) != month) {
            top += height;
            // Lower ones have room for the name of each other one.
            if (height == tallestMonth || static_cast<unsigned>(month.month()) % 2 == 1) {
                drawing += dayLabel("month", 0, top + height / 2 + 3, ChartAxes::monthText(month));
            }
        }
        drawing += drawnDay(day, top, height);
    }
    return htmlDrawing("months", monthsWidth, top + height, drawing);
}

} // namespace

std::string htmlDays(const std::vector<DaySummary>& days) {
    if (days.size() > mostListedDays) {
        return drawnMonths(days)
               + element(
                   "ul", attribute("class", "legend"),
                   daySign("good", "good") + daySign("degraded", "degraded")
                       + daySign("shaken", "outages, 99% up or more") + daySign("down", "less than 99% up")
                       + daySign("unwatched", "not watched"));
    }
    std::string items;
    for (const DaySummary& day : days) {
        items += listedDay(day);
    }
    return element("ol", attribute("class", "days"), items);
}

} // namespace tarnwick
