#include "core/Update/UtcTime.h"

#include <cstddef>

namespace tarnwick {

namespace {

constexpr std::string_view utcForm = "dddd-dd-ddTdd:dd:ddZ"; // d stands for a digit

bool hasUtcForm(std::string_view text) {
    if (text.size() != utcForm.size()) {
        return false;
    }
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool isNumber = text[at] >= '0' && text[at] <= '9';
        if (utcForm[at] == 'd' ? !isNumber : text[at] != utcForm[at]) {
            return false;
        }
    }
    return true;
}

int digitsOf(std::string_view digits) {
    int number = 0;
    for (const char digit : digits) {
        number = 10 * number + (digit - '0');
    }
    return number;
}

} // namespace

std::optional<std::chrono::sys_seconds> parseUtcTime(std::string_view text) {
    if (!hasUtcForm(text)) {
        return std::nullopt;
    }
    const std::chrono::year_month_day day{
        std::chrono::year(digitsOf(text.substr(0, 4))),
        std::chrono::month(static_cast<unsigned>(digitsOf(text.substr(5, 2)))),
        std::chrono::day(static_cast<unsigned>(digitsOf(text.substr(8, 2))))};
    const int hour = digitsOf(text.substr(11, 2));
    const int minute = digitsOf(text.substr(14, 2));
    const int second = digitsOf(text.substr(17, 2));
    if (!day.ok() || int(day.year()) < 2000 || int(day.year()) > 2199 || hour > 23 || minute > 59
        || second > 59) {
        return std::nullopt;
    }
    return std::chrono::sys_days(day) + std::chrono::hours(hour) + std::chrono::minutes(minute)
           + std::chrono::seconds(second);
}

} // namespace tarnwick
