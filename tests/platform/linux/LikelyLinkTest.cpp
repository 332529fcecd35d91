// Which of a machine's interfaces people mean while none has a route.
#include "platform/linux/LikelyLink.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnwick {

namespace {

using Kind = LinkEvidence::Kind;

KnownLink off(unsigned index, const std::string& name, Kind kind) {
    return {.information = {.index = index, .name = name, .isHardware = true}, .kind = kind};
}

KnownLink unplugged(unsigned index, const std::string& name, Kind kind = Kind::wired) {
    KnownLink link = off(index, name, kind);
    link.information.isUp = true;
    return link;
}

KnownLink plugged(unsigned index, const std::string& name, Kind kind = Kind::wired) {
    KnownLink link = unplugged(index, name, kind);
    link.information.hasCarrier = true;
    return link;
}

KnownLink usable(unsigned index, const std::string& name, Kind kind = Kind::wired) {
    KnownLink link = plugged(index, name, kind);
    link.hasAddress = true;
    return link;
}

KnownLink madeBy(const std::string& software, KnownLink link) {
    link.information.isHardware = false;
    link.information.software = software;
    link.kind = Kind::other;
    return link;
}

KnownLink portOf(unsigned master, KnownLink link) {
    link.information.master = master;
    return link;
}

std::string likely(const std::vector<KnownLink>& links, unsigned last = 0) {
    const KnownLink* const link = likelyLink(links, last);
    return link == nullptr ? "none" : link->information.name;
}

} // namespace

TEST(LikelyLink, AMachineWithoutHardwareHasNone) {
    KnownLink loopback = madeBy("", usable(1, "lo"));
    loopback.information.isLoopback = true;

    EXPECT_EQ(likely({}), "none");
    EXPECT_EQ(likely({loopback}), "none");
}

TEST(LikelyLink, NetworksWithinTheMachineAreNone) {
    EXPECT_EQ(
        likely(
            {madeBy("bridge", usable(2, "docker0")), madeBy("", usable(3, "vmnet8")),
             madeBy("tun", usable(4, "tun0")), madeBy("wireguard", usable(5, "wg0"))}),
        "none");
    EXPECT_EQ(likely({madeBy("bridge", usable(2, "docker0")), off(3, "wlan0", Kind::wifi)}), "wlan0");
}

TEST(LikelyLink, AUsableOneIsMeant) {
    EXPECT_EQ(likely({plugged(2, "eth0"), usable(3, "eth1"), off(4, "wlan0", Kind::wifi)}, 2), "eth1");
}

TEST(LikelyLink, AmongUnusableOnesTheLastOneWithARouteIsMeant) {
    EXPECT_EQ(likely({plugged(2, "eth0"), off(3, "wlan0", Kind::wifi)}, 3), "wlan0");
    EXPECT_EQ(likely({off(2, "eth0", Kind::wired), plugged(3, "wlan0", Kind::wifi)}, 2), "eth0");
}

TEST(LikelyLink, TheLastOneMayBeOfAnySoftware) {
    EXPECT_EQ(likely({madeBy("openvswitch", unplugged(2, "br0")), unplugged(3, "eth0")}, 2), "br0");
}

TEST(LikelyLink, ACableThatIsPluggedInComesBeforeWiFiThatIsOff) {
    EXPECT_EQ(likely({off(2, "wlan0", Kind::wifi), plugged(3, "eth0")}), "eth0");
}

TEST(LikelyLink, WithNeitherPluggedInWiFiIsMeant) {
    EXPECT_EQ(likely({unplugged(2, "eth0"), off(3, "wlan0", Kind::wifi)}), "wlan0");
    EXPECT_EQ(likely({off(2, "wwan0", Kind::mobile), unplugged(3, "eth0"), unplugged(4, "eth1")}), "eth0");
}

TEST(LikelyLink, HardwareComesBeforeSoftware) {
    EXPECT_EQ(likely({madeBy("veth", plugged(2, "veth1")), unplugged(3, "eth0")}), "eth0");
    EXPECT_EQ(likely({madeBy("veth", plugged(2, "eth0"))}), "eth0"); // within a container
}

TEST(LikelyLink, ThePortOfABridgeStandsForTheBridge) {
    EXPECT_EQ(likely({portOf(5, unplugged(2, "eth0")), madeBy("bridge", unplugged(5, "br0"))}), "br0");
    EXPECT_EQ(likely({portOf(99, unplugged(2, "eth0"))}), "eth0"); // which is not in this network
}

} // namespace tarnwick
