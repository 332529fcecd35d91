// The host in a text that a user typed or pasted.
#pragma once

#include <string>
#include <string_view>
#include <variant>

namespace tarnwick {

/// Why a text can be no host.
enum class HostMistake {
    empty,      ///< nothing but white space
    noHost,     ///< a URL without a host, as "https://"
    tooLong,    ///< more bytes than `longestHost`
    blank,      ///< white space inside
    character,  ///< a character that no host name has
    dash,       ///< one at the beginning: it reads as an option of a command
    longPart,   ///< more than 63 letters between two dots
    emptyPart,  ///< two dots in a row, or one at the beginning
    port,       ///< behind its only colon is no port number
    brackets,   ///< they are not in pairs, or what they hold is no IPv6 address
    notAddress, ///< several colons, as in an IPv6 address, yet it is none
    notOne,     ///< an address of several machines, or of none: broadcast, multicast, "::"
    noZone,     ///< a link-local IPv6 address without its interface: the kernel can't send there
};

/// Bytes of a host: four times the longest name of the name system, room for a scope and other notations.
inline constexpr std::size_t longestHost = 1024;

/// The host name or address in a text (UTF-8). What stands around it is dropped: white space, scheme, user
/// name, brackets, port, path, the dot at the end. "::ffff:192.0.2.1" is 192.0.2.1. Whether the host exists
/// is another question.
[[nodiscard]] std::variant<std::string, HostMistake> hostIn(std::string_view text);

/// For users: completes "This is no host: ...".
[[nodiscard]] std::string_view reason(HostMistake mistake);

} // namespace tarnwick
