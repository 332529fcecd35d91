// Routes that a real kernel drops after a time.
#include "tests/platform/linux/RoutePathTest.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cstdint>
#include <net/if.h>
#include <netinet/icmp6.h>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <sys/socket.h>

namespace tarnwick {

namespace {

class RoutePathExpiryTest : public RoutePathTest {};

/// Announces a router that may be used for `lifetime` seconds.
bool advertiseRouter(const std::string& fromInterface, std::uint16_t lifetime) {
    const FileDescriptor socket(::socket(AF_INET6, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_ICMPV6));
    const int hops = 255;
    const unsigned index = ::if_nametoindex(fromInterface.c_str());
    nd_router_advert advertisement{};
    advertisement.nd_ra_type = ND_ROUTER_ADVERT;
    advertisement.nd_ra_router_lifetime = htons(lifetime);
    sockaddr_in6 allNodes{};
    allNodes.sin6_family = AF_INET6;
    allNodes.sin6_scope_id = index;
    return ::inet_pton(AF_INET6, "ff02::1", &allNodes.sin6_addr) == 1
           && ::setsockopt(socket.get(), IPPROTO_IPV6, IPV6_MULTICAST_HOPS, &hops, sizeof hops) == 0
           && ::setsockopt(socket.get(), IPPROTO_IPV6, IPV6_MULTICAST_IF, &index, sizeof index) == 0
           && ::sendto(
                  socket.get(), &advertisement, sizeof advertisement, 0,
                  reinterpret_cast<const sockaddr*>(&allNodes), sizeof allNodes)
                  == static_cast<ssize_t>(sizeof advertisement);
}

} // namespace

TEST_F(RoutePathExpiryTest, AnIPv6RouteLearntFromARouterStopsCountingWhenItExpires) {
    addLink("wan0");
    change("address add fe80::1/64 dev wan0 nodad\naddress add fe80::2/64 dev wan0far nodad");
    startAndSettle();
    const double announced = loop_.now();
    ASSERT_TRUE(advertiseRouter("wan0far", 3));
    ASSERT_TRUE(runUntilSatisfiedOver({"wan0"}));

    ASSERT_TRUE(runUntilUnsatisfied());

    EXPECT_GE(updatedAt_ - announced, 2.9);
    // The kernel's own message may come half a minute after the end.
    EXPECT_LT(updatedAt_ - announced, 15);
}

TEST_F(RoutePathExpiryTest, AnExpiringRouteBesideAnotherOneIsNotAskedAfter) {
    addLinkWithDefault("wan0", 1, 100);
    change6("route add default via fe80::2 dev wan0 expires 3");

    const auto path = RoutedPath::present();

    ASSERT_TRUE(path);
    EXPECT_TRUE(path->path.satisfied);
    EXPECT_EQ(path->expiresIn, std::nullopt);
}

TEST_F(RoutePathExpiryTest, AnExpiringRouteThatIsTheOnlyWaySaysWhenItEnds) {
    addLink("wan0");
    change6("route add default via fe80::2 dev wan0 expires 60");

    const auto path = RoutedPath::present();

    ASSERT_TRUE(path && path->expiresIn);
    EXPECT_GT(*path->expiresIn, 40);
    EXPECT_LE(*path->expiresIn, 60);
}

TEST_F(RoutePathExpiryTest, AnExpiringRouteThatIsNoWayIsNotAskedAfter) {
    addLink("wan0");
    change6("route add default via fe80::2 dev wan0 expires 60");
    change("link set dev wan0far down");

    std::optional<RoutedPath> path;
    ASSERT_TRUE(runUntil([&path] {
        path = RoutedPath::present();
        return path && !path->path.satisfied;
    }));

    EXPECT_EQ(path->expiresIn, std::nullopt);
}

} // namespace tarnwick
