// What tests of NetworkManager's adapters share: one that tells what the test wants.
#pragma once

#include "tests/platform/bus/BusTest.h"

#include "platform/bus/BusObject.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tarnwick {

class NetworkManagerTest : public BusTest {
protected:
    static constexpr double patience = 0.3;

    /// With one property.
    template<typename Value>
    BusPeer& addNetworkManager(const std::string& property, const Value& value) {
        constexpr const char* name = "org.freedesktop.NetworkManager";
        BusPeer& peer = addPeer();
        object_.emplace(peer.link(), "/org/freedesktop/NetworkManager", name);
        object_->property(property, [value] { return value; });
        EXPECT_TRUE(object_->publish());
        peer.requestName(name);
        return peer;
    }

private:
    std::optional<BusObject> object_;
};

} // namespace tarnwick
