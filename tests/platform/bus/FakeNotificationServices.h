// Services that show notifications, played by a test: the notification daemon and the portal.
#pragma once

#include "tests/platform/bus/BusPeer.h"

#include "platform/bus/BusObject.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

namespace tarnwick {

using Hints = std::map<std::string, std::variant<std::monostate, std::string, std::uint8_t>>;

/// What both services have in common.
class FakeNotificationService {
public:
    explicit FakeNotificationService(BusPeer& peer) : peer_(peer) {}

    FakeNotificationService(const FakeNotificationService&) = delete;
    FakeNotificationService& operator=(const FakeNotificationService&) = delete;

    [[nodiscard]] BusPeer& peer() { return peer_; }

    /// How often it was asked what it can do.
    [[nodiscard]] int questions() const { return questions_; }

    /// It is there, but not allowed or not willing to show anything.
    bool refuses = false;

    [[nodiscard]] int refusals() const { return refusals_; }

protected:
    ~FakeNotificationService() = default;

    void countQuestion() { ++questions_; }

    [[nodiscard]] std::optional<BusError> refusal() {
        if (!refuses) {
            return std::nullopt;
        }
        ++refusals_;
        return BusError{.name = "org.freedesktop.DBus.Error.AccessDenied", .text = "not allowed"};
    }

private:
    BusPeer& peer_;
    int questions_ = 0;
    int refusals_ = 0;
};

class FakeNotificationDaemon final : public FakeNotificationService {
public:
    struct Notification {
        std::string application;
        std::uint32_t replaces = 0;
        std::string icon;
        std::string title;
        std::string body;
        std::vector<std::string> actions;
        Hints hints;
        std::int32_t expires = 0;
    };

    explicit FakeNotificationDaemon(
        BusPeer& peer, std::vector<std::string> capabilities = {"body", "actions", "icon-static"})
        : FakeNotificationService(peer), object_(peer.link(), "/org/freedesktop/Notifications", name) {
        object_.method("GetCapabilities", {}, {}, [this, capabilities] {
            countQuestion();
            return capabilities;
        });
        object_.method(
            "Notify", {}, {},
            [this](
                const std::string& application, std::uint32_t replaces, const std::string& icon,
                const std::string& title, const std::string& body, const std::vector<std::string>& actions,
                const Hints& hints, std::int32_t expires) -> BusOutcome<std::uint32_t> {
                if (const auto error = refusal()) {
                    return *error;
                }
                shown_.push_back({application, replaces, icon, title, body, actions, hints, expires});
                return static_cast<std::uint32_t>(shown_.size());
            });
        EXPECT_TRUE(object_.publish());
        peer.requestName(name);
    }

    [[nodiscard]] const std::vector<Notification>& shown() const { return shown_; }

    static constexpr const char* name = "org.freedesktop.Notifications";

private:
    BusObject object_;
    std::vector<Notification> shown_;
};

class FakeNotificationPortal final : public FakeNotificationService {
public:
    struct Notification {
        std::string id;
        Hints content;
        std::string title;
        std::string body;
    };

    explicit FakeNotificationPortal(BusPeer& peer, std::uint32_t version = 2)
        : FakeNotificationService(peer), object_(peer.link(), "/org/freedesktop/portal/desktop", interface) {
        object_.method(
            "AddNotification", {}, {},
            [this](const std::string& id, const Hints& content) -> BusOutcome<NoResult> {
                if (const auto error = refusal()) {
                    return *error;
                }
                shown_.push_back({id, content, text(content, "title"), text(content, "body")});
                return NoResult();
            });
        object_.property("version", [this, version] {
            countQuestion();
            return version;
        });
        EXPECT_TRUE(object_.publish());
        peer.requestName(name);
    }

    [[nodiscard]] const std::vector<Notification>& shown() const { return shown_; }

    static constexpr const char* name = "org.freedesktop.portal.Desktop";

private:
    static constexpr const char* interface = "org.freedesktop.portal.Notification";

    [[nodiscard]] static std::string text(const Hints& content, const std::string& key) {
        return std::get<std::string>(content.at(key));
    }

    BusObject object_;
    std::vector<Notification> shown_;
};

} // namespace tarnwick
