// Whether the program starts with the user's session.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

/// Main thread.
class LoginItem {
public:
    enum class Status {
        notRegistered,
        enabled,
        requiresApproval, ///< registered, but switched off by the desktop
    };

    LoginItem() = default;
    LoginItem(const LoginItem&) = delete;
    LoginItem& operator=(const LoginItem&) = delete;
    virtual ~LoginItem() = default;

    [[nodiscard]] virtual Status status() const = 0;
    /// Nothing on success, else the reason for the user.
    [[nodiscard]] virtual std::optional<std::string> enroll() = 0;
    [[nodiscard]] virtual std::optional<std::string> withdraw() = 0;

    /// Called when a desktop that had to be asked has answered. The failure is for the user, and empty when
    /// the desktop agreed.
    std::function<void(const std::string& failure)> onAnswer;
};

} // namespace tarnwick
