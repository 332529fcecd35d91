#include "platform/linux/LinkInformation.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <net/if.h>
#include <net/if_arp.h>
#include <string_view>

namespace tarnwick {

namespace {

using Netlink::Bytes;
using LinkKind = LinkEvidence::Kind;

// Of the flags that <net/if.h> leaves out.
constexpr unsigned lowerLayerUp = 1U << 16U; // IFF_LOWER_UP

/// The start of what the kernel counts; later kernels add to its end.
struct LinkCounters {
    std::uint64_t receivedPackets;
    std::uint64_t sentPackets;
    std::uint64_t receivedBytes;
    std::uint64_t sentBytes;
};

std::string softwareIn(Bytes linkInfo) {
    std::string software;
    Netlink::forEachAttributeIn(linkInfo, [&](int type, Bytes value) {
        if (type == IFLA_INFO_KIND) {
            software = Netlink::textIn(value);
        }
    });
    return software;
}

void takeCounters(LinkInformation& link, Bytes value) {
    if (const auto counters = Netlink::structureAt<LinkCounters>(value)) {
        link.sentBytes = counters->sentBytes;
        link.receivedBytes = counters->receivedBytes;
    }
}

void takeLinkAttribute(LinkInformation& link, int type, Bytes value) {
    switch (type) {
    case IFLA_IFNAME:
        link.name = Netlink::textIn(value);
        break;
    case IFLA_LINKINFO:
        link.software = softwareIn(value);
        break;
    case IFLA_MASTER:
        link.master = Netlink::structureAt<unsigned>(value).value_or(0);
        break;
    case IFLA_PARENT_DEV_NAME:
        link.isHardware = true;
        break;
    case IFLA_STATS64:
        takeCounters(link, value);
        break;
    default:
        break;
    }
}

bool isTunnel(const LinkInformation& link) {
    constexpr std::array<std::string_view, 2> makers{"tun", "wireguard"};
    constexpr std::array<unsigned short, 5> types{
        ARPHRD_TUNNEL, ARPHRD_TUNNEL6, ARPHRD_SIT, ARPHRD_IPGRE, ARPHRD_NONE};
    return std::ranges::find(makers, link.software) != makers.end()
           || std::ranges::find(types, link.type) != types.end();
}

/// "wlan", "wwan" and others; empty for a plain cable. The system may describe another network's interface of
/// the same name.
std::string deviceTypeOf(const LinkInformation& link, const std::filesystem::path& device) {
    std::ifstream description(device / "uevent");
    std::string type;
    bool isThisOne = false;
    for (std::string line; std::getline(description, line);) {
        constexpr std::string_view typeKey = "DEVTYPE=";
        if (line.starts_with(typeKey)) {
            type = line.substr(typeKey.size());
        }
        isThisOne = isThisOne || line == "IFINDEX=" + std::to_string(link.index);
    }
    return isThisOne ? type : std::string();
}

/// By the names that the kernel and systemd give.
std::string deviceTypeByName(const LinkInformation& link) {
    if (link.name.starts_with("ww")) {
        return "wwan";
    }
    return link.name.starts_with("wl") && link.type == ARPHRD_ETHER ? "wlan" : "";
}

} // namespace

std::optional<LinkInformation> LinkInformation::of(NetlinkConversation& routing, unsigned index) {
    ifinfomsg fixedPart{};
    fixedPart.ifi_index = static_cast<int>(index);
    NetlinkQuestion question(RTM_GETLINK);
    question.put(fixedPart);
    std::optional<LinkInformation> link;
    routing.ask(question, [&](const nlmsghdr& header, Bytes content) {
        link = header.nlmsg_type == RTM_NEWLINK ? parse(content) : std::nullopt;
    });
    return link;
}

std::vector<LinkInformation> LinkInformation::all(NetlinkConversation& routing) {
    NetlinkQuestion question(RTM_GETLINK, NLM_F_DUMP);
    question.put(ifinfomsg{});
    question.add(IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    std::vector<LinkInformation> links;
    routing.ask(question, [&](const nlmsghdr& header, Bytes content) {
        auto link = header.nlmsg_type == RTM_NEWLINK ? parse(content) : std::nullopt;
        if (link) {
            links.push_back(*std::move(link));
        }
    });
    return links;
}

std::optional<LinkInformation> LinkInformation::parse(Bytes content) {
    const auto header = Netlink::structureAt<ifinfomsg>(content);
    if (!header || header->ifi_index <= 0) {
        return std::nullopt;
    }
    const unsigned carrier = IFF_RUNNING | lowerLayerUp;
    LinkInformation link{
        .index = static_cast<unsigned>(header->ifi_index),
        .isUp = (header->ifi_flags & IFF_UP) != 0,
        .hasCarrier = (header->ifi_flags & carrier) == carrier,
        .isLoopback = (header->ifi_flags & IFF_LOOPBACK) != 0,
        .type = header->ifi_type};
    Netlink::forEachAttribute<ifinfomsg>(
        content, [&](int type, Bytes value) { takeLinkAttribute(link, type, value); });
    return link.name.empty() ? std::nullopt : std::optional(link);
}

LinkEvidence::Kind kindOf(const LinkInformation& link, const std::filesystem::path& devices) {
    std::string deviceType = deviceTypeOf(link, devices / link.name);
    if (deviceType.empty()) {
        deviceType = deviceTypeByName(link);
    }
    if (deviceType == "wlan") {
        return LinkKind::wifi;
    }
    if (deviceType == "wwan") {
        return LinkKind::mobile;
    }
    if (isTunnel(link)) {
        return LinkKind::tunnel;
    }
    const bool isCable = link.software.empty() || link.software == "veth";
    return isCable && link.type == ARPHRD_ETHER ? LinkKind::wired : LinkKind::other;
}

} // namespace tarnwick
