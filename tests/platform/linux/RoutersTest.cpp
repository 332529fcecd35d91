// The routers to the internet as a real kernel routes, in a network namespace that each test changes.
#include "platform/linux/Routers.h"

#include "tests/platform/linux/RoutePathTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class RoutersTest : public RoutePathTest {};

} // namespace

TEST_F(RoutersTest, WithoutARouteToTheInternetThereAreNone) {
    addLink("lan0");
    change("address add 10.7.0.1/24 dev lan0\nroute add 10.9.0.0/16 via 10.7.0.3");

    EXPECT_THAT(Routers::present(), IsEmpty());
}

TEST_F(RoutersTest, TheGatewayOfTheDefaultRouteIsOne) {
    addLinkWithDefault("wan0", 1, 100);

    EXPECT_THAT(Routers::present(), ElementsAre("10.1.0.2"));
}

TEST_F(RoutersTest, OnlyTheRouteInUseCounts) {
    addLinkWithDefault("wan0", 1, 300);
    addLinkWithDefault("wan1", 2, 100);

    EXPECT_THAT(Routers::present(), ElementsAre("10.2.0.2"));
}

TEST_F(RoutersTest, ALinkLocalGatewayHasItsInterface) {
    addLinkWithDefault("wan0", 1, 100);
    change6("route add default via fe80::1 dev wan0");

    EXPECT_THAT(Routers::present(), ElementsAre("10.1.0.2", "fe80::1%wan0"));
}

TEST_F(RoutersTest, AGlobalIPv6GatewayHasNone) {
    addLink("wan0");
    change6("address add 2001:db8:7::2/64 dev wan0 nodad\nroute add default via 2001:db8:7::1");

    EXPECT_THAT(Routers::present(), ElementsAre("2001:db8:7::1"));
}

TEST_F(RoutersTest, AnIPv4RouteMayHaveAnIPv6Gateway) {
    addLink("wan0");
    change("address add 10.1.0.1/24 dev wan0\nroute add default via inet6 fe80::1 dev wan0");

    EXPECT_THAT(Routers::present(), ElementsAre("fe80::1%wan0"));
}

TEST_F(RoutersTest, EachGatewayOfAMultipathRouteIsOne) {
    addLink("wan0");
    addLink("wan1");
    change("address add 10.1.0.1/24 dev wan0\naddress add 10.2.0.1/24 dev wan1\n"
           "route add default nexthop via 10.2.0.2 nexthop via 10.1.0.2");

    EXPECT_THAT(Routers::present(), UnorderedElementsAre("10.1.0.2", "10.2.0.2"));
}

TEST_F(RoutersTest, AGatewayThatTheRouteNamesByItsNumberIsFound) {
    if (!(std::ofstream("/proc/sys/net/ipv4/nexthop_compat_mode") << 0).flush()) {
        TARNWICK_CANNOT_RUN("this kernel's setting can't be changed from here");
    }
    addLink("wan0");
    change(
        "address add 10.1.0.1/24 dev wan0\nnexthop add id 7 via 10.1.0.2 dev wan0\nroute add default nhid 7");

    EXPECT_THAT(Routers::present(), ElementsAre("10.1.0.2"));
}

TEST_F(RoutersTest, BehindATunnelTheRouterOfTheNextInterfaceCounts) {
    addLinkWithDefault("wan0", 1, 100);
    addLink("vpn0");
    change("route add default dev vpn0 metric 50");

    EXPECT_THAT(Routers::present(), ElementsAre("10.1.0.2"));
}

TEST_F(RoutersTest, BehindATunnelThatARuleChoosesItIsFoundToo) {
    addLinkWithDefault("wan0", 1, 100);
    addLink("vpn0");
    change("route add default dev vpn0 table 77\nrule add not fwmark 77 lookup 77");

    EXPECT_THAT(Routers::present(), ElementsAre("10.1.0.2"));
}

} // namespace tarnwick
