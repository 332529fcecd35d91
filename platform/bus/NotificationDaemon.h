// The desktop's notification daemon.
#pragma once

#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"
#include "platform/bus/NotificationService.h"

#include <filesystem>

namespace tarnwick {

class NotificationDaemon final : public NotificationService {
public:
    /// `bus` is the session's and outlives it. `iconFolder` may be empty; see DesktopNotificationCenter.
    NotificationDaemon(BusConnection& bus, const std::filesystem::path& iconFolder);

    [[nodiscard]] const std::string& busName() const override { return name_; }

    void probe(double timeout, std::function<void(bool isThere)> answered) override;
    void show(const std::string& title, const std::string& body) override;

private:
    [[nodiscard]] BusConnection::Call call(const char* method) const;

    [[nodiscard]] std::string icon() const;

    BusConnection& bus_;
    std::filesystem::path iconFile_;
    std::string name_ = "org.freedesktop.Notifications";
    bool readsMarkup_ = false; ///< in bodies
    Lifeline lifeline_;
};

} // namespace tarnwick
