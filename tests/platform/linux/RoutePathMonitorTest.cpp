// The network path as a real kernel routes, in a network namespace that each test changes.
#include "tests/platform/linux/RoutePathTest.h"

#include "platform/linux/RouteLookup.h"
#include "tests/core/CaseFile.h"
#include "tests/core/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <netinet/in.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>

namespace tarnwick {

namespace {

class RoutePathMonitorTest : public RoutePathTest {};

class PathCases : public RoutePathTest, public testing::WithParamInterface<test::Case> {
protected:
    void play(const test::CaseStep& step) {
        const std::string& name = step.words.front();
        if (name == "updates") {
            EXPECT_EQ(std::to_string(updates_.size()), step.expected);
            return;
        }
        if (name == "routes") {
            EXPECT_EQ(nextHops(AF_INET) + " over IPv4 " + nextHops(AF_INET6) + " over IPv6", step.expected);
            return;
        }
        carryOut(step);
        if (step.expected == "none") {
            EXPECT_TRUE(runUntilUnsatisfied());
        } else if (!step.expected.empty()) {
            std::istringstream words(step.expected);
            EXPECT_TRUE(runUntilSatisfiedOver({std::istream_iterator<std::string>(words), {}}));
        }
    }

private:
    void carryOut(const test::CaseStep& step) {
        const std::string& name = step.words.front();
        if (name == "link") {
            addLink(step.word(1));
        } else if (name == "uplink") {
            addLinkWithDefault(
                step.word(1), static_cast<int>(step.number(2)), static_cast<int>(step.number(3)));
        } else if (name == "start") {
            start();
        } else {
            ASSERT_TRUE(name == "ip" || name == "ip6") << "no such step";
            std::string command;
            for (std::size_t word = 1; word < step.words.size(); ++word) {
                command += step.word(word) + " ";
            }
            name == "ip" ? change(command) : change6(command);
        }
    }

    static std::string nextHops(int family) {
        return std::to_string(RouteLookup().toInternet(family)->nextHops.size());
    }
};

/// Whether messages about routes name the interfaces of their next hops too.
class NextHopTest : public RoutePathTest, public testing::WithParamInterface<bool> {};

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

TEST_P(PathCases, Hold) {
    for (const test::CaseStep& step : GetParam().steps) {
        play(step);
        ASSERT_FALSE(HasFailure()) << test::place(GetParam(), step);
    }
}

INSTANTIATE_TEST_SUITE_P(
    NetworkPath, PathCases, testing::ValuesIn(test::readCases("path.txt")), test::caseName);

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

TEST_F(RoutePathMonitorTest, TheRestOfABurstWakesNothing) {
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

TEST_F(RoutePathMonitorTest, MessagesLostInAFloodAreMadeUpForByALookUp) {
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

TEST_F(RoutePathMonitorTest, AnUnreadChangeIsNotToldAfterTheEnd) {
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

} // namespace tarnwick
