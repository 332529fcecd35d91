// Which hosts are offered for pinging.
#include "app/SettingsView/Model/HostPresets.h"

#include "core/HostText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

/// Name and address of each, one a line; a rule before the public ones.
std::string offered(const NetworkServers& own) {
    std::string text;
    bool isOwn = true;
    for (const HostPreset& preset : hostPresets(own)) {
        text += isOwn && !preset.isOfOwnNetwork ? "--\n" : "";
        isOwn = preset.isOfOwnNetwork;
        text += preset.name + " " + preset.address + "\n";
    }
    return text;
}

} // namespace

TEST(HostPresets, TheOwnNetworksMachinesComeBeforeThePublicOnes) {
    EXPECT_EQ(
        offered({.routers = {"192.168.1.1", "fe80::1%wlan0"}, .nameServers = {"10.0.0.2"}}),
        "Router 192.168.1.1\nRouter fe80::1%wlan0\nName Server 10.0.0.2\n--\n"
        "Cloudflare 1.1.1.1\nGoogle 8.8.8.8\nQuad9 9.9.9.9\n");
}

TEST(HostPresets, WhatIsNotThereIsNotListed) {
    EXPECT_EQ(offered({}), "--\nCloudflare 1.1.1.1\nGoogle 8.8.8.8\nQuad9 9.9.9.9\n");
}

TEST(HostPresets, ARouterThatIsTheNameServerTooIsOneEntry) {
    EXPECT_EQ(
        offered({.routers = {"192.168.1.1"}, .nameServers = {"192.168.1.1", "8.8.8.8"}}),
        "Router and Name Server 192.168.1.1\nName Server 8.8.8.8\n--\nCloudflare 1.1.1.1\nQuad9 9.9.9.9\n");
}

TEST(HostPresets, EachIsAHostThatCanBePinged) {
    for (const HostPreset& preset : hostPresets({.routers = {"fe80::1%wlan0"}, .nameServers = {}})) {
        EXPECT_EQ(std::get<std::string>(hostIn(preset.address)), preset.address);
    }
}

} // namespace tarnwick
