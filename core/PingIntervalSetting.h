// The rules for the user's ping interval: whole seconds from 1 to 60.
#pragma once

#include <optional>
#include <string_view>

namespace tarnwick::PingIntervalSetting {

struct Range {
    int lowest;
    int highest;
};

inline constexpr Range range{1, 60};
inline constexpr int defaultSeconds = 1;

/// The nearest whole number of seconds (halves away from zero) inside `range`. Not-a-number gives the lowest.
[[nodiscard]] int clamped(double seconds);

/// Reads what a person typed: a number in the usual decimal notations, white space around it ignored, then
/// `clamped`. Nothing when the text is not a number from end to end. Independent of the locale.
[[nodiscard]] std::optional<int> parse(std::string_view text);

} // namespace tarnwick::PingIntervalSetting
