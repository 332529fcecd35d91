#include "app/Report/TimeArgument.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <string_view>

namespace tarnwick {

namespace {

/// The digits at the front, which are taken away. Nothing unless there are as many as `fewest` to `most`.
std::optional<int> takeDigits(std::string_view& text, std::size_t fewest, std::size_t most) {
    std::size_t count = 0;
    while (count < text.size() && std::isdigit(static_cast<unsigned char>(text[count])) != 0) {
        ++count;
    }
    int number = 0;
    if (count < fewest || count > most) {
        return std::nullopt;
    }
    const std::string digits(text.substr(0, count));
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    text.remove_prefix(count);
    return number;
}

bool takeCharacter(std::string_view& text, char wanted) {
    if (!text.starts_with(wanted)) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

std::optional<std::chrono::minutes> agoIn(std::string_view text) {
    const auto count = takeDigits(text, 1, 6);
    if (!count) {
        return std::nullopt;
    }
    if (text == "m") {
        return std::chrono::minutes(*count);
    }
    if (text == "h") {
        return std::chrono::hours(*count);
    }
    if (text == "d") {
        return std::chrono::days(*count);
    }
    return text == "w" ? std::optional<std::chrono::minutes>(std::chrono::weeks(*count)) : std::nullopt;
}

std::optional<std::chrono::year_month_day> takeDay(std::string_view& text) {
    const auto year = takeDigits(text, 4, 4);
    const bool hasMonth = takeCharacter(text, '-');
    const auto month = takeDigits(text, 2, 2);
    const bool hasDay = takeCharacter(text, '-');
    const auto day = takeDigits(text, 2, 2);
    if (!year || !hasMonth || !month || !hasDay || !day) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{
        std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
        std::chrono::day(static_cast<unsigned>(*day))};
    return date.ok() ? std::optional(date) : std::nullopt;
}

/// What follows the day: nothing, or a time of day.
std::optional<std::chrono::minutes> clockIn(std::string_view text) {
    if (text.empty()) {
        return std::chrono::minutes(0);
    }
    const bool hasTime = takeCharacter(text, 'T');
    const auto hour = takeDigits(text, 2, 2);
    const bool hasMinute = takeCharacter(text, ':');
    const auto minute = takeDigits(text, 2, 2);
    if (!hasTime || !hour || !hasMinute || !minute || !text.empty() || *hour > 23 || *minute > 59) {
        return std::nullopt;
    }
    return std::chrono::hours(*hour) + std::chrono::minutes(*minute);
}

/// When the local clock shows this: of two such moments the first one, of none the one before the clock is
/// changed.
HistoryTime momentOf(HistoryTime shown, const UtcOffset& offset) {
    const HistoryTime before = shown - offset(shown - std::chrono::days(1));
    const HistoryTime after = shown - offset(shown + std::chrono::days(1));
    const HistoryTime later = std::max(before, after);
    const bool isOnlyLater =
        localTime(later, offset) == shown && localTime(std::min(before, after), offset) != shown;
    return isOnlyLater ? later : std::min(before, after);
}

} // namespace

std::optional<HistoryTime> timeIn(const std::string& text, HistoryTime now, const UtcOffset& offset) {
    if (const auto ago = agoIn(text)) {
        return now - *ago;
    }
    std::string_view rest = text;
    const auto day = takeDay(rest);
    const auto clock = day ? clockIn(rest) : std::nullopt;
    if (!day || !clock) {
        return std::nullopt;
    }
    if (*clock == std::chrono::minutes(0)) {
        return spanOfDay(*day, offset).from;
    }
    return momentOf(std::chrono::sys_days(*day) + *clock, offset);
}

} // namespace tarnwick
