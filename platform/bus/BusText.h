// Text for the bus, whose daemon hangs up on everybody who sends anything but UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick {

/// With a replacement character for each byte that is no part of UTF-8, and without null bytes.
[[nodiscard]] std::string validUtf8(std::string_view text);

/// As markup that shows just this text, with `lineBreak` at the ends of its lines.
[[nodiscard]] std::string asMarkup(std::string_view text, std::string_view lineBreak = "\n");

} // namespace tarnwick
