#include "platform/linux/WirelessLink.h"

#include "platform/linux/NetlinkConversation.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <linux/genetlink.h>
#include <linux/nl80211.h>
#include <sstream>

namespace tarnwick::WirelessLink {

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

/// Those of the strongest, if it is connected to several.
Figures ofStations(unsigned interface) {
    NetlinkConversation generic(NETLINK_GENERIC);
    const auto family = familyOf(generic);
    if (!family) {
        return {};
    }
    NetlinkQuestion question(*family, NLM_F_DUMP);
    question.put(command(NL80211_CMD_GET_STATION));
    question.add(NL80211_ATTR_IFINDEX, interface);
    Figures strongest;
    generic.ask(question, [&](const nlmsghdr& header, Bytes content) {
        if (header.nlmsg_type == *family) {
            // No signal is the least.
            strongest =
                std::max(strongest, parseStation(content), [](const Figures& one, const Figures& other) {
                    return one.signalDbm < other.signalDbm;
                });
        }
    });
    return strongest;
}

/// In units of 100 kbit/s. Those that do not fit into the older figure have another one.
std::optional<double> rateIn(Bytes rate) {
    std::optional<std::uint32_t> units;
    Netlink::forEachAttributeIn(rate, [&](int figure, Bytes value) {
        if (figure == NL80211_RATE_INFO_BITRATE32) {
            units = Netlink::structureAt<std::uint32_t>(value);
        } else if (figure == NL80211_RATE_INFO_BITRATE && !units) {
            units = Netlink::structureAt<std::uint16_t>(value);
        }
    });
    constexpr double unitsOfMbit = 10;
    return units && *units > 0 ? std::optional(*units / unitsOfMbit) : std::nullopt;
}

} // namespace

Figures present(unsigned interface, const std::string& name) {
    Figures figures = ofStations(interface);
    if (!figures.signalDbm) {
        figures.signalDbm = fromTable("/proc/thread-self/net/wireless", name);
    }
    return figures;
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

Figures parseStation(Bytes content) {
    std::optional<std::int8_t> latest;
    std::optional<std::int8_t> average;
    Figures figures;
    Netlink::forEachAttribute<genlmsghdr>(content, [&](int type, Bytes station) {
        if (type != NL80211_ATTR_STA_INFO) {
            return;
        }
        Netlink::forEachAttributeIn(station, [&](int figure, Bytes value) {
            if (figure == NL80211_STA_INFO_SIGNAL) {
                latest = Netlink::structureAt<std::int8_t>(value);
            } else if (figure == NL80211_STA_INFO_SIGNAL_AVG) {
                average = Netlink::structureAt<std::int8_t>(value);
            } else if (figure == NL80211_STA_INFO_TX_BITRATE) {
                figures.rateMbit = rateIn(value);
            }
        });
    });
    const auto signal = average ? average : latest;
    // A driver that does not know says 0.
    if (signal && *signal < 0) {
        figures.signalDbm = *signal;
    }
    return figures;
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

} // namespace tarnwick::WirelessLink
