// How figures are written for people.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <locale.h>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace tarnwick::Format {

/// Whole milliseconds, halves away from zero: "23 ms".
[[nodiscard]] std::string wholeMs(double ms);

/// By the system's time zone: "15:30".
[[nodiscard]] std::string timeOfDay(std::chrono::system_clock::time_point time);

/// How a locale groups the digits of large numbers. A copy shares its locale.
class Grouping {
public:
    /// No grouping.
    Grouping() : Grouping("C") {}

    /// The grouping of the locale with this name; "" is the environment's locale. No grouping when the system
    /// does not have the locale.
    explicit Grouping(const char* localeName);

    [[nodiscard]] static Grouping ofUser() { return Grouping(""); }

private:
    friend std::string integer(std::int64_t value, const Grouping& grouping);

    std::shared_ptr<std::remove_pointer_t<locale_t>> locale_;
};

[[nodiscard]] std::string integer(std::int64_t value, const Grouping& grouping);

/// Characters of a host's name that have room in a line of a menu or a question.
inline constexpr std::size_t longestName = 60;

/// `text` (UTF-8) in at most `longest` characters: a longer one has an ellipsis instead of its middle.
[[nodiscard]] std::string elided(std::string_view text, std::size_t longest = longestName);

} // namespace tarnwick::Format
