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

PanelHostFinder::PanelHostFinder(BusConnection& bus, ProcessName processName)
    : bus_(bus), processName_(std::move(processName)), host_(&panelHost("")) {
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
    if (bus_.state() == BusConnection::State::connected) {
        lookAround();
    } else {
        decide();
    }
}

void PanelHostFinder::lookAround() {
    callBus<std::vector<std::string>>(
        bus_, daemonCall("ListNames"), std::tuple(),
        lifeline_.guarded([this](const std::optional<std::vector<std::string>>& reply) {
            if (reply) {
                namesListed(*reply);
            }
        }));
}

void PanelHostFinder::namesListed(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (isOfInterest(name)) {
            callBus<std::string>(
                bus_, daemonCall("GetNameOwner"), std::tuple(name),
                lifeline_.guarded([this, name](const std::optional<std::string>& reply) {
                    if (reply) {
                        setOwner(name, *reply);
                    }
                }));
        }
    }
}

void PanelHostFinder::setOwner(const std::string& name, const std::string& uniqueName) {
    const auto known = owners_.find(name);
    if (known != owners_.end() && known->second.uniqueName == uniqueName) {
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
    callBus<std::uint32_t>(
        bus_, daemonCall("GetConnectionUnixProcessID"), std::tuple(uniqueName),
        lifeline_.guarded([this, name, uniqueName](const std::optional<std::uint32_t>& reply) {
            const auto owner = owners_.find(name);
            if (reply && owner != owners_.end() && owner->second.uniqueName == uniqueName) {
                owner->second.process = processName_(*reply);
                decide();
            }
        }));
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
