// The lines of the header that every front end shows above the chart.
#pragma once

#include "app/Monitor/Monitor.h"

#include <optional>
#include <string>

namespace tarnwick::HeaderText {

/// The host and, when it says more, its address; why the connection is down, while it is.
[[nodiscard]] std::string hostLine(const Monitor& monitor);
/// "23 ms", "Down", or a dash while nothing is known.
[[nodiscard]] std::string latency(const Monitor& monitor);
/// "3% loss"; nothing while it is not to be shown.
[[nodiscard]] std::optional<std::string> loss(const Monitor& monitor);

} // namespace tarnwick::HeaderText
