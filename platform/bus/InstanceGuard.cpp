#include "platform/bus/InstanceGuard.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/BusText.h"

#include <sdbus-c++/sdbus-c++.h>

#include <cstdlib>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

constexpr const char* objectPath = "/org/tarnwick/Tarnwick";
constexpr const char* interface = "org.freedesktop.Application";
constexpr const char* tokenKey = "activation-token";
constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN";

using PlatformData = std::map<std::string, sdbus::Variant>;

PlatformData platformData(const std::string& activationToken) {
    PlatformData data;
    if (!activationToken.empty()) {
        data.emplace(tokenKey, sdbus::Variant(validUtf8(activationToken)));
    }
    return data;
}

std::string activationToken(const PlatformData& data) {
    const auto token = data.find(tokenKey);
    return token == data.end() ? std::string() : valueOf<std::string>(token->second).value_or("");
}

} // namespace

/// The object on one connection.
class InstanceGuard::Exported {
public:
    explicit Exported(InstanceGuard& guard)
        : object_(sdbus::createObject(*guard.bus_.connection(), objectPath)) {
        object_->registerMethod("Activate")
            .onInterface(interface)
            .withInputParamNames("platform_data")
            .implementedAs([&guard](const PlatformData& data) {
                // The other program gets its answer first.
                guard.loop_.post(guard.lifeline_.guarded([&guard, token = activationToken(data)] {
                    if (guard.onActivate) {
                        guard.onActivate(token);
                    }
                }));
            });
        // There are no files to open and no actions.
        object_->registerMethod("Open")
            .onInterface(interface)
            .withInputParamNames("uris", "platform_data")
            .implementedAs([](const std::vector<std::string>&, const PlatformData&) {});
        object_->registerMethod("ActivateAction")
            .onInterface(interface)
            .withInputParamNames("action_name", "parameter", "platform_data")
            .implementedAs(
                [](const std::string&, const std::vector<sdbus::Variant>&, const PlatformData&) {});
        object_->finishRegistration();
    }

private:
    std::unique_ptr<sdbus::IObject> object_;
};

std::string InstanceGuard::takeActivationToken() {
    const char* const value = std::getenv(tokenVariable);
    std::string token = value == nullptr ? "" : value;
    unsetenv(tokenVariable);
    return token;
}

InstanceGuard::InstanceGuard(
    RunLoop& loop, BusConnection& bus, std::string activationToken, std::function<void(Result)> decided)
    : loop_(loop),
      bus_(bus),
      activationToken_(std::move(activationToken)),
      decided_(std::move(decided)),
      busTimer_(loop.after(patience, [this] { decide(Result::noBus); })) {
    stateSubscription_ = bus_.onStateChange([this](BusConnection::State) { busChanged(); });
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
    }
    if (bus_.state() != BusConnection::State::connected) {
        return;
    }
    // There before the name is: who finds the name taken calls at once.
    if (!attempt([this] { exported_ = std::make_unique<Exported>(*this); })) {
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
        if (hasAskedOther_) {
            decide(Result::anotherIsSilent);
        } else {
            activateOther();
        }
    }
    // Of two that found no bus at their starts both go on when it comes.
}

void InstanceGuard::activateOther() {
    // From now on it is the other program's time that counts.
    busTimer_.reset();
    hasAskedOther_ = true;
    callBus<Done>(
        bus_,
        {
            .destination = name,
            .path = objectPath,
            .interface = interface,
            .method = "Activate",
            .timeout = patience,
        },
        std::tuple(platformData(activationToken_)),
        lifeline_.guarded([this](const std::optional<Done>& answer) { otherAnswered(answer.has_value()); }));
}

void InstanceGuard::otherAnswered(bool isWell) {
    if (isWell) {
        decide(Result::anotherRuns);
    } else {
        // It may have come to its end meanwhile, and left the name to this one.
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
