// How a report's page looks.
#pragma once

#include <string_view>

namespace tarnwick {

/// The page's style sheet: light and dark on screens, light on paper. Holds no sign that XML must have
/// escaped.
[[nodiscard]] std::string_view htmlStyle();

} // namespace tarnwick
