#include "platform/bus/NotificationPortal.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/BusText.h"

#include <map>
#include <optional>
#include <random>
#include <tuple>
#include <utility>

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
    callBus<sdbus::Variant>(
        bus_, question, std::tuple(std::string(notificationInterface), std::string("version")),
        lifeline_.guarded([this, answered = std::move(answered)](const std::optional<sdbus::Variant>& reply) {
            const auto version = reply ? valueOf<std::uint32_t>(*reply) : std::nullopt;
            version_ = version.value_or(0);
            answered(version.has_value());
        }));
}

void NotificationPortal::show(const std::string& title, const std::string& body) {
    // One with the same name would replace the earlier one.
    const std::string id = run_ + "-" + std::to_string(++shown_);
    std::map<std::string, sdbus::Variant> notification = {
        {"title", sdbus::Variant(validUtf8(title))},
        {"body", sdbus::Variant(validUtf8(body))},
        {"priority", sdbus::Variant(std::string("normal"))},
    };
    if (version_ >= firstVersionWithSound) {
        notification.emplace("sound", sdbus::Variant(std::string("default")));
    }
    callBus<Done>(
        bus_, call(notificationInterface, "AddNotification"), std::tuple(id, notification),
        [](const std::optional<Done>&) {});
}

} // namespace tarnwick
