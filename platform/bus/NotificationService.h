// Who shows notifications on a session bus, and in which words it is asked to.
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

    /// Finds out whether it is there, starting it if need be, and what it can do. It has so many seconds;
    /// `answered` is told once, or never when the connection is lost.
    virtual void probe(double timeout, std::function<void(bool isThere)> answered) = 0;

    /// Only after it has been found there. Nobody waits for the answer.
    virtual void show(const std::string& title, const std::string& body) = 0;
};

} // namespace tarnwick
