// The way out as a real kernel tells it, in a network namespace that each test changes.
#include "platform/linux/LinkReader.h"

#include "core/FileDescriptor.h"
#include "tests/core/Required.h"
#include "tests/platform/linux/NetworkNamespace.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <linux/if_tun.h>
#include <netinet/in.h>
#include <sched.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace tarnwick {

namespace {

using Kind = LinkEvidence::Kind;

ResolvedAddress addressOf(const std::string& text) {
    if (sockaddr_in to4{}; ::inet_pton(AF_INET, text.c_str(), &to4.sin_addr) == 1) {
        to4.sin_family = AF_INET;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&to4);
        return {AF_INET, {bytes, bytes + sizeof to4}, text};
    }
    sockaddr_in6 to6{};
    to6.sin6_family = AF_INET6;
    EXPECT_EQ(::inet_pton(AF_INET6, text.c_str(), &to6.sin6_addr), 1) << text;
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&to6);
    return {AF_INET6, {bytes, bytes + sizeof to6}, text};
}

/// A link-local address.
ResolvedAddress addressOn(const std::string& interface, const std::string& text) {
    ResolvedAddress address = addressOf(text);
    const std::uint32_t scope = ::if_nametoindex(interface.c_str());
    std::memcpy(&address.sockaddr[offsetof(sockaddr_in6, sin6_scope_id)], &scope, sizeof scope);
    return address;
}

const ResolvedAddress host4 = addressOf("198.51.100.9");
const ResolvedAddress host6 = addressOf("2001:db8:9::9");

/// A tunnel as VPN programs make it, with its program running.
class Tunnel {
public:
    explicit Tunnel(const std::string& name) {
        ifreq request{};
        name.copy(&request.ifr_name[0], sizeof request.ifr_name - 1);
        request.ifr_flags = IFF_TUN | IFF_NO_PI;
        isOpen_ = ::ioctl(device_.get(), TUNSETIFF, &request) == 0;
    }

    [[nodiscard]] bool isOpen() const { return isOpen_; }

private:
    FileDescriptor device_{::open("/dev/net/tun", O_RDWR | O_CLOEXEC)};
    bool isOpen_ = false;
};

class LinkReaderTest : public testing::Test {
protected:
    void SetUp() override {
        if (!namespace_.isEntered()) {
            TARNWICK_CANNOT_RUN("this machine gives no network namespace");
        }
        if (!test::NetworkNamespace::ip("link set lo up")) {
            TARNWICK_CANNOT_RUN("there is no ip command here (Debian: iproute2)");
        }
    }

    static void change(const std::string& commands) { EXPECT_TRUE(test::NetworkNamespace::ip(commands)); }

    static void change6(const std::string& commands) {
        EXPECT_TRUE(test::NetworkNamespace::ip(commands, "-6"));
    }

    /// Carries the commands out on the far ends.
    void changeFar(const std::string& commands) {
        EXPECT_EQ(::setns(farNetwork_.get(), CLONE_NEWNET), 0);
        change(commands);
        EXPECT_EQ(::setns(ownNetwork_.get(), CLONE_NEWNET), 0);
    }

    /// A cable whose far end, NAMEfar, is elsewhere.
    void addLink(const std::string& name) {
        const std::string far = name + "far";
        const std::string elsewhere =
            "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(farNetwork_.get());
        change(
            "link add " + name + " type veth peer name " + far + " netns " + elsewhere + "\nlink set dev "
            + name + " addrgenmode none\nlink set dev " + name + " up");
        changeFar("link set dev " + far + " addrgenmode none\nlink set dev " + far + " up");
        ASSERT_TRUE(test::NetworkNamespace::hasComeUp(name));
    }

    /// With the address 10.`net`.0.1, and 10.`net`.0.2 for a router to the internet.
    void addWay(const std::string& name, int net) {
        const std::string prefix = "10." + std::to_string(net) + ".0.";
        addLink(name);
        change(
            "address add " + prefix + "1/24 dev " + name + "\nroute add default via " + prefix + "2 dev "
            + name);
    }

    LinkState present(const std::optional<ResolvedAddress>& to = host4) {
        const auto state = reader_.present(to);
        EXPECT_TRUE(state);
        return state.value_or(LinkState{});
    }

    /// The kernel notices some changes a moment after they are made.
    [[nodiscard]] bool waitUntil(const std::function<bool(const LinkState&)>& condition) {
        const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition(present())) {
            if (std::chrono::steady_clock::now() > patience) {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return true;
    }

    [[nodiscard]] bool waitUntilCarrierIsLost() {
        return waitUntil([](const LinkState& state) { return !state.link.hasCarrier; });
    }

    /// One packet to the host, which makes the kernel ask for the router's hardware address.
    static void send(const ResolvedAddress& to) {
        const FileDescriptor socket(::socket(to.family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        std::vector<std::uint8_t> address = to.sockaddr;
        const in_port_t port = htons(9);
        std::memcpy(&address[offsetof(sockaddr_in, sin_port)], &port, sizeof port);
        static_cast<void>(::sendto(
            socket.get(), "", 1, 0, reinterpret_cast<const sockaddr*>(address.data()),
            static_cast<socklen_t>(address.size())));
    }

    static FileDescriptor presentNetwork() {
        return FileDescriptor(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC));
    }

    test::NetworkNamespace far_;
    FileDescriptor farNetwork_ = presentNetwork();
    test::NetworkNamespace namespace_;
    FileDescriptor ownNetwork_ = presentNetwork();
    LinkReader reader_;
};

} // namespace

TEST_F(LinkReaderTest, AWayHasAllThatALinkNeeds) {
    addWay("wan0", 1);

    const LinkState state = present();

    EXPECT_EQ(state.link.interface, "wan0");
    EXPECT_EQ(state.link.kind, Kind::wired);
    EXPECT_TRUE(state.link.isUp && state.link.hasCarrier && state.link.hasAddress && state.link.hasRoute);
    EXPECT_EQ(state.link.signalDbm, std::nullopt);
    EXPECT_EQ(state.router, "10.1.0.2");
    EXPECT_EQ(state.neighbor, NeighborState::unknown);
}

TEST_F(LinkReaderTest, TheSourceIsTheAddressThatPacketsHave) {
    addWay("wan0", 1);
    EXPECT_EQ(present().link.source, "10.1.0.1");
    EXPECT_EQ(present(addressOf("10.1.0.9")).link.source, "10.1.0.1");
    EXPECT_EQ(present(std::nullopt).link.source, "");

    change("address add 10.1.0.7/24 dev wan0\nroute replace default via 10.1.0.2 src 10.1.0.7");
    EXPECT_EQ(present().link.source, "10.1.0.7");
}

TEST_F(LinkReaderTest, ARouteGoesWithItsSource) {
    addWay("wan0", 1);
    change("address add 10.1.0.7/24 dev wan0\nroute replace default via 10.1.0.2 src 10.1.0.7\n"
           "address del 10.1.0.7/24 dev wan0");

    EXPECT_FALSE(present().link.hasRoute);
}

TEST_F(LinkReaderTest, WhereTheNetworkGivesNoIPv4AddressTheMachinesOwnIsTheSource) {
    addLink("wan0");
    change("address add 169.254.7.7/16 dev wan0\nroute add default dev wan0");
    change6("address add 2001:db8:7::2/64 dev wan0 nodad");

    EXPECT_TRUE(present().link.hasAddress);
    EXPECT_EQ(present().link.source, "169.254.7.7");
}

TEST_F(LinkReaderTest, WhereTheNetworkGivesNoIPv6AddressTheMachinesOwnIsTheSource) {
    addWay("wan0", 1);
    change6("address add fe80::2/64 dev wan0 nodad\nroute add default via fe80::1 dev wan0");
    EXPECT_EQ(present(host6).link.source, "fe80::2%wan0");

    change6("address add 2001:db8:7::2/64 dev wan0 nodad");
    EXPECT_EQ(present(host6).link.source, "2001:db8:7::2");
}

TEST_F(LinkReaderTest, TheBytesAreThoseThatTheInterfaceSent) {
    addWay("wan0", 1);
    change("neighbor replace 10.1.0.2 lladdr 02:00:00:00:00:02 dev wan0");
    const LinkState before = present();
    ASSERT_TRUE(before.sentBytes && before.receivedBytes);

    send(host4);

    const LinkState after = present();
    EXPECT_EQ(*after.sentBytes - *before.sentBytes, 14U + 20 + 8 + 1); // Ethernet, IP, UDP and the byte
    EXPECT_EQ(after.receivedBytes, before.receivedBytes);
}

TEST_F(LinkReaderTest, TheRouteToTheAddressCountsBeforeThatToTheInternet) {
    addWay("wan0", 1);
    addLink("lan0");
    change("address add 10.2.0.1/24 dev lan0\nroute add 198.51.100.0/24 via 10.2.0.7");

    EXPECT_EQ(present(host4).link.interface, "lan0");
    EXPECT_EQ(present(host4).router, "10.2.0.7");
    EXPECT_EQ(present(std::nullopt).link.interface, "wan0");
    EXPECT_EQ(present(std::nullopt).router, "10.1.0.2");
}

TEST_F(LinkReaderTest, AHostOnTheOwnNetworkHasNoRouterBeforeIt) {
    addLink("lan0");
    change("address add 10.2.0.1/24 dev lan0");

    const LinkState state = present(addressOf("10.2.0.9"));

    EXPECT_EQ(state.link.interface, "lan0");
    EXPECT_TRUE(state.link.hasRoute);
    EXPECT_EQ(state.router, std::nullopt);
}

TEST_F(LinkReaderTest, ARouterThatIsAskedForIsItsOwnRouter) {
    addWay("wan0", 1);
    changeFar("address add 10.1.0.2/24 dev wan0far");
    const ResolvedAddress itself = addressOf("10.1.0.2");

    send(itself);

    EXPECT_EQ(present(itself).router, "10.1.0.2");
    EXPECT_TRUE(
        waitUntil([&](const LinkState&) { return present(itself).neighbor == NeighborState::reachable; }));
    EXPECT_EQ(present(addressOf("10.1.0.9")).router, std::nullopt);
}

TEST_F(LinkReaderTest, AnIPv6RouterIsKnownByItsInterface) {
    addLink("wan0");
    addLink("lan0");
    change6("address add fe80::2/64 dev wan0 nodad\naddress add fe80::2/64 dev lan0 nodad\n"
            "address add 2001:db8:7::2/64 dev wan0 nodad\nroute add default via fe80::1 dev wan0");

    EXPECT_EQ(present(addressOn("wan0", "fe80::1")).router, "fe80::1%wan0");
    EXPECT_EQ(present(addressOn("lan0", "fe80::1")).router, std::nullopt);
    EXPECT_EQ(present(addressOn("wan0", "fe80::9")).router, std::nullopt);
}

TEST_F(LinkReaderTest, OfSeveralNextHopsOneWithACarrierCounts) {
    addLink("wan0");
    addLink("wan1");
    change("address add 10.1.0.1/24 dev wan0\naddress add 10.2.0.1/24 dev wan1\n"
           "route add default nexthop via 10.1.0.2 nexthop via 10.2.0.2");
    changeFar("link set dev wan0far down");

    EXPECT_TRUE(waitUntil([](const LinkState& state) { return state.router == "10.2.0.2"; }));
    EXPECT_TRUE(present().link.hasCarrier);
}

TEST_F(LinkReaderTest, AnIPv6RouterHasItsInterface) {
    addLink("wan0");
    change6("address add 2001:db8:7::2/64 dev wan0 nodad\nroute add default via fe80::1 dev wan0");

    const LinkState state = present(host6);

    EXPECT_EQ(state.link.interface, "wan0");
    EXPECT_TRUE(state.link.hasAddress && state.link.hasRoute);
    EXPECT_EQ(state.router, "fe80::1%wan0");
}

TEST_F(LinkReaderTest, WithoutAWayInItsFamilyTheOtherFamilysLinkIsToldButNotItsRouter) {
    addWay("wan0", 1);

    const LinkState state = present(host6);

    EXPECT_EQ(state.link.interface, "wan0");
    EXPECT_TRUE(state.link.hasRoute);
    EXPECT_EQ(state.router, std::nullopt);
}

TEST_F(LinkReaderTest, AMachineWithNothingButItselfHasNoInterface) {
    const LinkState state = present();

    EXPECT_EQ(state.link.interface, "");
    EXPECT_FALSE(state.link.hasRoute);
}

TEST_F(LinkReaderTest, WithoutARouterEverythingElseIsThere) {
    addWay("wan0", 1);
    change("route del default");

    const LinkState state = present();

    EXPECT_EQ(state.link.interface, "wan0");
    EXPECT_TRUE(state.link.isUp && state.link.hasCarrier && state.link.hasAddress);
    EXPECT_FALSE(state.link.hasRoute);
    EXPECT_EQ(state.router, std::nullopt);
}

TEST_F(LinkReaderTest, AnAddressThatTheMachineGaveItselfIsNone) {
    addLink("wan0");
    change("address add 169.254.3.4/16 dev wan0\naddress add fe80::7/64 dev wan0 nodad");

    const LinkState state = present();

    EXPECT_EQ(state.link.interface, "wan0");
    EXPECT_TRUE(state.link.isUp && state.link.hasCarrier);
    EXPECT_FALSE(state.link.hasAddress);
}

TEST_F(LinkReaderTest, ACableThatIsPulledOutIsNoCarrier) {
    addWay("wan0", 1);
    changeFar("link set dev wan0far down");

    EXPECT_TRUE(waitUntilCarrierIsLost());
    EXPECT_EQ(present().link.interface, "wan0");
    EXPECT_TRUE(present().link.isUp);
}

TEST_F(LinkReaderTest, WiFiThatIsSwitchedOffIsOff) {
    addWay("wlan0", 1);
    ASSERT_EQ(present().link.kind, Kind::wifi);
    change("link set dev wlan0 down");

    const LinkState state = present();

    EXPECT_EQ(state.link.interface, "wlan0");
    EXPECT_EQ(state.link.kind, Kind::wifi);
    EXPECT_FALSE(state.link.isUp || state.link.hasCarrier || state.link.hasRoute);
}

TEST_F(LinkReaderTest, TheInterfaceThatHadTheRouteIsMeantWhenItIsGone) {
    addLink("wlan0");
    addWay("wan0", 1);
    ASSERT_EQ(present().link.interface, "wan0");

    change("link set dev wan0 down");

    EXPECT_EQ(present().link.interface, "wan0");
    reader_ = LinkReader();
    EXPECT_EQ(present().link.interface, "wlan0");
}

TEST_F(LinkReaderTest, ATunnelIsTheWayWhileSomethingCanCarryIt) {
    addWay("wan0", 1);
    const Tunnel tunnel("tun0");
    if (!tunnel.isOpen()) {
        TARNWICK_CANNOT_RUN("this machine makes no tunnels");
    }
    change("link set dev tun0 up\nroute replace default dev tun0");

    const LinkState state = present();

    EXPECT_EQ(state.link.interface, "tun0");
    EXPECT_EQ(state.link.kind, Kind::tunnel);
    EXPECT_TRUE(state.link.hasCarrier && state.link.hasAddress && state.link.hasRoute);
    EXPECT_EQ(state.router, std::nullopt);
}

TEST_F(LinkReaderTest, BehindATunnelTheCableThatIsPulledOutIsFound) {
    addWay("wan0", 1);
    const Tunnel tunnel("tun0");
    if (!tunnel.isOpen()) {
        TARNWICK_CANNOT_RUN("this machine makes no tunnels");
    }
    change("link set dev tun0 up\nroute replace default dev tun0");
    changeFar("link set dev wan0far down");

    EXPECT_TRUE(waitUntilCarrierIsLost());
    EXPECT_EQ(present().link.interface, "wan0");
}

TEST_F(LinkReaderTest, ARouterThatAnswersTheKernelIsReachable) {
    addWay("wan0", 1);
    changeFar("address add 10.1.0.2/24 dev wan0far");

    send(host4);

    EXPECT_TRUE(waitUntil([](const LinkState& state) { return state.neighbor == NeighborState::reachable; }));
    EXPECT_EQ(present(addressOf("10.1.0.9")).neighbor, NeighborState::unknown);
}

TEST_F(LinkReaderTest, AnIPv6RouterThatAnswersTheKernelIsReachable) {
    addLink("wan0");
    change6("address add 2001:db8:7::2/64 dev wan0 nodad\naddress add fe80::2/64 dev wan0 nodad\n"
            "route add default via fe80::1 dev wan0");
    changeFar("address add fe80::1/64 dev wan0far nodad");

    send(host6);

    EXPECT_TRUE(
        waitUntil([this](const LinkState&) { return present(host6).neighbor == NeighborState::reachable; }));
}

TEST_F(LinkReaderTest, ARouterThatDoesNotAnswerTheKernelStaysFailedWhileItAsksAgain) {
    addWay("wan0", 1);
    const auto hasFailed = [](const LinkState& state) {
        send(host4);
        return state.neighbor == NeighborState::failed;
    };
    ASSERT_TRUE(waitUntil(hasFailed));

    // The kernel gives up after three seconds and begins anew with the next packet.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(4);
    while (std::chrono::steady_clock::now() < end) {
        ASSERT_TRUE(hasFailed(present()));
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    changeFar("address add 10.1.0.2/24 dev wan0far");
    EXPECT_TRUE(waitUntil([](const LinkState& state) {
        send(host4);
        return state.neighbor == NeighborState::reachable;
    }));
}

TEST_F(LinkReaderTest, AnIPv6RouterThatDoesNotAnswerTheKernelHasFailed) {
    addLink("wan0");
    change6("address add 2001:db8:7::2/64 dev wan0 nodad\naddress add fe80::2/64 dev wan0 nodad\n"
            "route add default via fe80::1 dev wan0");
    ASSERT_EQ(present(host6).neighbor, NeighborState::unknown);

    EXPECT_TRUE(waitUntil([this](const LinkState&) {
        send(host6);
        return present(host6).neighbor == NeighborState::failed;
    }));
}

} // namespace tarnwick
