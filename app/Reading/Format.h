// How figures are written for people.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarnwick::Format {

/// Whole milliseconds, halves away from zero: "23 ms".
[[nodiscard]] std::string wholeMs(double ms);

/// How the digits of large numbers are grouped.
struct Grouping {
    std::string separator;  ///< empty: not at all
    std::vector<int> sizes; ///< of the groups, from the right; the last one repeats, and 0 ends the grouping

    /// That of the user's locale.
    [[nodiscard]] static Grouping ofUser();
};

[[nodiscard]] std::string integer(std::int64_t value, const Grouping& grouping);

} // namespace tarnwick::Format
