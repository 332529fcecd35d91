// What a report's page says first: which host, when, and how available it was.
#pragma once

#include "app/Report/Report.h"

#include <string>

namespace tarnwick {

[[nodiscard]] std::string htmlHeader(const Report& report, const UtcOffset& offset);
/// The share with its definition, and where the rest of the time went.
[[nodiscard]] std::string htmlAvailability(const Report& report);

} // namespace tarnwick
