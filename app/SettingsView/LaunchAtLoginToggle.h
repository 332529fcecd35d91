// The switch that lets the program start with the user's session, and what is said when that fails.
#pragma once

#include "app/Observation/Observation.h"
#include "platform/LoginItem.h"

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
    [[nodiscard]] const std::optional<std::string>& message() const { return message_.get(); }

    /// A failure turns it back to how things really are.
    void set(bool on);

    /// Reads how things are, and forgets the message.
    void refresh();

    /// Called when the user has to approve in the desktop's own settings.
    std::function<void()> onApprovalNeeded;

private:
    [[nodiscard]] bool isReallyOn() const;

    LoginItem& item_;
    Observed<bool> isOn_;
    Observed<std::optional<std::string>> message_;
};

} // namespace tarnwick
