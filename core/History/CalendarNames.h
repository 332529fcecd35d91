// What days and months are called, in English.
#pragma once

#include <chrono>
#include <string_view>

namespace tarnwick::CalendarNames {

/// "Monday".
[[nodiscard]] std::string_view of(std::chrono::weekday weekday);
/// "Mon".
[[nodiscard]] std::string_view shortOf(std::chrono::weekday weekday);
/// "Jan".
[[nodiscard]] std::string_view shortOf(std::chrono::month month);

} // namespace tarnwick::CalendarNames
