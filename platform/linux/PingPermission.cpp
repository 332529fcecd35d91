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

std::optional<GroupRange> missingRange(
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
    return GroupRange{.lowest = from, .highest = to};
}

std::string textOf(const GroupRange& range) {
    return std::to_string(range.lowest) + " " + std::to_string(range.highest);
}

} // namespace

std::optional<GroupRange> missingRange() {
    const std::optional<std::string> setting = readSetting();
    return setting ? missingRange(*setting, processGroups()) : std::nullopt;
}

std::optional<std::string> grantingCommand() {
    const std::optional<std::string> setting = readSetting();
    return setting ? grantingCommand(*setting, processGroups()) : std::nullopt;
}

std::optional<std::string> grantingCommand(
    std::string_view pingGroupRange, const std::vector<std::uint32_t>& groups) {
    const std::optional<GroupRange> range = missingRange(pingGroupRange, groups);
    return range ? std::optional("sudo sysctl -w net.ipv4.ping_group_range=\"" + textOf(*range) + "\"")
                 : std::nullopt;
}

std::vector<std::string> keepingCommand(
    const GroupRange& range, const std::string& setting, const std::string& keptIn) {
    // What varies goes in as arguments: the script itself is fixed.
    constexpr auto script =
        "umask 022 && printf '%s' \"$1\" >\"$2\" && "
        "printf '# Lets Tarnwick ping.\\nnet.ipv4.ping_group_range = %s\\n' \"$1\" >\"$3\"";
    return {"/bin/sh", "-c", script, "sh", textOf(range), setting, keptIn};
}

} // namespace tarnwick::PingPermission
