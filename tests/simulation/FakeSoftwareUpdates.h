// Updates that keep what they are told and count what they are asked for.
#pragma once

#include "app/Observation/Observation.h"
#include "app/Update/SoftwareUpdates.h"

#include <optional>
#include <string>

namespace tarnwick::simulation {

class FakeSoftwareUpdates final : public SoftwareUpdates {
public:
    [[nodiscard]] bool automaticallyChecksForUpdates() const override { return checks.get(); }

    void setAutomaticallyChecksForUpdates(bool wanted) override { checks.set(wanted); }

    [[nodiscard]] bool automaticallyDownloadsUpdates() const override { return downloads.get(); }

    void setAutomaticallyDownloadsUpdates(bool wanted) override { downloads.set(wanted); }

    [[nodiscard]] std::optional<RunLoop::WallTime> lastUpdateCheckDate() const override {
        return lastCheck.get();
    }

    [[nodiscard]] std::string lastProblem() const override { return problem.get(); }

    [[nodiscard]] bool canCheckForUpdates() const override { return canCheck.get(); }

    void checkForUpdates() override { ++checksAskedFor; }

    [[nodiscard]] std::string serverDomain() const override { return "updates.example"; }

    Observed<bool> checks{false};
    Observed<bool> downloads{false};
    Observed<bool> canCheck{true};
    Observed<std::optional<RunLoop::WallTime>> lastCheck;
    Observed<std::string> problem;
    int checksAskedFor = 0;
};

} // namespace tarnwick::simulation
