// The pieces that a page is written of. Pages are XML, too, so that every parser reads them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnwick::Html {

/// Text from anywhere as the content of an element or the value of an attribute in double quotes. What can't
/// be shown is replaced, as in a terminal.
[[nodiscard]] std::string escaped(std::string_view text);

/// Not more bytes than that, and then three dots. Whole characters of UTF-8.
[[nodiscard]] std::string shortened(const std::string& text, std::size_t most);

/// "<name attributes>content</name>". `attributes` and `content` must be escaped where they need it.
[[nodiscard]] std::string element(
    std::string_view name, std::string_view attributes, std::string_view content);
[[nodiscard]] std::string element(std::string_view name, std::string_view content);
/// "<name attributes/>".
[[nodiscard]] std::string emptyElement(std::string_view name, std::string_view attributes);
/// name="value", the value escaped, with a space in front.
[[nodiscard]] std::string attribute(std::string_view name, std::string_view value);
/// A number of a drawing, to a tenth.
[[nodiscard]] std::string attribute(std::string_view name, double value);

} // namespace tarnwick::Html
