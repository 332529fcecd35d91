#include "platform/bus/LogindSleepMonitor.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/NameWatch.h"

#include <tuple>
#include <utility>

namespace tarnwick {

namespace {

constexpr const char* managerName = "org.freedesktop.login1";

} // namespace

LogindSleepMonitor::LogindSleepMonitor(
    RunLoop& loop, BusConnection& systemBus, SuspendedClock suspendedTime, double patience)
    : loop_(loop), bus_(systemBus), suspendedTime_(std::move(suspendedTime)), patience_(patience) {
    managerWatch_ =
        watchName(bus_, managerName, [this](const std::string& owner, NameNews) { setManager(owner); });
    sleepMatch_ = bus_.addMatch(
        "type='signal',sender='org.freedesktop.login1',path='/org/freedesktop/login1',"
        "interface='org.freedesktop.login1.Manager',member='PrepareForSleep'",
        [this](BusMessage& message) {
            // Every program may send such a signal straight to us.
            const auto values = message.read<bool>();
            if (values && message.sender() == manager_) {
                managerAnnounced(std::get<0>(*values));
            }
        });
}

void LogindSleepMonitor::start(Handlers handlers) {
    handlers_ = std::move(handlers);
    SleepEpisodes& episodes = episodes_.emplace(clocks());
    tell(episodes.setHasAnnouncer(!manager_.empty()));
    checkTimer_ = loop_.everyRoughly(
        loop_.now() + checkInterval, checkInterval, checkTolerance, [this, &episodes] { check(episodes); });
    takeInhibitor();
}

SleepEpisodes::Clocks LogindSleepMonitor::clocks() const {
    return {.now = loop_.now(), .suspended = suspendedTime_()};
}

void LogindSleepMonitor::tell(const SleepEpisodes::Events& events) const {
    for (const SleepEpisodes::Event event : events) {
        if (const auto& handler =
                event == SleepEpisodes::Event::fellAsleep ? handlers_.willSleep : handlers_.didWake) {
            handler();
        }
    }
}

void LogindSleepMonitor::setManager(const std::string& uniqueName) {
    if (manager_ == uniqueName) {
        return;
    }
    manager_ = uniqueName;
    // It belongs to the former manager.
    dropInhibitor();
    if (episodes_) {
        tell(episodes_->setHasAnnouncer(false)); // ends a sleep that the former one announced
        tell(episodes_->setHasAnnouncer(!manager_.empty()));
        takeInhibitor();
    }
}

void LogindSleepMonitor::managerAnnounced(bool isStart) {
    if (!episodes_) {
        return;
    }
    if (isStart) {
        tell(episodes_->sleepAnnounced(clocks()));
        dropInhibitor();
    } else {
        tell(episodes_->wakeAnnounced(clocks()));
        takeInhibitor();
    }
}

void LogindSleepMonitor::check(SleepEpisodes& episodes) {
    const bool wasAsleep = episodes.isAsleep();
    tell(episodes.check(clocks()));
    const bool hasWoken = wasAsleep && !episodes.isAsleep();
    if (hasWoken || (askAgainAt_ && loop_.now() >= *askAgainAt_)) {
        takeInhibitor();
    }
}

/// A login manager refuses during a sleep, and when it is overloaded. It is asked again at the end of the
/// sleep, and some time after each refusal.
void LogindSleepMonitor::takeInhibitor() {
    if (manager_.empty() || inhibitor_.isOpen()) {
        return;
    }
    askAgainAt_.reset();
    callBus<FileDescriptor>(
        bus_,
        {
            .destination = managerName,
            .path = "/org/freedesktop/login1",
            .interface = "org.freedesktop.login1.Manager",
            .method = "Inhibit",
            .timeout = patience_,
        },
        std::tuple(
            std::string("sleep"), std::string("Tarnwick"), std::string("Saves its statistics"),
            std::string("delay")),
        lifeline_.guarded([this, request = ++inhibitorRequest_](std::optional<FileDescriptor> inhibitor) {
            if (request == inhibitorRequest_) {
                inhibitorArrived(std::move(inhibitor).value_or(FileDescriptor()));
            }
        }));
}

void LogindSleepMonitor::inhibitorArrived(FileDescriptor inhibitor) {
    inhibitor_ = std::move(inhibitor);
    if (!inhibitor_.isOpen()) {
        askAgainAt_ = loop_.now() + patience_;
    }
}

/// Also gives up a request that is still under way.
void LogindSleepMonitor::dropInhibitor() {
    ++inhibitorRequest_;
    askAgainAt_.reset();
    inhibitor_.reset();
}

} // namespace tarnwick
