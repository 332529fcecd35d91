#include "core/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace tarnwick::Text {

namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

/// What a person would call blank, in UTF-8.
constexpr std::array<std::string_view, 25> spaces{
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00A0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000",
};

/// The "C" locale for one conversion: the process may have taken the user's, with a comma for a point.
class ClassicLocale {
public:
    ClassicLocale() : locale_(newlocale(LC_ALL_MASK, "C", nullptr)) {}

    ClassicLocale(const ClassicLocale&) = delete;
    ClassicLocale& operator=(const ClassicLocale&) = delete;

    ~ClassicLocale() { freelocale(locale_); }

    [[nodiscard]] locale_t get() const { return locale_; }

private:
    locale_t locale_;
};

} // namespace

std::string_view trimmed(std::string_view text) {
    const auto leading = [&] {
        const auto* const space =
            std::ranges::find_if(spaces, [&](auto one) { return text.starts_with(one); });
        return space != spaces.end() ? space->size() : 0;
    };
    const auto trailing = [&] {
        const auto* const space = std::ranges::find_if(spaces, [&](auto one) { return text.ends_with(one); });
        return space != spaces.end() ? space->size() : 0;
    };
    for (std::size_t size = leading(); size > 0; size = leading()) {
        text.remove_prefix(size);
    }
    for (std::size_t size = trailing(); size > 0; size = trailing()) {
        text.remove_suffix(size);
    }
    return text;
}

std::optional<double> parseNumber(std::string_view text) {
    const std::string terminated(text);
    // The conversion would skip leading white space and take hexadecimal numbers.
    if (terminated.empty() || whiteSpace.find(terminated.front()) != std::string_view::npos
        || terminated.find_first_of("xX") != std::string::npos) {
        return std::nullopt;
    }
    const ClassicLocale classic;
    char* end = nullptr;
    const double value = strtod_l(terminated.c_str(), &end, classic.get());
    if (end != terminated.c_str() + terminated.size()) {
        return std::nullopt;
    }
    return value;
}

std::string whole(double value) {
    constexpr double exactBelow = 0x1p53;
    const double rounded = std::round(value);
    if (std::abs(rounded) < exactBelow) {
        return std::to_string(static_cast<std::int64_t>(rounded));
    }
    return fixed(rounded, 0);
}

std::string fixed(double value, int digits) {
    // Room for the largest double in full, a sign, a point and the digits asked for.
    std::array<char, std::numeric_limits<double>::max_exponent10 + 32> buffer{};
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
    return {buffer.data(), result.ptr};
}

std::string printable(std::string_view text) {
    std::string result(text);
    std::ranges::replace_if(
        result, [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; }, '?');
    return result;
}

} // namespace tarnwick::Text
