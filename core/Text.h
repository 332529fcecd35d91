// Text helpers that do not depend on the locale.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::Text {

/// `text` (UTF-8) without white space at both ends: that of every script, line breaks and no-break spaces.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// Whether white space is anywhere in `text` (UTF-8).
[[nodiscard]] bool hasSpace(std::string_view text);

/// The decimal floating-point number that is all of `text`, with optional sign and exponent; "inf" and "nan"
/// too. Too large for a double: infinite. Too small: zero.
[[nodiscard]] std::optional<double> parseNumber(std::string_view text);

/// The nearest whole number in decimal, halves away from zero. `value` is finite.
[[nodiscard]] std::string whole(double value);

/// `value` with this many digits after the point. `value` is finite.
[[nodiscard]] std::string fixed(double value, int digits);

/// Those below a space, Delete, and U+0080 to U+009F, which terminals obey too.
[[nodiscard]] bool isControl(char32_t character);

/// The marks that turn the order of the letters around them, for right-to-left scripts. In a host's name they
/// make it look like another one.
[[nodiscard]] bool changesDirection(char32_t character);

/// `text` (UTF-8) with a question mark for each control character, line break and change of direction, and
/// U+FFFD for each byte that belongs to no character: safe to print as part of a line.
[[nodiscard]] std::string printable(std::string_view text);

} // namespace tarnwick::Text
