#include "platform/bus/NotificationPortal.h"

#include "platform/bus/BusCall.h"

#include <map>
#include <optional>
#include <random>
#include <tuple>
#include <utility>
#include <variant>

namespace tarnwick {

namespace {

constexpr const char* notificationInterface = "org.freedesktop.portal.Notification";
constexpr std::uint32_t firstVersionWithSound = 2;

std::string randomText() {
    std::random_device source;
    return std::to_string(source()) + "-" + std::to_string(source());
}

} // namespace

NotificationPortal::NotificationPortal(BusConnection& bus) : bus_(bus), run_(randomText()) {
}

BusConnection::Call NotificationPortal::call(const char* interface, const char* method) const {
    return {
        .destination = name_,
        .path = "/org/freedesktop/portal/desktop",
        .interface = interface,
        .method = method,
    };
}

void NotificationPortal::probe(double timeout, std::function<void(bool isThere)> answered) {
    BusConnection::Call question = call("org.freedesktop.DBus.Properties", "Get");
    question.timeout = timeout;
    using Version = std::variant<std::uint32_t>;
    callBus<Version>(
        bus_, question, std::tuple(std::string(notificationInterface), std::string("version")),
        lifeline_.guarded([this, answered = std::move(answered)](const std::optional<Version>& version) {
            version_ = version ? std::get<std::uint32_t>(*version) : 0;
            answered(version.has_value());
        }));
}

void NotificationPortal::show(const std::string& title, const std::string& body) {
    // A notification with the id of an earlier one would replace that one.
    const std::string id = run_ + "-" + std::to_string(++shown_);
    std::map<std::string, std::variant<std::string>> notification = {
        {"title", title},
        {"body", body},
        {"priority", "normal"},
    };
    if (version_ >= firstVersionWithSound) {
        notification.emplace("sound", "default");
    }
    tellBus(bus_, call(notificationInterface, "AddNotification"), std::tuple(id, notification));
}

} // namespace tarnwick
