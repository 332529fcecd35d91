#include "platform/linux/NeighborLookup.h"

#include <linux/neighbour.h>
#include <netinet/in.h>
#include <unistd.h>

namespace tarnwick {

namespace {

using Netlink::Bytes;

double secondsOfTicks(std::uint32_t ticks) {
    static const auto ticksPerSecond = static_cast<double>(::sysconf(_SC_CLK_TCK));
    return ticks / ticksPerSecond;
}

} // namespace

std::optional<NeighborEntry> NeighborEntry::of(
    NetlinkConversation& routing, unsigned interface, Bytes address) {
    ndmsg fixedPart{};
    fixedPart.ndm_family = address.size() == sizeof(in6_addr) ? AF_INET6 : AF_INET;
    fixedPart.ndm_ifindex = static_cast<int>(interface);
    NetlinkQuestion question(RTM_GETNEIGH);
    question.put(fixedPart);
    question.add(NDA_DST, address);
    std::optional<NeighborEntry> entry;
    routing.ask(question, [&](const nlmsghdr& header, Bytes content) {
        entry = header.nlmsg_type == RTM_NEWNEIGH ? parse(content) : std::nullopt;
    });
    return entry;
}

std::optional<NeighborEntry> NeighborEntry::parse(Bytes content) {
    const auto header = Netlink::structureAt<ndmsg>(content);
    if (!header) {
        return std::nullopt;
    }
    NeighborEntry entry{.state = header->ndm_state};
    Netlink::forEachAttribute<ndmsg>(content, [&](int type, Bytes value) {
        const auto times = type == NDA_CACHEINFO ? Netlink::structureAt<nda_cacheinfo>(value) : std::nullopt;
        if (times) {
            entry.sinceChange = secondsOfTicks(times->ndm_updated);
        }
    });
    return entry;
}

NeighborState neighborState(const std::optional<NeighborEntry>& entry, NeighborState before) {
    if (!entry) {
        return NeighborState::unknown;
    }
    switch (entry->state) {
    case NUD_REACHABLE:
        return NeighborState::reachable;
    case NUD_FAILED:
        return NeighborState::failed;
    case NUD_INCOMPLETE:
        return before == NeighborState::failed || entry->sinceChange >= NeighborEntry::patience
                   ? NeighborState::failed
                   : NeighborState::unknown;
    default: // not asked for lately, or never
        return NeighborState::unknown;
    }
}

} // namespace tarnwick
