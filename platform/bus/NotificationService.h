// A service on the session bus that shows notifications: the notification daemon or the portal.
#pragma once

#include <functional>
#include <string>

namespace tarnwick {

/// Used while the bus is connected. Main thread.
class NotificationService {
public:
    NotificationService() = default;
    NotificationService(const NotificationService&) = delete;
    NotificationService& operator=(const NotificationService&) = delete;
    virtual ~NotificationService() = default;

    [[nodiscard]] virtual const std::string& busName() const = 0;

    /// Finds out whether it is there, which may start it, and what it can do. `timeout` in seconds;
    /// `answered` is told once; when the connection is lost, that the service is not there.
    virtual void probe(double timeout, std::function<void(bool isThere)> answered) = 0;

    /// Only after a successful probe. The service's answer is ignored.
    virtual void show(const std::string& title, const std::string& body) = 0;
};

} // namespace tarnwick
