#include "platform/dbus/NotificationDaemon.h"

#include "platform/dbus/BusCall.h"
#include "platform/dbus/BusText.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using Hints = std::map<std::string, sdbus::Variant>;

constexpr std::uint32_t replacesNone = 0;
constexpr std::int32_t usualTime = -1;
constexpr std::uint8_t normalUrgency = 1;

Hints hints() {
    return {
        {"desktop-entry", sdbus::Variant(std::string("tarnwick"))},
        // What sound themes have for news of any kind. Daemons without sound ignore it.
        {"sound-name", sdbus::Variant(std::string("message-new-instant"))},
        {"urgency", sdbus::Variant(normalUrgency)},
    };
}

} // namespace

BusConnection::Call NotificationDaemon::call(const char* method) const {
    return {
        .destination = name_,
        .path = "/org/freedesktop/Notifications",
        .interface = "org.freedesktop.Notifications",
        .method = method,
    };
}

void NotificationDaemon::probe(double timeout, std::function<void(bool isThere)> answered) {
    BusConnection::Call question = call("GetCapabilities");
    question.timeout = timeout;
    using Capabilities = std::vector<std::string>;
    callBus<Capabilities>(
        bus_, question, std::tuple<>(),
        lifeline_.guarded(
            [this, answered = std::move(answered)](const std::optional<Capabilities>& capabilities) {
                readsMarkup_ = capabilities && std::ranges::count(*capabilities, "body-markup") > 0;
                answered(capabilities.has_value());
            }));
}

void NotificationDaemon::show(const std::string& title, const std::string& body) {
    const std::string text = validUtf8(body);
    callBus<Done>(
        bus_, call("Notify"),
        std::tuple(
            std::string("Tarnwick"), replacesNone, std::string("tarnwick"), validUtf8(title),
            readsMarkup_ ? asMarkup(text) : text, std::vector<std::string>(), hints(), usualTime),
        [](const std::optional<Done>&) {});
}

} // namespace tarnwick
