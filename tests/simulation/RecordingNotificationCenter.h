// Keeps what was posted, and what it would have shown of it.
#pragma once

#include "platform/ports/NotificationCenter.h"

#include <functional>
#include <ostream>
#include <string>
#include <utility>
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
        if (onPost) {
            onPost();
        }
        answered();
        if (ability_ == Ability::yes) {
            shown_.push_back({title, body});
        }
    }

    void setSubject(const std::string& subject) override { subject_ = subject; }

    void requestAuthorization() override {
        ++requests_;
        answered();
    }

    [[nodiscard]] Ability canNotify() const override { return ability_; }

    /// The answer to a request for authorization. Unless it is "yes", posts are dropped.
    Ability answer = Ability::yes;

    /// Called in the middle of each post.
    std::function<void()> onPost;

    [[nodiscard]] const std::string& subject() const { return subject_; }

    [[nodiscard]] int requests() const { return requests_; }

    /// In the order of posting.
    [[nodiscard]] const std::vector<Notification>& posted() const { return posted_; }

    /// Those of them that were not dropped.
    [[nodiscard]] const std::vector<Notification>& shown() const { return shown_; }

private:
    void answered() {
        if (std::exchange(ability_, answer) != answer && onAbilityChange) {
            onAbilityChange();
        }
    }

    std::vector<Notification> posted_;
    std::vector<Notification> shown_;
    std::string subject_;
    Ability ability_ = Ability::unknown;
    int requests_ = 0;
};

} // namespace tarnwick::simulation
