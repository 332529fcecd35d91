// Characters of UTF-8 text that may come from anywhere.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnwick::Utf8 {

/// Stands for each byte that belongs to no character.
inline constexpr char32_t replacement = U'\uFFFD';

/// Removes the first character from `text`, which must not be empty, and returns it. Where the text is
/// malformed, removes one byte and returns `replacement`. Overlong forms, surrogates, numbers above U+10FFFF
/// and characters cut off at the end are malformed.
[[nodiscard]] char32_t takeCharacter(std::string_view& text);

/// Appends a character other than a surrogate, at most U+10FFFF.
void append(std::string& text, char32_t character);

/// How many characters `takeCharacter` finds in `text`.
[[nodiscard]] std::size_t length(std::string_view text);

} // namespace tarnwick::Utf8
