// Shows a notification to the user.
#pragma once

#include <string>

namespace tarnwick {

/// Main thread.
class NotificationCenter {
public:
    /// Whether notifications can be shown.
    enum class Ability {
        unknown, ///< nobody has asked, or the answer is on its way
        yes,
        no, ///< there is nobody who shows them
    };

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;
    virtual ~NotificationCenter() = default;

    /// Each call makes a notification of its own, with the default sound. Fire and forget: nobody learns
    /// whether it was shown, and nothing waits for it.
    virtual void post(const std::string& title, const std::string& body) = 0;

    /// Finds out whether notifications can be shown, for a user who has just switched them on. Whatever comes
    /// out, `post` may be called.
    virtual void requestAuthorization() = 0;

    [[nodiscard]] virtual Ability canNotify() const = 0;
};

} // namespace tarnwick
