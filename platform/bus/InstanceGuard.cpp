#include "platform/bus/InstanceGuard.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/BusObject.h"

#include <array>
#include <cstdlib>
#include <map>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

constexpr const char* objectPath = "/org/tarnwick/Tarnwick";
constexpr const char* applicationInterface = "org.freedesktop.Application";
constexpr const char* tokenKey = "activation-token";

/// The names of actions on the bus. `Request::show` has a method of its own.
constexpr std::array<std::pair<const char*, InstanceGuard::Request>, 4> actions{{
    {"settings", InstanceGuard::Request::settings},
    {"outages", InstanceGuard::Request::outages},
    {"pause", InstanceGuard::Request::pause},
    {"quit", InstanceGuard::Request::quit},
}};

/// Only texts are read.
using PlatformData = std::map<std::string, std::variant<std::monostate, std::string>>;

/// The parameter of an action: seconds of a pause, or something of another type, which is not read.
using Parameter = std::variant<std::monostate, std::int32_t>;

PlatformData platformData(const std::string& activationToken) {
    PlatformData data;
    if (!activationToken.empty()) {
        data.emplace(tokenKey, activationToken);
    }
    return data;
}

/// The value of a variable, which is removed from the environment; empty without one.
std::string taken(const char* variable) {
    const char* const value = std::getenv(variable);
    std::string text = value != nullptr ? value : "";
    ::unsetenv(variable);
    return text;
}

std::string activationToken(const PlatformData& data) {
    const auto found = data.find(tokenKey);
    const auto* const token = found == data.end() ? nullptr : std::get_if<std::string>(&found->second);
    return token == nullptr ? std::string() : *token;
}

std::optional<std::int32_t> pauseLengthIn(const std::vector<Parameter>& parameter) {
    const auto* const seconds = parameter.empty() ? nullptr : std::get_if<std::int32_t>(&parameter.front());
    return seconds == nullptr ? std::nullopt : std::optional(*seconds);
}

} // namespace

/// The object on one connection.
class InstanceGuard::Exported {
public:
    explicit Exported(InstanceGuard& guard) : object_(*guard.bus_.link(), objectPath, applicationInterface) {
        object_.method("Activate", {"platform_data"}, {}, [&guard](const PlatformData& data) {
            passOn(guard, {.request = Request::show, .activationToken = activationToken(data)});
        });
        // There are no files to open.
        object_.method(
            "Open", {"uris", "platform_data"}, {},
            [](const std::vector<std::string>&, const PlatformData&) {});
        object_.method(
            "ActivateAction", {"action_name", "parameter", "platform_data"}, {},
            [&guard](
                const std::string& name, const std::vector<Parameter>& parameter, const PlatformData& data) {
                const auto seconds = pauseLengthIn(parameter);
                for (const auto& [action, request] : actions) {
                    if (name == action && (request != Request::pause || seconds)) {
                        passOn(
                            guard, {.request = request,
                                    .activationToken = activationToken(data),
                                    .pauseSeconds = seconds.value_or(0)});
                    }
                }
            });
    }

    [[nodiscard]] bool publish() { return object_.publish(); }

private:
    static void passOn(InstanceGuard& guard, const Start& asked) {
        // The other program gets its answer first.
        guard.loop_.post(guard.lifeline_.guarded([&guard, asked] {
            if (guard.onRequest) {
                guard.onRequest(asked);
            }
        }));
    }

    BusObject object_;
};

InstanceGuard::LaunchTokens InstanceGuard::takeLaunchTokens() {
    LaunchTokens tokens{.activation = taken("XDG_ACTIVATION_TOKEN"), .startup = taken("DESKTOP_STARTUP_ID")};
    if (tokens.activation.empty()) {
        // Some launchers hand over this one alone. It serves on Wayland too.
        tokens.activation = tokens.startup;
    }
    return tokens;
}

InstanceGuard::InstanceGuard(
    RunLoop& loop, BusConnection& bus, Start start, std::function<void(Result)> decided)
    : loop_(loop),
      bus_(bus),
      start_(std::move(start)),
      decided_(std::move(decided)),
      busTimer_(loop.after(patience, [this] { decide(Result::noBus); })) {
    stateSubscription_ = bus_.onStateChange([this] { busChanged(); });
    loop_.post(lifeline_.guarded([this] {
        if (!exported_) {
            busChanged();
        }
    }));
}

InstanceGuard::~InstanceGuard() = default;

void InstanceGuard::busChanged() {
    exported_.reset();
    if (bus_.state() == BusConnection::State::unavailable) {
        decide(Result::noBus);
        return;
    }
    if (bus_.state() != BusConnection::State::connected) {
        return;
    }
    // The object comes before the name: a second start that finds the name taken calls at once.
    exported_ = std::make_unique<Exported>(*this);
    if (!exported_->publish()) {
        decide(Result::noBus);
        return;
    }
    requestName(bus_, name, lifeline_.guarded([this](std::optional<bool> isOurs) { nameDecided(isOurs); }));
}

void InstanceGuard::nameDecided(std::optional<bool> isOurs) {
    if (!isOurs) {
        decide(Result::noBus);
    } else if (*isOurs) {
        decide(Result::first);
    } else if (decided_ && bus_.state() == BusConnection::State::connected) {
        if (start_.request == Request::nothing) {
            decide(Result::anotherRuns);
        } else if (hasAskedOther_) {
            decide(Result::anotherIsSilent);
        } else {
            askOther();
        }
    }
    // Otherwise nothing: two programs that were started without a bus both go on when it comes.
}

void InstanceGuard::askOther() {
    // The bus has answered: from now on the call's own timeout counts.
    busTimer_.reset();
    hasAskedOther_ = true;
    const auto call = [this](const char* method, const auto& arguments) {
        callBus<NoResult>(
            bus_,
            {
                .destination = name,
                .path = objectPath,
                .interface = applicationInterface,
                .method = method,
                .timeout = patience,
            },
            arguments, lifeline_.guarded([this](const std::optional<NoResult>& answer) {
                otherAnswered(answer.has_value());
            }));
    };
    const PlatformData data = platformData(start_.activationToken);
    for (const auto& [action, request] : actions) {
        if (request == start_.request) {
            std::vector<Parameter> parameter;
            if (request == Request::pause) {
                parameter.emplace_back(start_.pauseSeconds);
            }
            call("ActivateAction", std::tuple(std::string(action), parameter, data));
            return;
        }
    }
    call("Activate", std::tuple(data));
}

void InstanceGuard::otherAnswered(bool hasTaken) {
    if (hasTaken) {
        decide(Result::anotherRuns);
    } else {
        // It may have ended in between, and the name may be free.
        requestName(
            bus_, name, lifeline_.guarded([this](std::optional<bool> isOurs) { nameDecided(isOurs); }));
    }
}

void InstanceGuard::decide(Result result) {
    busTimer_.reset();
    if (const auto decided = std::exchange(decided_, nullptr)) {
        decided(result);
    }
}

} // namespace tarnwick
