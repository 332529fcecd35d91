// The switch "Launch at Login" and its message.
#pragma once

#include "app/Observation/Observation.h"
#include "platform/ports/LoginItem.h"

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

/// Observable. Main thread.
class LaunchAtLoginToggle {
public:
    static constexpr auto approvalText = "Approve Tarnwick in your desktop's startup settings.";

    /// The item outlives the toggle.
    explicit LaunchAtLoginToggle(LoginItem& item);
    LaunchAtLoginToggle(const LaunchAtLoginToggle&) = delete;
    LaunchAtLoginToggle& operator=(const LaunchAtLoginToggle&) = delete;
    ~LaunchAtLoginToggle();

    /// Also on while the desktop's approval is missing.
    [[nodiscard]] bool isOn() const { return isOn_.get(); }

    /// The failure of the latest change, or what the user still has to do.
    [[nodiscard]] std::optional<std::string> message() const;

    /// After a failure it shows the real state again.
    void set(bool on);

    /// Reads the real state and drops the failure.
    void refresh();

    /// Reads the real state, which the desktop's own settings may have changed. Keeps the failure.
    void follow();

    /// Whether the message asks for approval and `showApproval` can show where to give it.
    [[nodiscard]] bool leadsToApproval() const;

    /// Opens the desktop's startup settings. Called after a change that needs approval, and by the button
    /// beside the message. Empty where the desktop has no such settings.
    std::function<void()> showApproval;

private:
    [[nodiscard]] bool isReallyOn() const;

    LoginItem& item_;
    Observed<bool> isOn_;
    Observed<bool> needsApproval_;
    Observed<std::optional<std::string>> failure_;
};

} // namespace tarnwick
