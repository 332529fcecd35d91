// A diagnostician in virtual time, and what surrounds it.
#pragma once

#include "app/Diagnostician/Diagnostician.h"
#include "tests/app/Diagnostician/FakeAddressNames.h"
#include "tests/app/Diagnostician/FakeConnectivityCheck.h"
#include "tests/app/Diagnostician/FakeLinkInspector.h"
#include "tests/app/Diagnostician/FakeNameServerCheck.h"
#include "tests/app/Diagnostician/FakeProbeNetwork.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <sys/socket.h>

namespace tarnwick {

class DiagnosticianTest : public testing::Test {
protected:
    /// A tick a second, with a ping each while there are any. The host answers after `hostMs`, or not.
    void run(double seconds) {
        for (double second = 0; second < seconds; ++second) {
            situation.now = loop.now();
            if (isPinging) {
                addPing();
            }
            std::erase_if(
                situation.pings, [&](const PendingPing& ping) { return loop.now() - ping.sent > 30; });
            diagnostician.tick(situation);
            loop.advance(1);
        }
    }

    void addPing() {
        const std::optional<double> ms = hostMs;
        situation.pings.push_back({.id = nextId++, .sent = loop.now() - 0.5});
        if (ms) {
            situation.pings.back().reply = situation.pings.back().sent + *ms / 1000;
        }
    }

    /// Right after a ping and a probe.
    void cut(int fromHop) {
        loop.advance(0.2);
        network.silentFrom = fromHop;
        run(1);
        hostMs.reset();
    }

    void goDown(int fromHop) {
        cut(fromHop);
        run(4);
        situation.trouble = Trouble::down;
    }

    void recover() {
        network.silentFrom = 0;
        hostMs = 10;
        situation.trouble = Trouble::none;
    }

    [[nodiscard]] std::string told() const {
        const auto& verdict = diagnostician.verdict();
        return verdict ? std::string(nameOf(verdict->blame)) : "nothing";
    }

    simulation::VirtualRunLoop loop;
    simulation::FakeProbeNetwork network{
        loop, {"192.0.2.1", "198.51.100.1", "198.51.100.7", "203.0.113.1", "203.0.113.9"}};
    simulation::FakeLinkInspector link{loop};
    simulation::FakeNameServerCheck names{loop};
    simulation::FakeConnectivityCheck service{loop};
    simulation::FakeAddressNames addressNames{loop};
    Diagnostician diagnostician{
        loop,
        {.probes = network,
         .link = link,
         .nameServers = names,
         .connectivity = service,
         .addressNames = addressNames}};
    bool isPinging = true;
    std::optional<double> hostMs = 10;
    std::uint64_t nextId = 1;
    Situation situation{
        .host = "203.0.113.9",
        .address = ResolvedAddress{.family = AF_INET, .sockaddr = {1}, .display = "203.0.113.9"},
        .usualMs = 10};
};

} // namespace tarnwick
