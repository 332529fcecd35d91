// What the drawings of a page have in common.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick {

/// A drawing with its own measure, which phones scroll sideways. `content` begins with its title.
[[nodiscard]] std::string htmlDrawing(
    std::string_view kind, double width, double height, const std::string& content);

/// A small box that looks like what is drawn as `kind`, a class of the style sheet.
[[nodiscard]] std::string htmlSign(std::string_view kind);

/// The pattern of what was not watched, for every drawing of the page: once in it.
[[nodiscard]] std::string htmlHatching();

} // namespace tarnwick
