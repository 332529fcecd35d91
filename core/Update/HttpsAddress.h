// Which addresses updates may come from.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnwick {

inline constexpr std::size_t longestAddress = 2048;

/// "https://HOST[:PORT]/PATH" in printable ASCII: nothing in it is left to interpret. It has no user name,
/// since that makes an address look like another one, and neither query nor fragment, since the signature's
/// address is this one with ".minisig" behind it.
[[nodiscard]] bool isHttpsAddress(std::string_view text);

/// What follows the last slash.
[[nodiscard]] std::string_view fileNameIn(std::string_view address);

} // namespace tarnwick
