// Whether the desktop and its panel are dark, where they have a setting for it.
#pragma once

#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Main thread.
class ColorScheme {
public:
    /// `bus` is the session's and outlives it.
    explicit ColorScheme(BusConnection& bus);

    /// What the user prefers for all programs. Unknown without a preference, or without a service that keeps
    /// it.
    [[nodiscard]] std::optional<bool> desktopIsDark() const { return desktopIsDark_; }

    /// Whether the user prefers more contrast in all programs.
    [[nodiscard]] bool desktopWantsContrast() const { return desktopWantsContrast_; }

    /// The panel's own setting. Known only while it is followed.
    [[nodiscard]] std::optional<bool> panelIsDark() const { return panelIsDark_; }

    /// Whether the present panel has such a setting. Without one, asking would only start a service.
    void setFollowsPanel(bool follows);

    [[nodiscard]] Subscription onChange(std::function<void()> listener) {
        return listeners_.add(std::move(listener));
    }

private:
    void askDesktop();
    void watchDesktop();
    void watchPanel();
    void askPanel();
    void setDesktopIsDark(std::optional<bool> isDark);
    void setDesktopWantsContrast(bool wantsContrast);
    void setPanelIsDark(std::optional<bool> isDark);

    BusConnection& bus_;
    std::string portal_;        ///< the unique name of the service; empty while there is none
    std::string panelSettings_; ///< likewise
    std::optional<bool> desktopIsDark_;
    bool desktopWantsContrast_ = false;
    std::optional<bool> panelIsDark_;
    bool followsPanel_ = false;
    Subscribers listeners_;
    Lifeline lifeline_;
    std::vector<Subscription> subscriptions_;
};

} // namespace tarnwick
