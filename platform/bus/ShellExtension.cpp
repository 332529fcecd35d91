#include "platform/bus/ShellExtension.h"

#include "platform/bus/BusCall.h"

#include <charconv>
#include <map>
#include <tuple>
#include <utility>
#include <variant>

namespace tarnwick {

namespace {

constexpr const char* interface = "org.gnome.Shell.Extensions";

/// From this version on the shell loads extensions in another way.
constexpr int firstWithModules = 45;

// Of an extension: off since it was switched off, or since the login.
constexpr double inactive = 2;
constexpr double initialized = 6;

using VersionReply = std::variant<std::monostate, std::string>;
using Properties = std::map<std::string, std::variant<std::monostate, double>>;

BusConnection::Call shellCall(const char* interfaceOfMethod, const char* method) {
    return {
        .destination = "org.gnome.Shell",
        .path = "/org/gnome/Shell",
        .interface = interfaceOfMethod,
        .method = method,
    };
}

/// 43 for "43.9", 0 for no version.
int majorOf(const VersionReply& version) {
    int major = 0;
    if (const auto* const text = std::get_if<std::string>(&version)) {
        std::from_chars(text->data(), text->data() + text->size(), major);
    }
    return major;
}

bool isOff(const Properties& extension) {
    const auto state = extension.find("state");
    const auto* const value = state != extension.end() ? std::get_if<double>(&state->second) : nullptr;
    return value != nullptr && (*value == inactive || *value == initialized);
}

} // namespace

ShellExtension::ShellExtension(BusConnection& bus) : bus_(bus) {
}

void ShellExtension::askWhetherOff(std::function<void(bool isOff)> answered) {
    callBus<VersionReply>(
        bus_, shellCall("org.freedesktop.DBus.Properties", "Get"),
        std::tuple(std::string(interface), std::string("ShellVersion")),
        lifeline_.guarded([this, answered = std::move(answered)](const std::optional<VersionReply>& version) {
            const int major = version ? majorOf(*version) : 0;
            if (major == 0) {
                answered(false);
                return;
            }
            uuid_ = major >= firstWithModules ? "item-place@tarnwick.org" : "item-place-43@tarnwick.org";
            askForState(answered);
        }));
}

void ShellExtension::askForState(const std::function<void(bool)>& answered) {
    callBus<Properties>(
        bus_, shellCall(interface, "GetExtensionInfo"), std::tuple(uuid_),
        lifeline_.guarded([answered](const std::optional<Properties>& extension) {
            answered(extension && isOff(*extension));
        }));
}

void ShellExtension::switchOn(std::function<void(bool isOn)> answered) {
    callBus<bool>(
        bus_, shellCall(interface, "EnableExtension"), std::tuple(uuid_),
        lifeline_.guarded([answered = std::move(answered)](const std::optional<bool>& isOn) {
            answered(isOn.value_or(false));
        }));
}

} // namespace tarnwick
