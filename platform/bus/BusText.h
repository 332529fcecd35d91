// Text for the bus. Its daemon closes the connection of a program that sends malformed UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick {

/// `text` with U+FFFD for each malformed byte, and without null bytes.
[[nodiscard]] std::string validUtf8(std::string_view text);

/// Escapes `text` so that markup shows it unchanged; `lineBreak` replaces each line break.
[[nodiscard]] std::string asMarkup(std::string_view text, std::string_view lineBreak = "\n");

} // namespace tarnwick
