// The network path as a real kernel routes, in a network namespace that each test changes in earnest.
#include "tests/platform/linux/RoutePathTest.h"

#include "platform/linux/RouteLookup.h"
#include "tests/core/ChildProcess.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <net/if.h>
#include <netinet/icmp6.h>
#include <netinet/in.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>

namespace tarnwick {

namespace {

class RoutePathMonitorTest : public RoutePathTest {};

class RejectingRouteTest : public RoutePathTest, public testing::WithParamInterface<std::string> {};

/// Commands after which the one default route, over wan0, leads nowhere.
struct Loss {
    std::string name;
    std::string commands;

    friend void PrintTo(const Loss& param, std::ostream* out) { *out << param.name; }
};

class LostRouteTest : public RoutePathTest, public testing::WithParamInterface<Loss> {};

/// A way for vpn0 to take the world over from wan0's default route, and back.
struct Takeover {
    std::string name;
    std::string take;
    std::string giveBack;

    friend void PrintTo(const Takeover& param, std::ostream* out) { *out << param.name; }
};

class TakeoverTest : public RoutePathTest, public testing::WithParamInterface<Takeover> {};

/// Whether messages about routes name the interfaces of their next hops too.
class NextHopTest : public RoutePathTest, public testing::WithParamInterface<bool> {};

/// Announces a router that may be used for `lifetime` seconds.
bool advertiseRouter(const std::string& fromInterface, std::uint16_t lifetime) {
    const FileDescriptor socket(::socket(AF_INET6, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_ICMPV6));
    const int hops = 255;
    const unsigned index = ::if_nametoindex(fromInterface.c_str());
    nd_router_advert advertisement{};
    advertisement.nd_ra_type = ND_ROUTER_ADVERT;
    advertisement.nd_ra_router_lifetime = htons(lifetime);
    sockaddr_in6 everybody{};
    everybody.sin6_family = AF_INET6;
    everybody.sin6_scope_id = index;
    return ::inet_pton(AF_INET6, "ff02::1", &everybody.sin6_addr) == 1
           && ::setsockopt(socket.get(), IPPROTO_IPV6, IPV6_MULTICAST_HOPS, &hops, sizeof hops) == 0
           && ::setsockopt(socket.get(), IPPROTO_IPV6, IPV6_MULTICAST_IF, &index, sizeof index) == 0
           && ::sendto(
                  socket.get(), &advertisement, sizeof advertisement, 0,
                  reinterpret_cast<const sockaddr*>(&everybody), sizeof everybody)
                  == static_cast<ssize_t>(sizeof advertisement);
}

/// The largest number in such a column of this namespace's netlink sockets that are in the link group: those
/// that wait for news.
long listenersLargest(const std::string& column) {
    std::ifstream table("/proc/net/netlink");
    std::string line;
    std::getline(table, line);
    std::istringstream heading(line);
    const std::vector<std::string> columns{
        std::istream_iterator<std::string>(heading), std::istream_iterator<std::string>()};
    const auto place = static_cast<std::size_t>(std::ranges::find(columns, column) - columns.begin());
    const auto groups = static_cast<std::size_t>(std::ranges::find(columns, "Groups") - columns.begin());
    long largest = -1;
    while (std::getline(table, line)) {
        std::istringstream row(line);
        const std::vector<std::string> fields{
            std::istream_iterator<std::string>(row), std::istream_iterator<std::string>()};
        if ((std::stoul(fields.at(groups), nullptr, 16) & 1U) != 0) {
            largest = std::max(largest, std::stol(fields.at(place)));
        }
    }
    return largest;
}

/// From here on this process has no netlink, as in a sandbox.
bool giveUpNetlink() {
    const auto offset = [](std::size_t value) { return static_cast<std::uint32_t>(value); };
    std::array filter{
        sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offset(offsetof(seccomp_data, nr))),
        sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_socket, 0, 3),
        sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offset(offsetof(seccomp_data, args))),
        sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AF_NETLINK, 0, 1),
        sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{.len = static_cast<unsigned short>(filter.size()), .filter = filter.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
           && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0
           && !FileDescriptor(::socket(AF_NETLINK, SOCK_RAW, 0)).isOpen();
}

} // namespace

TEST_F(RoutePathMonitorTest, AHostWithNoRouteAtAllIsUnsatisfiedFromTheStart) {
    start();

    ASSERT_TRUE(runUntilUnsatisfied());
    EXPECT_EQ(updates_.size(), 1U);
}

TEST_F(RoutePathMonitorTest, TheFirstRouteAfterAStartWithoutOneSatisfies) {
    startAndSettle();

    addLinkWithDefault("wan0", 1, 100);

    EXPECT_TRUE(runUntilSatisfiedOver({"wan0"}));
}

TEST_F(RoutePathMonitorTest, AnIPv6RouteAloneSatisfies) {
    addLink("wan0");
    change("route add default via fe80::2 dev wan0");

    start();

    EXPECT_TRUE(runUntilSatisfiedOver({"wan0"}));
}

TEST_F(RoutePathMonitorTest, IPv4sInterfaceComesBeforeIPv6s) {
    addLink("wan0");
    change("route add default via fe80::2 dev wan0 metric 1");
    addLinkWithDefault("wan1", 1, 100);

    start();

    EXPECT_TRUE(runUntilSatisfiedOver({"wan1", "wan0"}));
}

TEST_F(RoutePathMonitorTest, AnInterfaceWithoutARouteToTheWorldIsNotPartOfThePath) {
    addLinkWithDefault("wan0", 1, 100);
    addLink("lan0");
    change("address add 192.168.7.1/24 dev lan0");

    start();

    EXPECT_TRUE(runUntilSatisfiedOver({"wan0"}));
}

TEST_F(RoutePathMonitorTest, ABurstCostsOneLookUpTwoWakeUpsAndOneUpdate) {
    addLink("wan0");
    startAndSettle();
    runThroughABurst();
    lookUps_ = 0;
    wakeUps_ = 0;

    change(
        "address add 10.1.0.1/24 dev wan0\nroute add default via 10.1.0.2 metric 300\nroute add default via "
        "10.1.0.3 metric 200\nroute del default via 10.1.0.2 metric 300\nroute add 10.9.0.0/16 via 10.1.0.4\n"
        "route add default via fe80::2 dev wan0\naddress add 10.1.0.7/24 dev wan0");

    ASSERT_TRUE(runUntilSatisfiedOver({"wan0"}));
    runThroughABurst();
    EXPECT_EQ(lookUps_, 1);
    EXPECT_EQ(wakeUps_, 2);
    EXPECT_THAT(updates_, testing::ElementsAre(NetworkPath{false, {}}, NetworkPath{true, {"wan0"}}));
}

TEST_F(RoutePathMonitorTest, WhatABurstBringsWhileItSettlesWakesNobody) {
    addLink("wan0");
    startAndSettle();
    runThroughABurst();
    lookUps_ = 0;
    wakeUps_ = 0;

    change("address add 10.1.0.1/24 dev wan0");
    ASSERT_TRUE(runUntil([this] { return wakeUps_ == 1; }));
    change("route add default via 10.1.0.2");

    ASSERT_TRUE(runUntilSatisfiedOver({"wan0"}));
    runThroughABurst();
    EXPECT_EQ(lookUps_, 1);
    EXPECT_EQ(wakeUps_, 2);
}

TEST_F(RoutePathMonitorTest, AFlapThatIsOverBeforeTheLookUpIsNotTold) {
    addLinkWithDefault("wan0", 1, 100);
    startAndSettle();

    change("route del default\nroute add default via 10.1.0.2 dev wan0 metric 100");

    ASSERT_TRUE(runUntil([this] { return lookUps_ == 2; }));
    EXPECT_EQ(updates_.size(), 1U);
}

TEST_F(RoutePathMonitorTest, AFlapThatLastsIsToldBothWays) {
    addLinkWithDefault("wan0", 1, 100);
    startAndSettle();

    change("route del default");
    ASSERT_TRUE(runUntilUnsatisfied());
    change("route add default via 10.1.0.2 dev wan0 metric 100");

    ASSERT_TRUE(runUntilSatisfiedOver({"wan0"}));
    EXPECT_EQ(updates_.size(), 3U);
}

TEST_F(RoutePathMonitorTest, ALostCarrierUnsatisfiesThoughTheRoutesOfBothFamiliesStay) {
    addLinkWithDefault("wan0", 1, 100);
    change("route add default via fe80::2 dev wan0");
    startAndSettle();

    change("link set dev wan0far down");
    ASSERT_TRUE(runUntilUnsatisfied());
    EXPECT_EQ(RouteLookup().toWorld(AF_INET)->nextHops.size(), 1U);
    EXPECT_EQ(RouteLookup().toWorld(AF_INET6)->nextHops.size(), 1U);
    change("link set dev wan0far up");

    EXPECT_TRUE(runUntilSatisfiedOver({"wan0"}));
}

TEST_F(RoutePathMonitorTest, ARouteThatStandsByDoesNotSatisfyWhileTheKernelPrefersADeadOne) {
    addLinkWithDefault("wan0", 1, 100);
    addLinkWithDefault("wan1", 2, 600);
    startAndSettle();

    change("link set dev wan0far down");
    ASSERT_TRUE(runUntilUnsatisfied());
    change("route del default via 10.1.0.2 metric 100");

    EXPECT_TRUE(runUntilSatisfiedOver({"wan1"}));
}

TEST_P(LostRouteTest, Unsatisfies) {
    addLinkWithDefault("wan0", 1, 100);
    startAndSettle();

    change(GetParam().commands);

    EXPECT_TRUE(runUntilUnsatisfied());
}

// The kernel tells of the routes that go with a deleted interface in no message of their own.
INSTANTIATE_TEST_SUITE_P(
    RoutePathMonitorTest, LostRouteTest,
    testing::Values(
        Loss{"ADeletedInterface", "link del wan0"},
        Loss{"AnInterfaceThatIsTakenDown", "link set dev wan0 down"},
        Loss{"ALastAddressThatTakesTheRoutesAlong", "address del 10.1.0.1/24 dev wan0"}),
    [](const auto& test) { return test.param.name; });

TEST_P(TakeoverTest, IsFollowedBothWays) {
    addLinkWithDefault("wan0", 1, 100);
    addLink("vpn0");
    change("address add 10.2.0.1/24 dev vpn0\nroute add default dev vpn0 table 77");
    startAndSettle();
    ASSERT_EQ(updates_.back(), (NetworkPath{true, {"wan0"}}));

    change(GetParam().take);
    ASSERT_TRUE(runUntilSatisfiedOver({"vpn0", "wan0"}));
    change(GetParam().giveBack);

    EXPECT_TRUE(runUntilSatisfiedOver({"wan0"}));
}

INSTANTIATE_TEST_SUITE_P(
    RoutePathMonitorTest, TakeoverTest,
    testing::Values(
        Takeover{"ByADefaultRouteOfBetterMetric", "route add default dev vpn0 metric 50", "link del vpn0"},
        Takeover{
            "ByASplitDefault", "route add 0.0.0.0/1 via 10.2.0.2\nroute add 128.0.0.0/1 via 10.2.0.2",
            "route del 0.0.0.0/1\nroute del 128.0.0.0/1"},
        Takeover{
            "ByARuleForAnotherTable", "rule add not fwmark 77 lookup 77",
            "rule del not fwmark 77 lookup 77"}),
    [](const auto& test) { return test.param.name; });

TEST_F(RoutePathMonitorTest, DefaultRoutesThatStandByFollowInTheOrderOfTheirMetrics) {
    addLinkWithDefault("wan0", 1, 300);
    addLinkWithDefault("wan1", 2, 100);
    addLinkWithDefault("wan2", 3, 200);

    start();

    EXPECT_TRUE(runUntilSatisfiedOver({"wan1", "wan2", "wan0"}));
}

TEST_F(RoutePathMonitorTest, ARouteThatStandsByOverTheLastOfManyInterfacesIsPartOfThePath) {
    std::string cables;
    for (int cable = 0; cable < 60; ++cable) {
        const std::string number = std::to_string(cable);
        cables += "link add box" + number + " type veth peer name far" + number + "\nlink set dev box"
                  + number + " up\nlink set dev far" + number + " up\n";
    }
    change(cables);
    addLinkWithDefault("wan0", 1, 100);
    addLinkWithDefault("wan1", 2, 600);

    start();

    EXPECT_TRUE(runUntilSatisfiedOver({"wan0", "wan1"}));
}

TEST_F(RoutePathMonitorTest, AnIPv6RuleCountsToo) {
    addLink("vpn0");
    change6("route add default dev vpn0 table 77");
    startAndSettle();
    ASSERT_EQ(updates_.back(), (NetworkPath{false, {}}));

    change6("rule add not fwmark 77 lookup 77");

    EXPECT_TRUE(runUntilSatisfiedOver({"vpn0"}));
}

TEST_F(RoutePathMonitorTest, EachInterfaceOfAMultipathRouteIsPartOfThePath) {
    addLink("wan0");
    addLink("wan1");
    change("address add 10.1.0.1/24 dev wan0\naddress add 10.2.0.1/24 dev wan1\n"
           "route add default nexthop via 10.2.0.2 nexthop via 10.1.0.2");
    startAndSettle();
    ASSERT_THAT(updates_.back().interfaces, testing::UnorderedElementsAre("wan0", "wan1"));

    change("link set dev wan1far down");

    EXPECT_TRUE(runUntilSatisfiedOver({"wan0"}));
}

TEST_P(NextHopTest, IsFollowedWhereItMoves) {
    if (!(std::ofstream("/proc/sys/net/ipv4/nexthop_compat_mode") << GetParam()).flush()) {
        TARNWICK_CANNOT_RUN("this kernel's setting can't be changed from here");
    }
    addLink("wan0");
    addLink("wan1");
    change("nexthop add id 7 dev wan0\nroute add default nhid 7");
    startAndSettle();
    ASSERT_EQ(updates_.back(), (NetworkPath{true, {"wan0"}}));

    change("nexthop replace id 7 dev wan1");

    EXPECT_TRUE(runUntilSatisfiedOver({"wan1"}));
}

INSTANTIATE_TEST_SUITE_P(RoutePathMonitorTest, NextHopTest, testing::Bool(), [](const auto& test) {
    return test.param ? "NamedWithItsInterface" : "NamedByItsNumberAlone";
});

TEST_F(RoutePathMonitorTest, ARenamedInterfaceIsToldByItsNewName) {
    addLinkWithDefault("wan0", 1, 100);
    startAndSettle();

    change("link set dev wan0 down\nlink set dev wan0 name uplink\nlink set dev uplink up\n"
           "route add default via 10.1.0.2");

    EXPECT_TRUE(runUntilSatisfiedOver({"uplink"}));
}

TEST_P(RejectingRouteTest, IsNoWayToTheWorldThoughADefaultRouteStandsBehindIt) {
    addLinkWithDefault("wan0", 1, 100);
    change("route add default via fe80::2 dev wan0 metric 100");
    startAndSettle();

    change("route add " + GetParam() + " default metric 1");
    change6("route add " + GetParam() + " default metric 1");

    EXPECT_TRUE(runUntilUnsatisfied());
}

INSTANTIATE_TEST_SUITE_P(
    Types, RejectingRouteTest, testing::Values("unreachable", "prohibit", "blackhole"),
    [](const auto& test) { return test.param; });

TEST_F(RoutePathMonitorTest, ARouteThatStaysInsideTheMachineIsNoWayToTheWorld) {
    change("route add default dev lo");

    start();

    EXPECT_TRUE(runUntilUnsatisfied());
}

TEST_F(RoutePathMonitorTest, AnIPv6RouteLearntFromARouterStopsCountingWhenItExpires) {
    addLink("wan0");
    change("address add fe80::1/64 dev wan0 nodad\naddress add fe80::2/64 dev wan0far nodad");
    startAndSettle();
    ASSERT_TRUE(advertiseRouter("wan0far", 1));
    ASSERT_TRUE(runUntilSatisfiedOver({"wan0"}));
    const double learnt = updatedAt_;

    ASSERT_TRUE(runUntilUnsatisfied());

    // The kernel's own message may come half a minute after the end.
    EXPECT_GT(updatedAt_ - learnt, 0.5);
    EXPECT_LT(updatedAt_ - learnt, RoutePathMonitor::slowInterval);
}

TEST_F(RoutePathMonitorTest, AnExpiringRouteBesideAnotherOneIsNotAskedAfter) {
    addLinkWithDefault("wan0", 1, 100);
    change6("route add default via fe80::2 dev wan0 expires 3");

    const auto path = RoutedPath::present();

    ASSERT_TRUE(path);
    EXPECT_TRUE(path->path.satisfied);
    EXPECT_EQ(path->expiresIn, std::nullopt);
}

TEST_F(RoutePathMonitorTest, AnExpiringRouteThatIsTheOnlyWaySaysWhenItEnds) {
    addLink("wan0");
    change6("route add default via fe80::2 dev wan0 expires 60");

    const auto path = RoutedPath::present();

    ASSERT_TRUE(path && path->expiresIn);
    EXPECT_GT(*path->expiresIn, 40);
    EXPECT_LE(*path->expiresIn, 60);
}

TEST_F(RoutePathMonitorTest, AnExpiringRouteThatIsNoWayIsNotAskedAfter) {
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

TEST_F(RoutePathMonitorTest, MessagesThatAreLostInAFloodAreMadeUpForByALookUpAndLaterOnesAreHeard) {
    addLink("wan0");
    change("address add 10.1.0.1/24 dev wan0");
    startAndSettle();
    runThroughABurst();
    std::string flood;
    for (int host = 0; host < 3000; ++host) {
        flood += "route add 10.2." + std::to_string(host / 250) + "." + std::to_string(host % 250)
                 + " via 10.1.0.3\n";
    }

    change(flood + "route add default via 10.1.0.2");

    ASSERT_GT(listenersLargest("Drops"), 0);
    EXPECT_LE(listenersLargest("Rmem"), 1024 * 1024);
    ASSERT_TRUE(runUntilSatisfiedOver({"wan0"}));
    change("route del default");
    ASSERT_TRUE(runUntilUnsatisfied());
    EXPECT_EQ(updates_.size(), 3U);
}

TEST_F(RoutePathMonitorTest, AChangeThatLeavesThePathAsItIsIsLookedUpButNotTold) {
    addLinkWithDefault("wan0", 1, 100);
    startAndSettle();

    change("address add 10.1.0.5/24 dev wan0");

    ASSERT_TRUE(runUntil([this] { return lookUps_ == 2; }));
    EXPECT_EQ(updates_.size(), 1U);
}

TEST_F(RoutePathMonitorTest, ARouteToSomewhereElseIsNotEvenLookedUp) {
    addLinkWithDefault("wan0", 1, 100);
    startAndSettle();
    runThroughABurst();
    lookUps_ = 0;

    change("route add 10.9.0.0/16 via 10.1.0.3\nroute add 203.0.113.128/25 via 10.1.0.3\n"
           "route add 2001:db8:1::/48 via fe80::3 dev wan0\nroute del 10.9.0.0/16");
    runThroughABurst();

    EXPECT_EQ(lookUps_, 0);
    EXPECT_EQ(updates_.size(), 1U);
}

TEST_F(RoutePathMonitorTest, NothingWakesTheProgramWhileNothingChanges) {
    addLinkWithDefault("wan0", 1, 100);
    startAndSettle();
    runThroughABurst();
    wakeUps_ = 0;

    runThroughABurst();

    EXPECT_EQ(wakeUps_, 0);
}

TEST_F(RoutePathMonitorTest, AChangeIsToldWithinATenthOfASecond) {
    addLinkWithDefault("wan0", 1, 100);
    startAndSettle();

    // As a rule: now and then other programs keep the processor longer than that.
    std::vector<double> delays;
    for (int attempt = 0; attempt < 11; ++attempt) {
        const bool wasSatisfied = updates_.back().satisfied;
        const std::size_t before = updates_.size();
        change(wasSatisfied ? "route del default" : "route add default via 10.1.0.2");
        const double changedAt = loop_.now(); // the start of the program that makes it does not count
        ASSERT_TRUE(runUntil([&] { return updates_.size() > before; }));
        ASSERT_NE(updates_.back().satisfied, wasSatisfied);
        delays.push_back(updatedAt_ - changedAt);
    }

    std::ranges::sort(delays);
    EXPECT_LE(delays[delays.size() / 2], 0.1) << testing::PrintToString(delays);
}

TEST_F(RoutePathMonitorTest, AChangeThatNobodyHasReadIsNotToldAfterTheEnd) {
    addLinkWithDefault("wan0", 1, 100);
    startAndSettle();
    change("route del default");

    monitor_.reset();
    runThroughABurst();

    EXPECT_EQ(updates_.size(), 1U);
}

TEST_F(RoutePathMonitorTest, WithoutNetlinkNothingIsEverTold) {
    const auto status = test::exitStatusOf([this] {
        if (!giveUpNetlink()) {
            return 77;
        }
        monitor_.emplace(loop_);
        start();
        runThroughABurst();
        return updates_.empty() && wakeUps_ == 0 ? 0 : 2;
    });

    if (status == 77) {
        TARNWICK_CANNOT_RUN("this system filters no system calls");
    }
    EXPECT_EQ(status, 0);
}

/// In virtual time, with the kernel's answers made up. Its messages come when the test delivers them.
class ScriptedPathTest : public RoutePathTest {
protected:
    void TearDown() override { monitor_.reset(); }

    void startScripted() {
        monitor_.emplace(virtualLoop_, [this] {
            ++lookUps_;
            return answer_;
        });
        start();
    }

    /// Whatever descriptor the monitor watches.
    void deliverMessages() {
        constexpr int moreThanAreOpen = 256;
        for (int descriptor = 0; descriptor < moreThanAreOpen; ++descriptor) {
            virtualLoop_.makeReadable(descriptor);
        }
    }

    simulation::VirtualRunLoop virtualLoop_;
    std::optional<RoutedPath> answer_ = RoutedPath{{true, {"wan0"}}, std::nullopt};
};

TEST_F(ScriptedPathTest, TheFirstUpdateComesSoonButNotFromInsideStart) {
    startScripted();
    EXPECT_TRUE(updates_.empty());

    virtualLoop_.runPending();

    EXPECT_THAT(updates_, testing::ElementsAre(NetworkPath{true, {"wan0"}}));
}

TEST_F(ScriptedPathTest, ALastingPathIsNotLookedUpAgainByItself) {
    startScripted();

    virtualLoop_.advance(24 * 3600);

    EXPECT_EQ(lookUps_, 1);
    EXPECT_EQ(virtualLoop_.timerCount(), 0U);
}

TEST_F(ScriptedPathTest, AnExpiringPathIsLookedUpSlowly) {
    answer_->expiresIn = 1800;
    startScripted();

    virtualLoop_.advance(60);

    EXPECT_GE(lookUps_, 11);
    EXPECT_LE(lookUps_, 13);
    EXPECT_EQ(updates_.size(), 1U);
}

TEST_F(ScriptedPathTest, AnExpiringPathIsLookedUpAsSoonAsItsTimeIsOver) {
    answer_->expiresIn = 2;
    startScripted();
    virtualLoop_.advance(2);
    ASSERT_EQ(lookUps_, 1);
    answer_ = RoutedPath{{false, {}}, std::nullopt};

    virtualLoop_.advance(0.1);

    EXPECT_THAT(updates_, testing::ElementsAre(NetworkPath{true, {"wan0"}}, NetworkPath{false, {}}));
}

TEST_F(ScriptedPathTest, AnExpiryThatIsTooNearToBeToldIsStillLookedUp) {
    answer_->expiresIn = 3;
    startScripted();
    virtualLoop_.advance(2.995);
    change("link set dev lo down");
    answer_->expiresIn.reset();
    deliverMessages();
    virtualLoop_.advance(RoutePathMonitor::settleTime);
    ASSERT_EQ(lookUps_, 2);
    answer_ = RoutedPath{{false, {}}, std::nullopt};

    virtualLoop_.advance(0.1);

    EXPECT_THAT(updates_, testing::ElementsAre(NetworkPath{true, {"wan0"}}, NetworkPath{false, {}}));
}

TEST_F(ScriptedPathTest, APathThatNoLongerExpiresIsLookedUpOnceMoreAndThenLeftAlone) {
    answer_->expiresIn = 1800;
    startScripted();
    virtualLoop_.runPending();
    answer_->expiresIn.reset();

    virtualLoop_.advance(3600);

    EXPECT_EQ(lookUps_, 3);
    EXPECT_EQ(virtualLoop_.timerCount(), 0U);
}

TEST_F(ScriptedPathTest, ABurstThatDoesNotEndIsLookedUpSoonAfterItsFirstMessage) {
    startScripted();
    virtualLoop_.runPending();
    const auto tellAgain = [this](const std::string& address) {
        change("address add " + address + " dev lo");
        deliverMessages();
        virtualLoop_.advance(0.4 * RoutePathMonitor::settleTime);
    };

    tellAgain("10.1.0.1");
    tellAgain("10.1.0.2");
    ASSERT_EQ(lookUps_, 1);
    tellAgain("10.1.0.3");

    EXPECT_EQ(lookUps_, 2);
}

TEST_F(ScriptedPathTest, AQuestionWithoutAnAnswerTellsNothingAndIsAskedAgain) {
    answer_.reset();
    startScripted();
    virtualLoop_.runPending();
    ASSERT_TRUE(updates_.empty());
    answer_ = RoutedPath{{true, {"wan0"}}, std::nullopt};

    virtualLoop_.advance(RoutePathMonitor::slowInterval + 1);

    EXPECT_EQ(updates_.size(), 1U);
    EXPECT_EQ(lookUps_, 2);
}

TEST_F(ScriptedPathTest, ABareChangeOfOrderIsTold) {
    answer_ = RoutedPath{{true, {"wan0", "wan1"}}, 1.0};
    startScripted();
    virtualLoop_.runPending();
    answer_ = RoutedPath{{true, {"wan1", "wan0"}}, std::nullopt};

    virtualLoop_.advance(2);

    EXPECT_THAT(
        updates_,
        testing::ElementsAre(NetworkPath{true, {"wan0", "wan1"}}, NetworkPath{true, {"wan1", "wan0"}}));
}

} // namespace tarnwick
