// Keeps what was posted instead of showing it.
#pragma once

#include "platform/NotificationCenter.h"

#include <ostream>
#include <string>
#include <vector>

namespace tarnwick::simulation {

class RecordingNotificationCenter final : public NotificationCenter {
public:
    struct Notification {
        std::string title;
        std::string body;

        friend bool operator==(const Notification&, const Notification&) = default;

        friend std::ostream& operator<<(std::ostream& out, const Notification& notification) {
            return out << notification.title << ": " << notification.body;
        }
    };

    void post(const std::string& title, const std::string& body) override {
        posted_.push_back({title, body});
    }

    /// In the order of posting.
    [[nodiscard]] const std::vector<Notification>& posted() const { return posted_; }

private:
    std::vector<Notification> posted_;
};

} // namespace tarnwick::simulation
