#include "platform/bus/NotificationDaemon.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/BusText.h"
#include "platform/ports/ApplicationId.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

using Hints = std::map<std::string, std::variant<std::string, std::uint8_t>>;

constexpr std::uint32_t replacesNone = 0;
constexpr std::int32_t usualTime = -1;
constexpr std::uint8_t normalUrgency = 1;

Hints hints() {
    return {
        {"desktop-entry", applicationId},
        // A name of the sound theme for news of any kind. Daemons without sound ignore it.
        {"sound-name", "message-new-instant"},
        {"urgency", normalUrgency},
    };
}

bool isUnreserved(unsigned char character) {
    constexpr std::string_view marks = "/-._~";
    const bool isAscii = character < 0x80;
    return (isAscii && std::isalnum(character) != 0)
           || marks.find(static_cast<char>(character)) != std::string_view::npos;
}

std::string fileUri(const std::string& path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string uri = "file://";
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (isUnreserved(byte)) {
            uri += character;
        } else {
            uri += {'%', digits[byte / 16], digits[byte % 16]};
        }
    }
    return uri;
}

} // namespace

NotificationDaemon::NotificationDaemon(BusConnection& bus, const std::filesystem::path& iconFolder)
    : bus_(bus), iconFile_(iconFolder / "hicolor/scalable/apps" / (std::string(applicationId) + ".svg")) {
}

/// The icon's file if it exists, else its name: some daemons look names up in other themes only.
std::string NotificationDaemon::icon() const {
    std::error_code ignored;
    return iconFile_.is_absolute() && std::filesystem::is_regular_file(iconFile_, ignored)
               ? fileUri(iconFile_.native())
               : applicationId;
}

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
    tellBus(
        bus_, call("Notify"),
        std::tuple(
            std::string("Tarnwick"), replacesNone, icon(), title, readsMarkup_ ? asMarkup(body) : body,
            std::vector<std::string>(), hints(), usualTime));
}

} // namespace tarnwick
