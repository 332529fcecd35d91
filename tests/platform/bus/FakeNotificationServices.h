// Who shows notifications, played by a test: the notification daemon and the portal.
#pragma once

#include "tests/platform/bus/BusPeer.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

using Hints = std::map<std::string, sdbus::Variant>;

/// What a service that is there, but not allowed or not willing to show anything, answers.
class Refusals {
public:
    void refuseFromNowOn() { refuses_ = true; }

    void accept() { refuses_ = false; }

    [[nodiscard]] int count() const { return count_; }

    void refuseIfTold() {
        if (refuses_) {
            ++count_;
            throw sdbus::Error("org.freedesktop.DBus.Error.AccessDenied", "not allowed");
        }
    }

private:
    bool refuses_ = false;
    int count_ = 0;
};

class FakeNotificationDaemon {
public:
    struct Notification {
        std::string application;
        std::uint32_t replaces = 0;
        std::string icon;
        std::string summary;
        std::string body;
        std::vector<std::string> actions;
        Hints hints;
        std::int32_t expires = 0;
    };

    explicit FakeNotificationDaemon(
        BusPeer& peer, std::vector<std::string> capabilities = {"body", "actions", "icon-static"})
        : peer_(peer), capabilities_(std::move(capabilities)) {
        object_ = sdbus::createObject(peer_.connection(), "/org/freedesktop/Notifications");
        object_->registerMethod("GetCapabilities").onInterface(name).implementedAs([this] {
            ++questions_;
            return capabilities_;
        });
        object_->registerMethod("Notify").onInterface(name).implementedAs(
            [this](
                const std::string& application, std::uint32_t replaces, const std::string& icon,
                const std::string& summary, const std::string& body, const std::vector<std::string>& actions,
                const Hints& hints, std::int32_t expires) {
                refusals_.refuseIfTold();
                shown_.push_back({application, replaces, icon, summary, body, actions, hints, expires});
                return static_cast<std::uint32_t>(shown_.size());
            });
        object_->finishRegistration();
        peer_.connection().requestName(name);
    }

    [[nodiscard]] const std::vector<Notification>& shown() const { return shown_; }

    [[nodiscard]] int questions() const { return questions_; }

    [[nodiscard]] Refusals& refusals() { return refusals_; }

    [[nodiscard]] BusPeer& peer() { return peer_; }

    static constexpr const char* name = "org.freedesktop.Notifications";

private:
    BusPeer& peer_;
    std::vector<std::string> capabilities_;
    std::unique_ptr<sdbus::IObject> object_;
    std::vector<Notification> shown_;
    Refusals refusals_;
    int questions_ = 0;
};

class FakeNotificationPortal {
public:
    struct Notification {
        std::string id;
        Hints content;
    };

    explicit FakeNotificationPortal(BusPeer& peer, std::uint32_t version = 1) : peer_(peer) {
        object_ = sdbus::createObject(peer_.connection(), "/org/freedesktop/portal/desktop");
        object_->registerMethod("AddNotification")
            .onInterface(interface)
            .implementedAs([this](const std::string& id, const Hints& content) {
                refusals_.refuseIfTold();
                shown_.push_back({id, content});
            });
        object_->registerProperty("version").onInterface(interface).withGetter([version] { return version; });
        object_->finishRegistration();
        peer_.connection().requestName(name);
    }

    [[nodiscard]] const std::vector<Notification>& shown() const { return shown_; }

    [[nodiscard]] Refusals& refusals() { return refusals_; }

    [[nodiscard]] BusPeer& peer() { return peer_; }

    static constexpr const char* name = "org.freedesktop.portal.Desktop";

private:
    static constexpr const char* interface = "org.freedesktop.portal.Notification";

    BusPeer& peer_;
    std::unique_ptr<sdbus::IObject> object_;
    std::vector<Notification> shown_;
    Refusals refusals_;
};

} // namespace tarnwick
