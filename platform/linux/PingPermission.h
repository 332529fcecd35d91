// Whether this process may open datagram ICMP sockets, and what to change when it may not.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::PingPermission {

/// Groups whose processes may open the sockets.
struct GroupRange {
    std::uint32_t lowest;
    std::uint32_t highest;

    friend bool operator==(const GroupRange&, const GroupRange&) = default;
};

/// The range to set, so that this user's processes may ping; nothing when they may ping already, and when the
/// setting can't be read.
[[nodiscard]] std::optional<GroupRange> missingRange();

/// The command, for a shell, that sets this range.
[[nodiscard]] std::optional<std::string> grantingCommand();

/// A program and its arguments that set the range now and after each boot, for a process of root. They hold
/// nothing but fixed texts and the two numbers. The files are others in tests only.
[[nodiscard]] std::vector<std::string> keepingCommand(
    const GroupRange& range, const std::string& setting = "/proc/sys/net/ipv4/ping_group_range",
    const std::string& keptIn = "/etc/sysctl.d/60-tarnwick-ping.conf");

/// The same for the text of the kernel's setting ("LOWEST HIGHEST" group) and the process's groups, its
/// primary group first.
[[nodiscard]] std::optional<std::string> grantingCommand(
    std::string_view pingGroupRange, const std::vector<std::uint32_t>& groups);

} // namespace tarnwick::PingPermission
