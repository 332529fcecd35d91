// Messages about links, addresses and neighbors, byte by byte: what they mean, and that none reads too far.
#include "platform/linux/LinkAddresses.h"
#include "platform/linux/LinkInformation.h"
#include "platform/linux/NeighborLookup.h"

#include "tests/platform/linux/NetlinkBytes.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <array>
#include <linux/if_addr.h>
#include <linux/neighbour.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace tarnwick {

namespace {

using test::attribute;
using test::bytesOf;
using test::Content;
using test::ipv4;
using test::operator+;
using Kind = LinkEvidence::Kind;

constexpr unsigned connected = IFF_UP | IFF_RUNNING | (1U << 16U);

Content text(const std::string& value) {
    const auto bytes = std::as_bytes(std::span(value));
    return Content(bytes.begin(), bytes.end()) + Content(1);
}

Content aboutLink(unsigned flags, const Content& attributes, unsigned short type = ARPHRD_ETHER) {
    ifinfomsg link{};
    link.ifi_index = 7;
    link.ifi_flags = flags;
    link.ifi_type = type;
    return bytesOf(link) + attribute(IFLA_IFNAME, text("eth0")) + attributes;
}

LinkInformation linkOf(unsigned flags, const Content& attributes = {}) {
    return LinkInformation::parse(aboutLink(flags, attributes)).value();
}

Content aboutAddress(unsigned char family, const Content& attributes, unsigned char flags = 0) {
    ifaddrmsg address{};
    address.ifa_family = family;
    address.ifa_flags = flags;
    address.ifa_index = 7;
    return bytesOf(address) + attributes;
}

bool countsAsAddress(const Content& address, unsigned char flags = 0) {
    const unsigned char family = address.size() == 4 ? AF_INET : AF_INET6;
    return LinkAddresses::parse(aboutAddress(family, attribute(IFA_ADDRESS, address), flags)) == 7U;
}

Content ipv6(unsigned char first, unsigned char second) {
    Content address(16, std::byte{1});
    address[0] = std::byte{first};
    address[1] = std::byte{second};
    return address;
}

NeighborEntry entryOf(std::uint16_t state, std::uint32_t ticksSinceChange) {
    ndmsg neighbor{};
    neighbor.ndm_state = state;
    nda_cacheinfo times{};
    times.ndm_updated = ticksSinceChange;
    return NeighborEntry::parse(bytesOf(neighbor) + attribute(NDA_CACHEINFO, bytesOf(times))).value();
}

NeighborState stateOf(unsigned state, double sinceChange, NeighborState before = NeighborState::unknown) {
    return neighborState(NeighborEntry{.state = state, .sinceChange = sinceChange}, before);
}

} // namespace

TEST(LinkInformation, ALinkHasANameAndAnIndex) {
    const LinkInformation link = linkOf(connected);

    EXPECT_EQ(link.name, "eth0");
    EXPECT_EQ(link.index, 7U);
    EXPECT_EQ(link.type, ARPHRD_ETHER);
    EXPECT_FALSE(link.isLoopback || link.isHardware);
    EXPECT_EQ(link.sentBytes, std::nullopt);
}

TEST(LinkInformation, WhatIsOffIsNotUp) {
    EXPECT_TRUE(linkOf(connected).isUp);
    EXPECT_FALSE(linkOf(0).isUp);
}

TEST(LinkInformation, ARadioNetworkWhoseKeyIsNotAgreedOnYetIsNoCarrier) {
    EXPECT_TRUE(linkOf(connected).hasCarrier);
    EXPECT_FALSE(linkOf(connected & ~unsigned{IFF_RUNNING}).hasCarrier);
    EXPECT_FALSE(linkOf(IFF_UP | IFF_RUNNING).hasCarrier); // the kernel has not drawn the conclusion yet
}

TEST(LinkInformation, ADeviceStandsBehindHardware) {
    EXPECT_TRUE(linkOf(connected, attribute(IFLA_PARENT_DEV_NAME, text("0000:00:03.0"))).isHardware);
}

TEST(LinkInformation, WhatMakesALinkHasAName) {
    const Content info = attribute(IFLA_INFO_DATA, Content(9)) + attribute(IFLA_INFO_KIND, text("bridge"));

    EXPECT_EQ(linkOf(connected, attribute(IFLA_LINKINFO, info)).software, "bridge");
}

TEST(LinkInformation, APortKnowsItsBridge) {
    EXPECT_EQ(linkOf(connected, attribute(IFLA_MASTER, bytesOf(12U))).master, 12U);
}

TEST(LinkInformation, TheBytesStandThirdAndFourthAmongTheCounters) {
    const std::array<std::uint64_t, 30> counters{1, 2, 3'000'000'000'000, 4'000'000'000'000, 5};

    const LinkInformation link = linkOf(connected, attribute(IFLA_STATS64, bytesOf(counters)));

    EXPECT_EQ(link.receivedBytes, 3'000'000'000'000U);
    EXPECT_EQ(link.sentBytes, 4'000'000'000'000U);
}

TEST(LinkInformation, CountersThatAreCutOffTellNoBytes) {
    const LinkInformation link = linkOf(connected, attribute(IFLA_STATS64, Content(31)));

    EXPECT_EQ(link.receivedBytes, std::nullopt);
    EXPECT_EQ(link.sentBytes, std::nullopt);
}

TEST(LinkInformation, AMessageThatIsCutOffTellsWhatStandsBeforeThat) {
    const Content whole = aboutLink(connected, attribute(IFLA_MASTER, bytesOf(12U)));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto link =
            LinkInformation::parse(Content(whole.begin(), whole.begin() + static_cast<long>(size)));

        EXPECT_EQ(link.has_value(), size >= sizeof(ifinfomsg) + 9) << size; // the name with its header
        EXPECT_EQ(link ? link->master : 0, 0U) << size;
    }
}

TEST(LinkInformation, AnAttributeOfAnAbsurdLengthEndsTheMessage) {
    for (const unsigned length : {0U, 3U, 4095U, 65535U}) {
        Content absurd = attribute(IFLA_LINKINFO, Content(4));
        const Content header =
            bytesOf(rtattr{.rta_len = static_cast<unsigned short>(length), .rta_type = IFLA_LINKINFO});
        std::ranges::copy(header, absurd.begin());

        const LinkInformation link = linkOf(connected, absurd + attribute(IFLA_MASTER, bytesOf(12U)));

        EXPECT_EQ(link.master, 0U) << length;
        EXPECT_EQ(link.software, "") << length;
        EXPECT_EQ(linkOf(connected, attribute(IFLA_LINKINFO, absurd)).software, "") << length;
    }
}

TEST(LinkMessages, AnyBytesAreReadToTheirEnd) {
    rc::check([](const std::vector<std::uint8_t>& bytes) {
        Content content;
        std::ranges::transform(
            bytes, std::back_inserter(content), [](std::uint8_t byte) { return std::byte{byte}; });

        const auto link = LinkInformation::parse(aboutLink(connected, content));
        const auto address = LinkAddresses::parse(aboutAddress(AF_INET6, content));
        const auto neighbor = NeighborEntry::parse(bytesOf(ndmsg{}) + content);

        RC_ASSERT(link && link->index == 7U);
        RC_ASSERT(!address || address == 7U);
        RC_ASSERT(neighbor && neighbor->sinceChange >= 0);
    });
}

TEST(LinkKind, ACableOfEthernetIsWired) {
    EXPECT_EQ(kindOf({.name = "none7", .type = ARPHRD_ETHER}), Kind::wired);
    EXPECT_EQ(kindOf({.name = "none7", .type = ARPHRD_ETHER, .software = "veth"}), Kind::wired);
}

TEST(LinkKind, WhatCarriesPacketsInsideOthersIsATunnel) {
    EXPECT_EQ(kindOf({.name = "none7", .type = ARPHRD_NONE, .software = "wireguard"}), Kind::tunnel);
    EXPECT_EQ(kindOf({.name = "none7", .type = ARPHRD_ETHER, .software = "tun"}), Kind::tunnel);
    EXPECT_EQ(kindOf({.name = "none7", .type = ARPHRD_IPGRE, .software = "gre"}), Kind::tunnel);
}

TEST(LinkKind, OtherSoftwareIsOther) {
    EXPECT_EQ(kindOf({.name = "none7", .type = ARPHRD_ETHER, .software = "bridge"}), Kind::other);
    EXPECT_EQ(kindOf({.name = "none7", .type = ARPHRD_PPP, .software = "ppp"}), Kind::other);
}

TEST(LinkKind, TheSystemsDescriptionTellsRadios) {
    const test::TemporaryFolder devices;
    test::writeFile(devices.path() / "eth0" / "uevent", "DEVTYPE=wlan\nINTERFACE=eth0\nIFINDEX=7\n");
    const LinkInformation link{.index = 7, .name = "eth0", .type = ARPHRD_ETHER};
    EXPECT_EQ(kindOf(link, devices.path()), Kind::wifi);

    test::writeFile(devices.path() / "eth0" / "uevent", "DEVTYPE=wwan\nINTERFACE=eth0\nIFINDEX=7\n");
    EXPECT_EQ(kindOf(link, devices.path()), Kind::mobile);
}

TEST(LinkKind, ADescriptionOfAnotherInterfaceDoesNotCount) {
    const test::TemporaryFolder devices;
    test::writeFile(devices.path() / "eth0" / "uevent", "DEVTYPE=wlan\nINTERFACE=eth0\nIFINDEX=70\n");

    EXPECT_EQ(kindOf({.index = 7, .name = "eth0", .type = ARPHRD_ETHER}, devices.path()), Kind::wired);
}

TEST(LinkKind, WithoutADescriptionTheNameTells) {
    const test::TemporaryFolder devices;

    EXPECT_EQ(kindOf({.name = "wlp2s0", .type = ARPHRD_ETHER}, devices.path()), Kind::wifi);
    EXPECT_EQ(kindOf({.name = "wwan0", .type = ARPHRD_NONE}, devices.path()), Kind::mobile);
    EXPECT_EQ(kindOf({.name = "wlink", .type = ARPHRD_NONE}, devices.path()), Kind::tunnel);
}

TEST(LinkAddresses, AnAddressFromTheNetworkCounts) {
    EXPECT_TRUE(countsAsAddress(ipv4(192, 0, 2, 10)));
    EXPECT_TRUE(countsAsAddress(ipv4(169, 253, 2, 10)));
    EXPECT_TRUE(countsAsAddress(ipv6(0x20, 0x01)));
    EXPECT_TRUE(countsAsAddress(ipv6(0xfd, 0x00)));
}

TEST(LinkAddresses, AnAddressThatTheMachineGaveItselfIsNone) {
    EXPECT_FALSE(countsAsAddress(ipv4(169, 254, 2, 10)));
    EXPECT_FALSE(countsAsAddress(ipv4(127, 0, 0, 1)));
    EXPECT_FALSE(countsAsAddress(ipv6(0xfe, 0x80)));
}

TEST(LinkAddresses, AnAddressThatIsBeingTriedOrIsTakenIsNone) {
    EXPECT_FALSE(countsAsAddress(ipv6(0x20, 0x01), IFA_F_TENTATIVE));
    EXPECT_FALSE(countsAsAddress(ipv6(0x20, 0x01), IFA_F_TENTATIVE | IFA_F_DADFAILED));
}

TEST(LinkAddresses, BetweenTwoMachinesTheOwnAddressCounts) {
    const Content ours = attribute(IFA_LOCAL, ipv4(169, 254, 2, 10));
    const Content peers = attribute(IFA_ADDRESS, ipv4(192, 0, 2, 1));

    EXPECT_EQ(LinkAddresses::parse(aboutAddress(AF_INET, peers + ours)), std::nullopt);
}

TEST(LinkAddresses, AnAddressThatIsCutOffIsNone) {
    EXPECT_EQ(LinkAddresses::parse(aboutAddress(AF_INET, attribute(IFA_ADDRESS, Content(3)))), std::nullopt);
    EXPECT_EQ(
        LinkAddresses::parse(aboutAddress(AF_INET6, attribute(IFA_ADDRESS, Content(15)))), std::nullopt);
    EXPECT_EQ(LinkAddresses::parse(Content(sizeof(ifaddrmsg) - 1)), std::nullopt);
}

TEST(NeighborEntry, TellsItsStateAndSinceWhen) {
    const auto ticks = static_cast<std::uint32_t>(::sysconf(_SC_CLK_TCK));

    const NeighborEntry entry = entryOf(NUD_STALE, 5 * ticks / 2);

    EXPECT_EQ(entry.state, unsigned{NUD_STALE});
    EXPECT_DOUBLE_EQ(entry.sinceChange, 2.5);
}

TEST(NeighborEntry, AnAnswerThatIsCutOffIsNone) {
    EXPECT_EQ(NeighborEntry::parse(Content(sizeof(ndmsg) - 1)), std::nullopt);
}

TEST(NeighborState, OnlyWhatTheKernelHasHeardOfIsReachable) {
    EXPECT_EQ(stateOf(NUD_REACHABLE, 100), NeighborState::reachable);
    for (const unsigned state :
         {unsigned{NUD_STALE}, unsigned{NUD_DELAY}, unsigned{NUD_PROBE}, unsigned{NUD_PERMANENT},
          unsigned{NUD_NOARP}, unsigned{NUD_NONE}}) {
        EXPECT_EQ(stateOf(state, 100), NeighborState::unknown) << state;
    }
    EXPECT_EQ(neighborState(std::nullopt, NeighborState::failed), NeighborState::unknown);
}

TEST(NeighborState, OneThatDoesNotAnswerTheKernelHasFailed) {
    EXPECT_EQ(stateOf(NUD_FAILED, 0), NeighborState::failed);
    EXPECT_EQ(stateOf(NUD_INCOMPLETE, 0.5), NeighborState::unknown);
    EXPECT_EQ(stateOf(NUD_INCOMPLETE, 1), NeighborState::failed);
}

TEST(NeighborState, OneThatHasFailedIsNotAliveJustBecauseTheKernelAsksAgain) {
    EXPECT_EQ(stateOf(NUD_INCOMPLETE, 0, NeighborState::failed), NeighborState::failed);
    EXPECT_EQ(stateOf(NUD_INCOMPLETE, 0, NeighborState::reachable), NeighborState::unknown);
    EXPECT_EQ(stateOf(NUD_DELAY, 0, NeighborState::failed), NeighborState::unknown);
}

} // namespace tarnwick
