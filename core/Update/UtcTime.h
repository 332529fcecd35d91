// Points in time as documents write them: "2026-11-23T04:00:00Z".
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace tarnwick {

/// ISO 8601 with seconds, in UTC, of the years 2000 to 2199. None for any other notation, and for a day or a
/// time that does not exist.
[[nodiscard]] std::optional<std::chrono::sys_seconds> parseUtcTime(std::string_view text);

} // namespace tarnwick
