#include "app/SettingsView/Model/HostPresets.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tarnwick {

namespace {

struct PublicHost {
    std::string_view name;
    std::string_view address;
};

/// Name servers with an address in each part of the world, open to everyone.
constexpr std::array publicHosts{
    PublicHost{"Cloudflare", "1.1.1.1"}, PublicHost{"Google", "8.8.8.8"}, PublicHost{"Quad9", "9.9.9.9"}};

} // namespace

std::vector<HostPreset> hostPresets(const NetworkServers& own) {
    std::vector<HostPreset> presets;
    const auto presetOf = [&](std::string_view address) {
        return std::ranges::find(presets, address, &HostPreset::address);
    };
    for (const std::string& address : own.routers) {
        presets.push_back({"Router", address, true});
    }
    for (const std::string& address : own.nameServers) {
        if (const auto router = presetOf(address); router != presets.end()) {
            router->name = "Router and Name Server";
        } else {
            presets.push_back({"Name Server", address, true});
        }
    }
    for (const PublicHost& host : publicHosts) {
        if (presetOf(host.address) == presets.end()) {
            presets.push_back({std::string(host.name), std::string(host.address), false});
        }
    }
    return presets;
}

} // namespace tarnwick
