// How bright the colors of themes are.
#pragma once

#include <optional>
#include <string_view>

namespace tarnwick {

/// From 0, black, to 1, white, as people see it. Of a gradient the mean of its stops. Understands `#rgb`,
/// `#rrggbb`, `#aarrggbb`, `rgb(...)`, `rgba(...)`, `qlineargradient(...)`, `white`, `black`, and numbers
/// alone, as `35,38,41`. Nothing for other texts, and for colors that let most of the ground through.
[[nodiscard]] std::optional<double> brightnessOf(std::string_view color);

} // namespace tarnwick
