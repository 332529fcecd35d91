#include "app/Reading/Format.h"

#include "core/Text.h"
#include "core/Utf8.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <ctime>

namespace tarnwick::Format {

std::string wholeMs(double ms) {
    return Text::whole(ms) + " ms";
}

std::string timeOfDay(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    ::localtime_r(&seconds, &parts);
    std::array<char, 8> text{};
    static_cast<void>(std::strftime(text.data(), text.size(), "%H:%M", &parts));
    return text.data();
}

Grouping::Grouping(const char* localeName) {
    // Only the category that matters: collation alone would map megabytes.
    locale_t locale = ::newlocale(LC_NUMERIC_MASK, localeName, nullptr);
    if (locale == nullptr) {
        locale = ::newlocale(LC_NUMERIC_MASK, "C", nullptr);
    }
    locale_ = {locale, ::freelocale};
}

std::string integer(std::int64_t value, const Grouping& grouping) {
    std::array<char, 128> text{}; // 19 digits, and separators of up to 4 bytes
    const locale_t before = ::uselocale(grouping.locale_.get());
    // The apostrophe, which groups digits, comes from POSIX.
    const int size = __extension__ std::snprintf(text.data(), text.size(), "%'" PRId64, value);
    ::uselocale(before);
    return {text.data(), static_cast<std::size_t>(size)};
}

std::string elided(std::string_view text, std::size_t longest) {
    const std::size_t length = Utf8::length(text);
    if (length <= longest) {
        return std::string(text);
    }
    const std::size_t before = longest / 2;
    const std::size_t after = longest - before - 1;
    std::string result;
    for (std::size_t index = 0; index < length; ++index) {
        const char32_t character = Utf8::takeCharacter(text);
        if (index < before || index >= length - after) {
            Utf8::append(result, character);
        } else if (index == before) {
            result += "…";
        }
    }
    return result;
}

} // namespace tarnwick::Format
