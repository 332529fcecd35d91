// Messages about routes, byte by byte: which ones matter, and what an answer means.
#include "platform/linux/RouteChanges.h"
#include "platform/linux/RouteLookup.h"

#include "tests/platform/linux/NetlinkBytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <sys/socket.h>
#include <vector>

namespace tarnwick {

namespace {

using test::attribute;
using test::bytesOf;
using test::Content;
using test::ipv4;
using test::message;
using test::operator+;

Content routeTo(Content prefix, unsigned char length, unsigned flags = 0) {
    rtmsg route{};
    route.rtm_family = prefix.size() == 16 ? AF_INET6 : AF_INET;
    route.rtm_dst_len = length;
    route.rtm_flags = flags;
    return bytesOf(route) + (length > 0 ? attribute(RTA_DST, std::move(prefix)) : Content{});
}

Content linkMessage(unsigned char family) {
    ifinfomsg link{};
    link.ifi_family = family;
    return message(RTM_NEWLINK, bytesOf(link));
}

Content hop(int interface, unsigned char flags) {
    return bytesOf(rtnexthop{
        .rtnh_len = sizeof(rtnexthop), .rtnh_flags = flags, .rtnh_hops = 0, .rtnh_ifindex = interface});
}

Content answer(unsigned char type, unsigned flags = 0) {
    rtmsg route{};
    route.rtm_family = AF_INET;
    route.rtm_type = type;
    route.rtm_flags = flags;
    return bytesOf(route);
}

bool matters(const Content& content) {
    return RouteChanges::mayChangePath(content);
}

} // namespace

TEST(RouteChanges, RoutesThatCoverTheInternetMatter) {
    EXPECT_TRUE(matters(message(RTM_NEWROUTE, routeTo(ipv4(0, 0, 0, 0), 0))));
    EXPECT_TRUE(matters(message(RTM_DELROUTE, routeTo(ipv4(128, 0, 0, 0), 1))));
    EXPECT_TRUE(matters(message(RTM_NEWROUTE, routeTo(ipv4(203, 0, 112, 0), 23))));
    EXPECT_TRUE(matters(message(RTM_NEWROUTE, routeTo(ipv4(203, 0, 113, 9), 32))));
    const auto internet6 = internetAddress(AF_INET6);
    EXPECT_TRUE(matters(message(RTM_NEWROUTE, routeTo({internet6.begin(), internet6.end()}, 3))));
}

TEST(RouteChanges, RoutesToSomewhereElseDoNotMatter) {
    EXPECT_FALSE(matters(message(RTM_NEWROUTE, routeTo(ipv4(0, 0, 0, 0), 1))));
    EXPECT_FALSE(matters(message(RTM_NEWROUTE, routeTo(ipv4(203, 0, 114, 0), 23))));
    EXPECT_FALSE(matters(message(RTM_DELROUTE, routeTo(ipv4(203, 0, 113, 8), 32))));
}

TEST(RouteChanges, ClonesOfARouteDoNotMatter) {
    EXPECT_FALSE(matters(message(RTM_NEWROUTE, routeTo(ipv4(0, 0, 0, 0), 0, RTM_F_CLONED))));
}

TEST(RouteChanges, LinksMatterButNotThePortsOfABridge) {
    EXPECT_TRUE(matters(linkMessage(AF_UNSPEC)));
    EXPECT_FALSE(matters(linkMessage(AF_BRIDGE)));
}

TEST(RouteChanges, NeighborsDoNotMatter) {
    EXPECT_FALSE(matters(message(RTM_NEWNEIGH, Content(64))));
}

TEST(RouteChanges, AMessageBehindOthersIsFound) {
    const Content first = message(RTM_NEWNEIGH, Content(13)) + Content(3);

    EXPECT_TRUE(matters(first + message(RTM_DELADDR, Content(8))));
}

TEST(RouteChanges, AnyBytesAreReadToTheirEnd) {
    rc::check([](const std::vector<std::uint8_t>& bytes, bool looksLikeRoute) {
        Content content = bytesOf(bytes.size());
        std::ranges::transform(
            bytes, std::back_inserter(content), [](std::uint8_t byte) { return std::byte{byte}; });
        const auto type = looksLikeRoute ? RTM_NEWROUTE : RTM_NEWLINK;
        static_cast<void>(matters(message(static_cast<std::uint16_t>(type), content)));

        // Nothing is read behind a malformed message.
        RC_ASSERT(!matters(Content(sizeof(nlmsghdr)) + message(RTM_DELADDR, content)));
    });
}

TEST(RouteLookup, ARouteNamesItsInterfaceAndMetric) {
    const InternetRoute route = RouteLookup::parseRoute(
        answer(RTN_UNICAST) + attribute(RTA_PRIORITY, bytesOf(std::uint32_t{600}))
        + attribute(RTA_OIF, bytesOf(7)));

    EXPECT_THAT(route.nextHops, testing::ElementsAre(InternetRoute::NextHop{7, true}));
    EXPECT_EQ(route.metric, 600U);
    EXPECT_EQ(route.expiresIn, std::nullopt);
}

TEST(RouteLookup, ARouteOverALinkThatIsDownHasNoCarrier) {
    const InternetRoute route =
        RouteLookup::parseRoute(answer(RTN_UNICAST, RTNH_F_LINKDOWN) + attribute(RTA_OIF, bytesOf(7)));

    EXPECT_THAT(route.nextHops, testing::ElementsAre(InternetRoute::NextHop{7, false}));
}

TEST(RouteLookup, TheHopsOfAMultipathRouteHaveOneOrderHoweverTheyAreListed) {
    const InternetRoute route = RouteLookup::parseRoute(
        answer(RTN_UNICAST)
        + attribute(RTA_MULTIPATH, hop(9, 0) + hop(3, RTNH_F_LINKDOWN) + hop(5, RTNH_F_DEAD)));

    using Hop = InternetRoute::NextHop;
    EXPECT_THAT(route.nextHops, testing::ElementsAre(Hop{3, false}, Hop{5, false}, Hop{9, true}));
}

TEST(RouteLookup, ARouteOfAnotherTypeIsNoWay) {
    const Content interface = attribute(RTA_OIF, bytesOf(1));

    EXPECT_TRUE(RouteLookup::parseRoute(answer(RTN_UNREACHABLE) + interface).nextHops.empty());
    EXPECT_TRUE(RouteLookup::parseRoute(answer(RTN_LOCAL) + interface).nextHops.empty());
}

TEST(RouteLookup, ARouteNamesItsGatewayBeforeOrAfterItsInterface) {
    const Content gateway = attribute(RTA_GATEWAY, ipv4(10, 0, 0, 2));
    const Content interface = attribute(RTA_OIF, bytesOf(7));
    const InternetRoute::NextHop expected{7, true, ipv4(10, 0, 0, 2)};

    EXPECT_THAT(
        RouteLookup::parseRoute(answer(RTN_UNICAST) + gateway + interface).nextHops,
        testing::ElementsAre(expected));
    EXPECT_THAT(
        RouteLookup::parseRoute(answer(RTN_UNICAST) + interface + gateway).nextHops,
        testing::ElementsAre(expected));
}

TEST(RouteLookup, AGatewayOfTheOtherFamilyThatIsCutOffIsNone) {
    for (std::size_t size = 0; size <= 2; ++size) {
        const InternetRoute route = RouteLookup::parseRoute(
            answer(RTN_UNICAST) + attribute(RTA_OIF, bytesOf(7)) + attribute(RTA_VIA, Content(size)));

        EXPECT_THAT(route.nextHops, testing::ElementsAre(InternetRoute::NextHop{7, true, {}})) << size;
    }
}

TEST(RouteLookup, AnAnswerThatIsCutOffNamesNothing) {
    Content content = answer(RTN_UNICAST) + attribute(RTA_OIF, bytesOf(7));
    content.resize(content.size() - 1);

    EXPECT_TRUE(RouteLookup::parseRoute(content).nextHops.empty());
    EXPECT_TRUE(RouteLookup::parseRoute({}).nextHops.empty());
}

} // namespace tarnwick
