// What the kernel tells of the network interfaces.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "platform/linux/NetlinkConversation.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

struct LinkInformation {
    unsigned index = 0;
    std::string name{};
    bool isUp = false;       ///< switched on
    bool hasCarrier = false; ///< and ready to carry packets: a radio network's key is agreed on, too
    bool isLoopback = false;
    bool isHardware = false;                  ///< a device stands behind it
    unsigned short type = 0;                  ///< ARPHRD_ETHER, for example
    std::string software{};                   ///< what makes it, as "bridge"; empty for most hardware
    unsigned master = 0;                      ///< the bridge or bond that it is a port of; 0: none
    std::optional<std::uint64_t> sentBytes{}; ///< since it came up
    std::optional<std::uint64_t> receivedBytes{};

    // The kernel answers both under the lock that drivers hold while they bring an interface up.
    /// Nothing when there is none of this index.
    [[nodiscard]] static std::optional<LinkInformation> of(NetlinkConversation& routing, unsigned index);
    /// Without the bytes.
    [[nodiscard]] static std::vector<LinkInformation> all(NetlinkConversation& routing);

    /// Reads the content of a message about a link. `content` is aligned for `ifinfomsg`.
    [[nodiscard]] static std::optional<LinkInformation> parse(Netlink::Bytes content);
};

/// `devices` is where the system describes them, a folder for each name. Where it does not, the name has to
/// tell what kind it is.
[[nodiscard]] LinkEvidence::Kind kindOf(
    const LinkInformation& link, const std::filesystem::path& devices = "/sys/class/net");

} // namespace tarnwick
