// A notification center in front of one service, the notification daemon or the portal.
#pragma once

#include "tests/platform/bus/NotificationDrivers.h"

#include <gtest/gtest.h>

namespace tarnwick {

template<class Driver>
class NotificationServiceContract : public Driver {
protected:
    using Ability = NotificationCenter::Ability;

    [[nodiscard]] bool connectWithService() {
        this->addService();
        return this->runUntilConnected();
    }

    [[nodiscard]] bool findService() {
        this->addService();
        this->center().requestAuthorization();
        return this->runUntilAbilityIs(Ability::yes);
    }

    /// `start` is before the call that must not wait: its answer would take until the call's time-out.
    void expectNothingWaited(double start) {
        bool isRunning = false;
        const auto timer = this->loop_.after(0, [&isRunning] { isRunning = true; });
        EXPECT_TRUE(this->runUntil([&isRunning] { return isRunning; }));
        EXPECT_LT(this->loop_.now() - start, BusConnection::callTimeout);
    }
};

using NotificationServices = testing::Types<DaemonDriver, PortalDriver>;

} // namespace tarnwick
