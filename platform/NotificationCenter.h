// Shows a notification to the user.
#pragma once

#include <string>

namespace tarnwick {

/// Fire and forget: nobody learns whether it was shown, and nothing waits for it. Main thread.
class NotificationCenter {
public:
    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;
    virtual ~NotificationCenter() = default;

    /// Each call makes a notification of its own, with the default sound.
    virtual void post(const std::string& title, const std::string& body) = 0;
};

} // namespace tarnwick
