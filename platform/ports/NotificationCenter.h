// Shows a notification to the user.
#pragma once

#include <functional>
#include <string>

namespace tarnwick {

/// Main thread.
class NotificationCenter {
public:
    /// Whether notifications can be shown.
    enum class Ability {
        unknown, ///< not asked yet, or the answer is pending
        yes,
        no, ///< no service shows them
    };

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;
    virtual ~NotificationCenter() = default;

    /// Shows a new notification with the default sound. Returns at once and reports no failure.
    virtual void post(const std::string& title, const std::string& body) = 0;

    /// What the notifications to come are about; empty at first, and while none are to come. Of the programs
    /// of this session that notify about the same, one shows them.
    virtual void setSubject(const std::string& subject) = 0;

    /// Finds out whether notifications can be shown; `canNotify` has the answer later. `post` may be called
    /// in either case.
    virtual void requestAuthorization() = 0;

    [[nodiscard]] virtual Ability canNotify() const = 0;

    /// Called when `canNotify` has another answer. Set by the owner.
    std::function<void()> onAbilityChange;
};

} // namespace tarnwick
