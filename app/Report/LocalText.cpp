#include "app/Report/LocalText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace tarnwick::LocalText {

namespace {

/// "07" for 7.
std::string twoDigits(std::int64_t number) {
    const std::string text = std::to_string(number);
    return text.size() < 2 ? "0" + text : text;
}

/// "14:05".
std::string clockText(HistoryTime time, const UtcOffset& offset) {
    const HistoryTime local = localTime(time, offset);
    const std::chrono::hh_mm_ss clock(local - std::chrono::floor<std::chrono::days>(local));
    return twoDigits(clock.hours().count()) + ":" + twoDigits(clock.minutes().count());
}

/// ":09".
std::string secondsText(HistoryTime time, const UtcOffset& offset) {
    const HistoryTime local = localTime(time, offset);
    return ":" + twoDigits((local - floorTo(local, std::chrono::minutes(1))).count());
}

/// "+01:00".
std::string offsetText(HistoryTime time, const UtcOffset& offset) {
    const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(offset(time)).count();
    const std::int64_t ahead = std::abs(minutes);
    return (minutes < 0 ? "-" : "+") + twoDigits(ahead / 60) + ":" + twoDigits(ahead % 60);
}

std::string zoneWhereNeeded(HistoryTime time, const UtcOffset& offset) {
    return isShownTwice(time, offset) ? " " + zone(time, offset) : "";
}

} // namespace

std::string zones(const Span& span, const UtcOffset& offset) {
    std::string text = zone(span.from, offset);
    std::chrono::seconds present = offset(span.from);
    for (HistoryTime from = span.from; from < span.to;) {
        const Span whole = spanOfDay(localDay(from, offset), offset);
        const HistoryTime last = std::min(whole.to, span.to) - std::chrono::seconds(1);
        if (std::exchange(present, offset(last)) != offset(last)) {
            text += ", from " + day(localDay(last, offset)) + " on " + zone(last, offset);
        }
        from = whole.to;
    }
    return text;
}

std::string day(std::chrono::year_month_day day) {
    return std::to_string(static_cast<int>(day.year())) + "-" + twoDigits(static_cast<unsigned>(day.month()))
           + "-" + twoDigits(static_cast<unsigned>(day.day()));
}

std::string time(HistoryTime time, const UtcOffset& offset) {
    return day(localDay(time, offset)) + " " + clockText(time, offset) + secondsText(time, offset)
           + zoneWhereNeeded(time, offset);
}

std::string minute(HistoryTime time, const UtcOffset& offset) {
    return day(localDay(time, offset)) + " " + clockText(time, offset) + zoneWhereNeeded(time, offset);
}

std::string isoTime(HistoryTime time, const UtcOffset& offset) {
    return day(localDay(time, offset)) + "T" + clockText(time, offset) + secondsText(time, offset)
           + offsetText(time, offset);
}

std::string zone(HistoryTime time, const UtcOffset& offset) {
    return "UTC" + offsetText(time, offset);
}

std::string length(std::chrono::seconds length) {
    const std::array units{
        std::pair{std::int64_t{86'400}, "d"}, std::pair{std::int64_t{3600}, "h"},
        std::pair{std::int64_t{60}, "min"}, std::pair{std::int64_t{1}, "s"}};
    std::int64_t rest = length.count();
    std::string text;
    for (std::size_t index = 0; index < units.size(); ++index) {
        const auto& [seconds, unit] = units.at(index);
        const std::int64_t count = rest / seconds;
        const bool isLast = index + 1 == units.size();
        rest %= seconds;
        if (!text.empty()) {
            return count > 0 ? text + " " + std::to_string(count) + " " + unit : text;
        }
        if (count > 0 || isLast) {
            text = std::to_string(count) + " " + unit;
        }
    }
    return text;
}

std::string length(double seconds) {
    return length(std::chrono::seconds(std::llround(seconds)));
}

std::string milliseconds(std::optional<double> ms) {
    return ms ? number(*ms, 1) + " ms" : "unknown";
}

std::string availability(std::optional<double> percent) {
    if (!percent) {
        return "unknown";
    }
    if (*percent >= 100) {
        return "100%";
    }
    return number(std::floor(*percent * 1000) / 1000, 3) + "%";
}

std::string number(double value, int decimals) {
    std::array<char, 64> text{};
    // Not as the user's language has it: a report is read elsewhere, and by programs.
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, decimals);
    return {text.data(), end.ptr};
}

} // namespace tarnwick::LocalText
