#include "platform/panel/PanelHostFinder.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/NameWatch.h"

#include <cstdint>
#include <tuple>
#include <utility>

namespace tarnwick {

namespace {

constexpr std::string_view hostPrefix = "org.kde.StatusNotifierHost-";

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
    if (bus_.state() == BusConnection::State::connected) {
        lookAround();
    }
}

std::string PanelHostFinder::watcher() const {
    const auto owner = owners_.find(watcherName);
    return owner == owners_.end() ? std::string() : owner->second.uniqueName;
}

void PanelHostFinder::busChanged() {
    owners_.clear();
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
