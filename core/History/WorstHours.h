// Which hours were worst.
#pragma once

#include "core/History/Availability.h"
#include "core/History/History.h"
#include "core/History/LocalTime.h"

#include <cstddef>
#include <vector>

namespace tarnwick {

struct HourSummary {
    Span span{};
    Availability availability{};
    PeriodFigures figures{};
};

/// Up to `most` hours of the local clock that touch `span`, the worst first: by the time that the connection
/// was down, then by the loss, then by the 95th percentile, then the latest. An hour without loss is not bad.
[[nodiscard]] std::vector<HourSummary> worstHours(
    const History& history, const Span& span, std::size_t most, const UtcOffset& offset);

} // namespace tarnwick
