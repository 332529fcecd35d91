// Times as people write them for a report.
#pragma once

#include "core/History/LocalTime.h"

#include <optional>
#include <string>

namespace tarnwick {

/// "30m", "12h", "7d" or "4w" before `now`; "2026-11-23", the first moment of that local day; or
/// "2026-11-23T14:05" by the local clock, of a repeated hour the first one. Nothing for any other text.
[[nodiscard]] std::optional<HistoryTime> timeIn(
    const std::string& text, HistoryTime now, const UtcOffset& offset);

} // namespace tarnwick
