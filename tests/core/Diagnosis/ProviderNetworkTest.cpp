// Which hops are the provider's.
#include "core/Diagnosis/ProviderNetwork.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

/// The last one is the host.
std::vector<HopEvidence> pathOver(const std::vector<std::string>& addresses) {
    std::vector<HopEvidence> hops;
    for (const std::string& address : addresses) {
        hops.push_back({.address = address});
    }
    hops.back().isHost = true;
    return hops;
}

std::size_t endOf(const std::vector<std::string>& addresses) {
    return endOfProvider(pathOver(addresses));
}

TEST(ProviderNetwork, IsTheNetworkOfTheFirstPublicAddress) {
    EXPECT_EQ(endOf({"192.168.1.1", "198.51.100.1", "198.51.7.7", "203.0.113.1", "203.0.113.9"}), 3);
    EXPECT_EQ(endOf({"fe80::1%eth0", "2001:db8:1::1", "2001:db8:1:7::1", "2001:db9::1", "2001:db9::9"}), 3);
}

TEST(ProviderNetwork, IncludesHopsWithInternalAddressesAndSilentOnes) {
    EXPECT_EQ(
        endOf({"192.168.1.1", "100.64.0.1", "", "10.2.3.4", "198.51.100.1", "203.0.113.1", "203.0.113.9"}),
        5);
}

TEST(ProviderNetwork, IsNotKnownBehindTwoHopsThatNeverAnswer) {
    const std::string provider = "198.51.100.1", host = "203.0.113.9";
    EXPECT_TRUE(isProviderKnown(pathOver({"192.168.1.1", "", provider, host})));
    EXPECT_FALSE(isProviderKnown(pathOver({"192.168.1.1", "", "", provider, host})));
    EXPECT_TRUE(isProviderKnown(pathOver({"192.168.1.1", "", "10.1.2.3", "", provider, host})));
    EXPECT_TRUE(isProviderKnown(pathOver({"192.168.1.1", provider, "", "", host})));
    EXPECT_TRUE(isProviderKnown(pathOver({"192.168.1.1", host})));
    EXPECT_FALSE(isProviderKnown(pathOver({"192.168.1.1", "", "", host})));
}

/// Of a second hop behind a router that answers in 2 ms.
bool mayBeAtHomeAfter(std::optional<double> ms, const std::string& address) {
    return mayBeAtHome({.address = address, .quietMs = ms}, {.address = "192.168.1.1", .quietMs = 2});
}

TEST(ProviderNetwork, IsHardlyEverWhereHomesHaveTheirAddresses) {
    EXPECT_TRUE(mayBeAtHomeAfter(20, "192.168.178.1"));
    EXPECT_FALSE(mayBeAtHomeAfter(2, "192.169.0.1"));
    EXPECT_FALSE(mayBeAtHomeAfter(2, "c0a8::1")); // the same bytes
    EXPECT_FALSE(mayBeAtHomeAfter(2, ""));
}

TEST(ProviderNetwork, MayBeginBehindASecondRouterWithAnInternalAddressThatAnswersAsSoonAsTheFirst) {
    for (const char* const address : {"10.0.0.1", "172.16.0.1", "172.31.255.1", "fd00::1"}) {
        EXPECT_TRUE(mayBeAtHomeAfter(3, address)) << address;
        EXPECT_FALSE(mayBeAtHomeAfter(3.1, address)) << address;
        EXPECT_TRUE(mayBeAtHomeAfter(std::nullopt, address)) << address;
    }
    EXPECT_TRUE(mayBeAtHome({.address = "10.0.0.1", .quietMs = 9}, {.address = "192.168.1.1"}));
    EXPECT_TRUE(mayBeAtHomeAfter(0.4, "10.0.0.1")); // sooner than the first one
}

TEST(ProviderNetwork, IsWhereItsUsersHaveTheirAddresses) {
    EXPECT_FALSE(mayBeAtHomeAfter(2, "100.64.0.1"));
    EXPECT_FALSE(mayBeAtHomeAfter(std::nullopt, "100.127.255.1"));
    EXPECT_FALSE(mayBeAtHomeAfter(2, "198.51.100.1"));
    EXPECT_FALSE(mayBeAtHomeAfter(2, "6440::1"));
}

TEST(ProviderNetwork, EndsBeforeTheHost) {
    EXPECT_EQ(endOf({"192.168.1.1", "198.51.100.1", "198.51.100.9"}), 2);
    EXPECT_EQ(endOf({"192.168.1.1", "192.168.1.9"}), 1);
    EXPECT_EQ(endOf({"192.168.1.9"}), 1);
}

TEST(ProviderNetwork, InternalAddressesDoNotLeadThroughTheInternet) {
    for (const char* const address :
         {"10.0.0.1", "100.127.255.255", "169.254.1.1", "172.31.0.1", "192.168.0.1", "fd00::1",
          "fe80::1%wlan0"}) {
        EXPECT_TRUE(isInternalAddress(address)) << address;
    }
    for (const char* const address :
         {"11.0.0.1", "100.128.0.0", "172.32.0.1", "192.169.0.1", "198.51.100.1", "2001:db8::1", "",
          "one.example"}) {
        EXPECT_FALSE(isInternalAddress(address)) << address;
    }
}

TEST(ProviderNetwork, SomeAddressesAMachineGivesItself) {
    EXPECT_TRUE(isSelfAssigned("169.254.1.1"));
    EXPECT_TRUE(isSelfAssigned("fe80::1%wlan0"));
    for (const char* const address :
         {"169.253.1.1", "192.168.0.1", "a9fe::1", "254.128.0.1", "fd00::1", ""}) {
        EXPECT_FALSE(isSelfAssigned(address)) << address;
    }
}

TEST(ProviderNetwork, NetworksAreComparedByTheirFirstBits) {
    EXPECT_TRUE(isSameNetwork("198.51.0.1", "198.51.255.1"));
    EXPECT_FALSE(isSameNetwork("198.51.0.1", "198.52.0.1"));
    EXPECT_TRUE(isSameNetwork("2001:db8:1::", "2001:db8:2::"));
    EXPECT_FALSE(isSameNetwork("2001:db8::", "2001:db9::"));
    EXPECT_FALSE(isSameNetwork("198.51.0.1", "2001:db8::"));
    EXPECT_FALSE(isSameNetwork("", ""));
}

} // namespace
} // namespace tarnwick
