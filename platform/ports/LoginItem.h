// Whether the program starts with the user's session.
#pragma once

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
};

} // namespace tarnwick
