// Whether the desktop and its panel are dark, as far as they tell.
#pragma once

#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"

#include <functional>
#include <optional>
#include <vector>

namespace tarnwick {

/// Main thread.
class ColorScheme {
public:
    /// `bus` is the session's and outlives it.
    explicit ColorScheme(BusConnection& bus);

    /// What the user prefers for all programs. Unknown without a preference, and where nobody keeps one.
    [[nodiscard]] std::optional<bool> desktopIsDark() const { return desktopIsDark_; }

    /// The panel's own setting. Known only while it is followed.
    [[nodiscard]] std::optional<bool> panelIsDark() const { return panelIsDark_; }

    /// Whether the panel at hand keeps such a setting. Where it does not, asking would start a service that
    /// nobody needs.
    void setFollowsPanel(bool follows);

    [[nodiscard]] Subscription onChange(std::function<void()> listener) {
        return listeners_.add(std::move(listener));
    }

private:
    void busChanged();
    void askDesktop();
    void matchPanelSetting();
    void askPanel();
    void setDesktopIsDark(std::optional<bool> isDark);
    void setPanelIsDark(std::optional<bool> isDark);

    BusConnection& bus_;
    std::optional<bool> desktopIsDark_;
    std::optional<bool> panelIsDark_;
    bool followsPanel_ = false;
    Subscribers<> listeners_;
    Lifeline lifeline_;
    Subscription stateSubscription_;
    Subscription desktopMatch_;
    Subscription portalMatch_;
    std::vector<Subscription> panelMatches_;
};

} // namespace tarnwick
