#include "platform/linux/LinkAddresses.h"

#include <linux/if_addr.h>
#include <netinet/in.h>

namespace tarnwick::LinkAddresses {

namespace {

using Netlink::Bytes;

bool isFromNetwork(Bytes address) {
    if (const auto address4 = Netlink::structureAt<in_addr>(address);
        address4 && address.size() == sizeof(in_addr)) {
        constexpr std::uint32_t ownMask = 0xffff0000;
        constexpr std::uint32_t ownNetwork = 0xa9fe0000;
        const std::uint32_t value = ntohl(address4->s_addr);
        return (value & ownMask) != ownNetwork && value >> IN_CLASSA_NSHIFT != IN_LOOPBACKNET;
    }
    const auto address6 = Netlink::structureAt<in6_addr>(address);
    return address6 && !IN6_IS_ADDR_LINKLOCAL(&*address6) && !IN6_IS_ADDR_LOOPBACK(&*address6);
}

} // namespace

std::set<unsigned> interfaces(NetlinkConversation& routing) {
    NetlinkQuestion question(RTM_GETADDR, NLM_F_DUMP);
    question.put(ifaddrmsg{});
    std::set<unsigned> result;
    routing.ask(question, [&](const nlmsghdr& header, Bytes content) {
        if (const auto interface = header.nlmsg_type == RTM_NEWADDR ? parse(content) : std::nullopt) {
            result.insert(*interface);
        }
    });
    return result;
}

std::optional<unsigned> parse(Bytes content) {
    const auto header = Netlink::structureAt<ifaddrmsg>(content);
    if (!header) {
        return std::nullopt;
    }
    Bytes ours;
    Bytes peers; // or ours, where there is no peer
    Netlink::forEachAttribute<ifaddrmsg>(content, [&](int type, Bytes value) {
        switch (type) {
        case IFA_LOCAL:
            ours = value;
            break;
        case IFA_ADDRESS:
            peers = value;
            break;
        default:
            break;
        }
    });
    constexpr unsigned notUsable = IFA_F_TENTATIVE | IFA_F_DADFAILED;
    const bool isUsable = (header->ifa_flags & notUsable) == 0;
    return isUsable && isFromNetwork(ours.empty() ? peers : ours) ? std::optional(header->ifa_index)
                                                                  : std::nullopt;
}

} // namespace tarnwick::LinkAddresses
