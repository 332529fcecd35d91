#include "platform/linux/PingPermission.h"

#include "core/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sstream>
#include <unistd.h>

namespace tarnwick::PingPermission {

namespace {

constexpr const char* settingPath = "/proc/sys/net/ipv4/ping_group_range";

std::optional<std::string> readSetting() {
    const FileDescriptor file(::open(settingPath, O_RDONLY | O_CLOEXEC));
    std::array<char, 64> buffer{};
    const ssize_t size = file.isOpen() ? ::read(file.get(), buffer.data(), buffer.size()) : -1;
    return size > 0 ? std::optional(std::string(buffer.data(), static_cast<std::size_t>(size)))
                    : std::nullopt;
}

std::vector<std::uint32_t> processGroups() {
    std::vector<std::uint32_t> groups{::getegid()};
    const int count = ::getgroups(0, nullptr);
    std::vector<gid_t> others(static_cast<std::size_t>(std::max(count, 0)));
    if (::getgroups(count, others.data()) == count) {
        groups.insert(groups.end(), others.begin(), others.end());
    }
    return groups;
}

} // namespace

std::optional<std::string> grantingCommand() {
    const std::optional<std::string> setting = readSetting();
    return setting ? grantingCommand(*setting, processGroups()) : std::nullopt;
}

std::optional<std::string> grantingCommand(
    std::string_view pingGroupRange, const std::vector<std::uint32_t>& groups) {
    std::istringstream text{std::string(pingGroupRange)};
    std::uint32_t lowest = 0;
    std::uint32_t highest = 0;
    if (groups.empty() || !(text >> lowest >> highest)) {
        return std::nullopt;
    }
    const auto isInRange = [&](std::uint32_t group) { return lowest <= group && group <= highest; };
    if (std::ranges::any_of(groups, isInRange)) {
        return std::nullopt;
    }
    // Widens an open range, so that no group loses its permission; a closed range is set to this group.
    const std::uint32_t own = groups.front();
    const bool isClosed = lowest > highest;
    const std::uint32_t from = isClosed ? own : std::min(lowest, own);
    const std::uint32_t to = isClosed ? own : std::max(highest, own);
    return "sudo sysctl -w net.ipv4.ping_group_range=\"" + std::to_string(from) + " " + std::to_string(to)
           + "\"";
}

} // namespace tarnwick::PingPermission
