// Whether this process may open datagram ICMP sockets, and what to change when it may not.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::PingPermission {

/// The command that lets this user's processes ping; nothing when they may ping already, and when the setting
/// can't be read.
[[nodiscard]] std::optional<std::string> grantingCommand();

/// The same for the text of the kernel's setting ("LOWEST HIGHEST" group) and the process's groups, its
/// primary group first.
[[nodiscard]] std::optional<std::string> grantingCommand(
    std::string_view pingGroupRange, const std::vector<std::uint32_t>& groups);

} // namespace tarnwick::PingPermission
