#include "platform/linux/LikelyLink.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <tuple>

namespace tarnwick {

namespace {

using LinkKind = LinkEvidence::Kind;

const KnownLink* linkOf(const std::vector<KnownLink>& links, unsigned index) {
    const auto found =
        std::ranges::find(links, index, [](const KnownLink& link) { return link.information.index; });
    return found == links.end() ? nullptr : &*found;
}

int preference(LinkKind kind) {
    switch (kind) {
    case LinkKind::wifi:
        return 3;
    case LinkKind::wired:
        return 2;
    case LinkKind::mobile:
        return 1;
    case LinkKind::tunnel:
    case LinkKind::other:
        break;
    }
    return 0;
}

} // namespace

bool mayBeConnection(const LinkInformation& link) {
    // Programs that run virtual machines add devices of no software's name and without hardware.
    constexpr std::array<std::string_view, 9> connections{"veth", "macvlan", "ipvlan", "vlan",     "bond",
                                                          "team", "wwan",    "ppp",    "virt_wifi"};
    return !link.isLoopback
           && (link.isHardware ? link.software.empty() || link.software == "wwan"
                               : std::ranges::find(connections, link.software) != connections.end());
}

const KnownLink* likelyLink(const std::vector<KnownLink>& links, unsigned last) {
    const KnownLink* best = nullptr;
    auto bestRank = std::tuple(false, false, false, false, 0);
    for (const KnownLink& link : links) {
        const LinkInformation& port = link.information;
        if (!mayBeConnection(port) && port.index != last) {
            continue;
        }
        const KnownLink* const bridge = linkOf(links, port.master);
        const KnownLink& whole = bridge != nullptr ? *bridge : link;
        const auto rank = std::tuple(
            whole.isUsable(), whole.information.index == last, port.isHardware, port.hasCarrier,
            preference(link.kind));
        if (best == nullptr || rank > bestRank) {
            best = &whole;
            bestRank = rank;
        }
    }
    return best;
}

} // namespace tarnwick
