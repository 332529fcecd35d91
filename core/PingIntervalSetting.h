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

/// Reads a typed decimal number, with or without white space around it, then `clamped`. None for any other
/// text. Independent of the locale.
[[nodiscard]] std::optional<int> parse(std::string_view text);

} // namespace tarnwick::PingIntervalSetting
