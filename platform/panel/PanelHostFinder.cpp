#include "platform/panel/PanelHostFinder.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/NameWatch.h"

#include <cstdint>
#include <tuple>
#include <utility>
#include <variant>

namespace tarnwick {

namespace {

constexpr std::string_view hostPrefix = "org.kde.StatusNotifierHost-";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

/// Of another type where the watcher does not know the property.
using Registered = std::variant<std::monostate, bool>;

bool isOfInterest(const std::string& name) {
    return name == PanelHostFinder::watcherName || name.starts_with(hostPrefix);
}

} // namespace

PanelHostFinder::PanelHostFinder(BusConnection& bus, ProcessNames processNames, double retryDelay)
    : bus_(bus), processNames_(std::move(processNames)), retryDelay_(retryDelay), host_(&panelHost("")) {
    stateSubscription_ = bus_.onStateChange([this] { busChanged(); });
    ownerMatch_ = bus_.addMatch(nameChangeRule("org.kde", "arg0namespace"), [this](BusMessage& message) {
        if (const auto change = nameChange(message); change && isOfInterest(change->name)) {
            setOwner(change->name, change->owner);
        }
    });
    hostMatch_ = bus_.addMatch(
        std::string("type='signal',interface='") + watcherName + "',path='" + watcherPath + "'",
        [this](BusMessage& message) {
            const bool isAboutHosts = message.member() == "StatusNotifierHostRegistered"
                                      || message.member() == "StatusNotifierHostUnregistered";
            if (isAboutHosts && message.sender() == watcherOwner()) {
                askForHost();
            }
        });
    if (bus_.state() == BusConnection::State::connected) {
        lookAround();
    }
}

std::string PanelHostFinder::watcherOwner() const {
    const auto owner = owners_.find(watcherName);
    return owner == owners_.end() ? std::string() : owner->second.uniqueName;
}

std::string PanelHostFinder::watcher() const {
    // Some panels have a name and are not known to the watcher yet.
    const bool hasNamedHost = owners_.size() > owners_.count(watcherName);
    return isShownByHost_ || hasNamedHost ? watcherOwner() : std::string();
}

void PanelHostFinder::askForHost() {
    callBus<Registered>(
        bus_,
        {
            .destination = watcherOwner(),
            .path = watcherPath,
            .interface = "org.freedesktop.DBus.Properties",
            .method = "Get",
        },
        std::tuple(std::string(watcherName), std::string("IsStatusNotifierHostRegistered")),
        lifeline_.guarded([this, asked = watcherOwner()](const std::optional<Registered>& answer) {
            if (asked == watcherOwner()) {
                // A watcher that can't tell has a panel: most are panels themselves.
                const auto* const isShown = answer ? std::get_if<bool>(&*answer) : nullptr;
                setShownByHost(isShown == nullptr || *isShown);
            }
        }));
}

void PanelHostFinder::setShownByHost(bool isShown) {
    isShownByHost_ = isShown;
    decide();
}

void PanelHostFinder::busChanged() {
    owners_.clear();
    isShownByHost_ = false;
    retry_.reset();
    if (bus_.state() == BusConnection::State::connected) {
        lookAround();
    } else {
        decide();
    }
}

/// Asks the bus daemon. When it fails to answer, the whole look around is repeated later.
template<typename Result, typename... Arguments, typename Answered>
void PanelHostFinder::ask(const char* method, const std::tuple<Arguments...>& arguments, Answered answered) {
    askBus<Result>(
        bus_, daemonCall(method), arguments,
        lifeline_.guarded([this, answered = std::move(answered)](const BusReply<Result>& reply) {
            if (reply.result) {
                answered(*reply.result);
            } else if (reply.error != BusError::nameHasNoOwner) {
                lookAgainLater();
            }
        }));
}

void PanelHostFinder::lookAgainLater() {
    if (!retry_ && bus_.state() == BusConnection::State::connected) {
        retry_ = bus_.loop().after(retryDelay_, [this] { lookAround(); });
    }
}

void PanelHostFinder::lookAround() {
    retry_.reset();
    ask<std::vector<std::string>>(
        "ListNames", std::tuple(), [this](const std::vector<std::string>& names) { namesListed(names); });
}

void PanelHostFinder::namesListed(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (isOfInterest(name)) {
            ask<std::string>("GetNameOwner", std::tuple(name), [this, name](const std::string& uniqueName) {
                setOwner(name, uniqueName);
            });
        }
    }
}

void PanelHostFinder::setOwner(const std::string& name, const std::string& uniqueName) {
    const auto known = owners_.find(name);
    if (known != owners_.end() && known->second.uniqueName == uniqueName) {
        if (known->second.process.empty()) {
            askProcess(name, uniqueName);
        }
        return;
    }
    if (uniqueName.empty()) {
        owners_.erase(name);
    } else {
        owners_.insert_or_assign(name, Owner{.uniqueName = uniqueName});
        askProcess(name, uniqueName);
    }
    if (name == watcherName) {
        isShownByHost_ = false;
    }
    if (!watcherOwner().empty()) {
        askForHost();
    }
    decide();
}

void PanelHostFinder::askProcess(const std::string& name, const std::string& uniqueName) {
    ask<std::uint32_t>(
        "GetConnectionUnixProcessID", std::tuple(uniqueName), [this, name, uniqueName](std::uint32_t pid) {
            const auto owner = owners_.find(name);
            if (owner != owners_.end() && owner->second.uniqueName == uniqueName) {
                owner->second.process = panelProcess(processNames_(pid));
                decide();
            }
        });
}

void PanelHostFinder::decide() {
    std::vector<std::string> hosts;
    std::string watcherProcess;
    for (const auto& [name, owner] : owners_) {
        if (name == watcherName) {
            watcherProcess = owner.process;
        } else {
            hosts.push_back(owner.process);
        }
    }
    const PanelHost* host = &panelHost(hosts, watcherProcess);
    if (host == host_ && watcher() == decidedWatcher_) {
        return;
    }
    host_ = host;
    decidedWatcher_ = watcher();
    if (onChange) {
        onChange();
    }
}

} // namespace tarnwick
