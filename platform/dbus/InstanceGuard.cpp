#include "platform/dbus/InstanceGuard.h"

#include "platform/dbus/BusCall.h"
#include "platform/dbus/BusText.h"

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

using PlatformData = std::map<std::string, sdbus::Variant>;

/// What the desktop has given to this start passes to the program that shows itself in its place.
PlatformData platformData() {
    PlatformData data;
    if (const char* token = std::getenv("XDG_ACTIVATION_TOKEN"); token != nullptr) {
        data.emplace(tokenKey, sdbus::Variant(validUtf8(token)));
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

InstanceGuard::InstanceGuard(RunLoop& loop, BusConnection& bus, std::function<void(Result)> decided)
    : loop_(loop),
      bus_(bus),
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
    requestName(bus_, name, lifeline_.guarded([this](bool isOurs) { nameDecided(isOurs); }));
}

void InstanceGuard::nameDecided(bool isOurs) {
    if (isOurs) {
        decide(Result::first);
    } else if (decided_ && bus_.state() == BusConnection::State::connected) {
        activateOther();
    }
    // Of two that found no bus at their starts both go on when it comes.
}

void InstanceGuard::activateOther() {
    // From now on it is the other program's time that counts.
    busTimer_.reset();
    callBus<Done>(
        bus_,
        {
            .destination = name,
            .path = objectPath,
            .interface = interface,
            .method = "Activate",
            .timeout = patience,
        },
        std::tuple(platformData()),
        lifeline_.guarded([this](const std::optional<Done>&) { decide(Result::anotherRuns); }));
}

void InstanceGuard::decide(Result result) {
    busTimer_.reset();
    if (const auto decided = std::exchange(decided_, nullptr)) {
        decided(result);
    }
}

} // namespace tarnwick
