#include "core/History/CalendarNames.h"

#include <array>

namespace tarnwick::CalendarNames {

namespace {

constexpr std::size_t shortLength = 3;

} // namespace

std::string_view of(std::chrono::weekday weekday) {
    constexpr std::array<std::string_view, 7> names{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                    "Thursday", "Friday", "Saturday"};
    return names.at(weekday.c_encoding());
}

std::string_view shortOf(std::chrono::weekday weekday) {
    return of(weekday).substr(0, shortLength);
}

std::string_view shortOf(std::chrono::month month) {
    constexpr std::array<std::string_view, 12> names{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    return names.at(static_cast<unsigned>(month) - 1);
}

} // namespace tarnwick::CalendarNames
