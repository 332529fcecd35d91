#include "core/Text.h"

#include "core/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>
#include <system_error>

namespace tarnwick::Text {

namespace {

/// Unicode's white space, in UTF-8.
constexpr std::array<std::string_view, 25> spaces{
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00A0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000",
};

/// `std::from_chars` does not tell whether a number is too large or too small. A stream gives the largest
/// double or one near zero.
double outOfRange(std::string_view number) {
    std::istringstream stream{std::string(number)};
    stream.imbue(std::locale::classic());
    double nearest = 0;
    stream >> nearest;
    return std::copysign(std::abs(nearest) < 1 ? 0 : std::numeric_limits<double>::infinity(), nearest);
}

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

bool hasSpace(std::string_view text) {
    return std::ranges::any_of(
        spaces, [text](auto space) { return text.find(space) != std::string_view::npos; });
}

std::optional<double> parseNumber(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1); // std::from_chars knows only the minus sign
    }
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    double value = 0;
    const auto [behind, error] = std::from_chars(begin, end, value);
    if (error == std::errc::invalid_argument || behind != end) {
        return std::nullopt;
    }
    return error == std::errc::result_out_of_range ? outOfRange(text) : value;
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
    // The largest double in full, a sign, a point and the digits asked for.
    std::array<char, std::numeric_limits<double>::max_exponent10 + 32> buffer{};
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
    return {buffer.data(), result.ptr};
}

namespace {

/// Unicode's own, beside the control characters.
bool isLineBreak(char32_t character) {
    return character == 0x2028 || character == 0x2029;
}

} // namespace

bool isControl(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

bool changesDirection(char32_t character) {
    return character == 0x061C || character == 0x200E || character == 0x200F
           || (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

std::string printable(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const char32_t character = Utf8::takeCharacter(text);
        const bool isHarmful = isControl(character) || changesDirection(character) || isLineBreak(character);
        Utf8::append(result, isHarmful ? U'?' : character);
    }
    return result;
}

} // namespace tarnwick::Text
