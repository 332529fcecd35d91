// The switch that lets the program start with the user's session, and what is said when that fails.
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

    /// On also while the desktop's approval is missing.
    [[nodiscard]] bool isOn() const { return isOn_.get(); }

    /// What went wrong at the latest change, or what remains to be done.
    [[nodiscard]] std::optional<std::string> message() const;

    /// A failure turns it back to how things really are.
    void set(bool on);

    /// Reads how things are, and forgets what went wrong.
    void refresh();

    /// Reads how things are, as they may have been changed in the desktop's own settings. What went wrong
    /// here is still said.
    void follow();

    /// Whether the message asks for approval, and there is a way to show the user where that is given.
    [[nodiscard]] bool leadsToApproval() const;

    /// Shows the user where the desktop is told what starts with the session; called where approval turns out
    /// to be needed after a change, and by whoever offers it. Empty where there is no such place.
    std::function<void()> showApproval;

private:
    [[nodiscard]] bool isReallyOn() const;

    LoginItem& item_;
    Observed<bool> isOn_;
    Observed<bool> needsApproval_;
    Observed<std::optional<std::string>> failure_;
};

} // namespace tarnwick
