// Small text helpers that never ask the locale: what is written for machines reads the same everywhere.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::Text {

/// `text` (UTF-8) without the white space and line breaks at both ends, those of other scripts and the
/// no-break space included.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// A decimal number from the first to the last character, with sign and exponent, also "inf" and "nan".
/// A number beyond the range of double becomes infinite or zero.
[[nodiscard]] std::optional<double> parseNumber(std::string_view text);

/// The nearest whole number (halves away from zero) in decimal; any finite number.
[[nodiscard]] std::string whole(double value);

/// `value` with a point and this many digits behind it.
[[nodiscard]] std::string fixed(double value, int digits);

/// The same with a question mark for every control character: safe to print as part of a line.
[[nodiscard]] std::string printable(std::string_view text);

} // namespace tarnwick::Text
