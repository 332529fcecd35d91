#include "platform/linux/WirelessSignal.h"

#include "platform/linux/NetlinkConversation.h"

#include <cmath>
#include <fstream>
#include <linux/genetlink.h>
#include <linux/nl80211.h>
#include <sstream>

namespace tarnwick::WirelessSignal {

namespace {

using Netlink::Bytes;

genlmsghdr command(std::uint8_t number) {
    return {.cmd = number, .version = 1, .reserved = 0};
}

std::optional<std::uint16_t> familyOf(NetlinkConversation& generic) {
    NetlinkQuestion question(GENL_ID_CTRL);
    question.put(command(CTRL_CMD_GETFAMILY));
    question.add(CTRL_ATTR_FAMILY_NAME, std::as_bytes(std::span(NL80211_GENL_NAME)));
    std::optional<std::uint16_t> family;
    generic.ask(question, [&](const nlmsghdr& header, Bytes content) {
        family = header.nlmsg_type == GENL_ID_CTRL ? parseFamily(content) : std::nullopt;
    });
    return family;
}

/// The strongest, if it is connected to several.
std::optional<int> ofStations(unsigned interface) {
    NetlinkConversation generic(NETLINK_GENERIC);
    const auto family = familyOf(generic);
    if (!family) {
        return std::nullopt;
    }
    NetlinkQuestion question(*family, NLM_F_DUMP);
    question.put(command(NL80211_CMD_GET_STATION));
    question.add(NL80211_ATTR_IFINDEX, interface);
    std::optional<int> signal;
    generic.ask(question, [&](const nlmsghdr& header, Bytes content) {
        if (header.nlmsg_type == *family) {
            signal = std::max(signal, parseStation(content)); // nothing is the least
        }
    });
    return signal;
}

} // namespace

std::optional<int> present(unsigned interface, const std::string& name) {
    const auto signal = ofStations(interface);
    return signal ? signal : fromTable("/proc/thread-self/net/wireless", name);
}

std::optional<std::uint16_t> parseFamily(Bytes content) {
    std::optional<std::uint16_t> family;
    Netlink::forEachAttribute<genlmsghdr>(content, [&](int type, Bytes value) {
        if (type == CTRL_ATTR_FAMILY_ID) {
            family = Netlink::structureAt<std::uint16_t>(value);
        }
    });
    return family;
}

std::optional<int> parseStation(Bytes content) {
    std::optional<std::int8_t> latest;
    std::optional<std::int8_t> average;
    Netlink::forEachAttribute<genlmsghdr>(content, [&](int type, Bytes station) {
        if (type != NL80211_ATTR_STA_INFO) {
            return;
        }
        Netlink::forEachAttributeIn(station, [&](int figure, Bytes value) {
            if (figure == NL80211_STA_INFO_SIGNAL) {
                latest = Netlink::structureAt<std::int8_t>(value);
            } else if (figure == NL80211_STA_INFO_SIGNAL_AVG) {
                average = Netlink::structureAt<std::int8_t>(value);
            }
        });
    });
    const auto signal = average ? average : latest;
    // A driver that does not know says 0.
    return signal && *signal < 0 ? std::optional<int>(*signal) : std::nullopt;
}

std::optional<int> fromTable(const std::filesystem::path& table, const std::string& name) {
    std::ifstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        // NAME: status quality level noise and more; figures that are new have a point behind them.
        std::istringstream words(line);
        std::string first;
        std::string status;
        double quality = 0;
        double level = 0;
        if (words >> first >> status >> quality >> level && first == name + ":") {
            // Positive ones have a unit of the driver's own.
            return level < 0 && level >= INT8_MIN ? std::optional(static_cast<int>(std::lround(level)))
                                                  : std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace tarnwick::WirelessSignal
