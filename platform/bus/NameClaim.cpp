#include "platform/bus/NameClaim.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/NameWatch.h"

#include <cstdint>
#include <tuple>
#include <utility>

namespace tarnwick {

NameClaim::NameClaim(BusConnection& bus, std::string name, Rank rank)
    : bus_(bus), name_(std::move(name)), rank_(rank) {
    // Asked first, so that the watch's first answer takes this request into account.
    stateSubscription_ = bus_.onStateChange([this] { ask(); });
    ask();
    ownerWatch_ = watchName(bus_, name_, [this](const std::string& owner, NameNews /*news*/) {
        isAnothers_ = !owner.empty() && owner != bus_.uniqueName();
    });
}

NameClaim::~NameClaim() {
    if (bus_.state() == BusConnection::State::connected) {
        callBus<std::uint32_t>(
            bus_, daemonCall("ReleaseName"), std::tuple(name_), [](const std::optional<std::uint32_t>&) {});
    }
}

void NameClaim::ask() {
    if (bus_.state() != BusConnection::State::connected) {
        return;
    }
    static constexpr std::uint32_t allowReplacement = 1;
    static constexpr std::uint32_t replaceExisting = 2;
    // The watch reports whether it succeeded.
    callBus<std::uint32_t>(
        bus_, daemonCall("RequestName"),
        std::tuple(name_, rank_ == Rank::first ? replaceExisting : allowReplacement),
        [](const std::optional<std::uint32_t>&) {});
}

} // namespace tarnwick
