// Services that this system does not offer, or that no adapter serves yet: each absence is a state, not an
// error.
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/PathMonitor.h"
#include "platform/SleepMonitor.h"

namespace tarnwick {

/// The network counts as there: only missing replies tell otherwise.
class AbsentPathMonitor final : public PathMonitor {
public:
    void start(Update /*update*/) override {}
};

/// The machine counts as awake.
class AbsentSleepMonitor final : public SleepMonitor {
public:
    void start(Handlers /*handlers*/) override {}
};

/// Nobody is told.
class AbsentNotificationCenter final : public NotificationCenter {
public:
    void post(const std::string& /*title*/, const std::string& /*body*/) override {}

    void requestAuthorization() override {}

    [[nodiscard]] Ability canNotify() const override { return Ability::no; }
};

} // namespace tarnwick
