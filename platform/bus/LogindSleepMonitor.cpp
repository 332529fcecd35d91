#include "platform/bus/LogindSleepMonitor.h"

#include "platform/bus/BusCall.h"

#include <fcntl.h>
#include <tuple>
#include <utility>

namespace tarnwick {

namespace {

constexpr const char* managerName = "org.freedesktop.login1";

} // namespace

LogindSleepMonitor::LogindSleepMonitor(
    RunLoop& loop, BusConnection& systemBus, SuspendedClock suspendedTime, double patience)
    : loop_(loop), bus_(systemBus), suspendedTime_(std::move(suspendedTime)), patience_(patience) {
    stateSubscription_ = bus_.onStateChange([this](BusConnection::State) { busChanged(); });
    managerMatch_ = bus_.addMatch(
        "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
        "member='NameOwnerChanged',arg0='org.freedesktop.login1'",
        [this](sdbus::Message& message) {
            if (const auto values = valuesOf<std::string, std::string, std::string>(message)) {
                setManager(std::get<2>(*values));
            }
        });
    sleepMatch_ = bus_.addMatch(
        "type='signal',sender='org.freedesktop.login1',path='/org/freedesktop/login1',"
        "interface='org.freedesktop.login1.Manager',member='PrepareForSleep'",
        [this](sdbus::Message& message) {
            // Anybody may send such a signal straight to us.
            const auto values = valuesOf<bool>(message);
            if (values && message.getSender() == manager_) {
                managerAnnounced(std::get<0>(*values));
            }
        });
    busChanged();
}

void LogindSleepMonitor::start(Handlers handlers) {
    handlers_ = std::move(handlers);
    episodes_.emplace(clocks());
    tell(episodes_->setHasAnnouncer(!manager_.empty()));
    checkTimer_ =
        loop_.everyRoughly(loop_.now() + checkInterval, checkInterval, checkTolerance, [this] { check(); });
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

void LogindSleepMonitor::busChanged() {
    if (bus_.state() == BusConnection::State::connected) {
        askForManager();
    } else {
        setManager("");
    }
}

void LogindSleepMonitor::askForManager() {
    // Who is called by its name is started, and there are systems that do well without it.
    callBus<std::string>(
        bus_, daemonCall("GetNameOwner"), std::tuple(std::string(managerName)),
        lifeline_.guarded(
            [this](const std::optional<std::string>& reply) { setManager(reply.value_or("")); }));
}

void LogindSleepMonitor::setManager(const std::string& uniqueName) {
    if (manager_ == uniqueName) {
        return;
    }
    manager_ = uniqueName;
    // It was another one's.
    dropInhibitor();
    if (episodes_) {
        tell(episodes_->setHasAnnouncer(false)); // the end of a sleep that the old one announced
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

void LogindSleepMonitor::check() {
    if (!episodes_) {
        return;
    }
    const bool wasAsleep = episodes_->isAsleep();
    tell(episodes_->check(clocks()));
    const bool hasWoken = wasAsleep && !episodes_->isAsleep();
    if (hasWoken || (askAgainAt_ && loop_.now() >= *askAgainAt_)) {
        takeInhibitor();
    }
}

/// Refused while a sleep is under way, at whose end it is tried again; and by a login manager that has too
/// much to do.
void LogindSleepMonitor::takeInhibitor() {
    if (manager_.empty() || inhibitor_.isOpen()) {
        return;
    }
    askAgainAt_.reset();
    callBus<sdbus::UnixFd>(
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
        lifeline_.guarded(
            [this, request = ++inhibitorRequest_](const std::optional<sdbus::UnixFd>& descriptor) {
                if (request == inhibitorRequest_) {
                    // A program that is started from here must not hold up the sleep.
                    inhibitorArrived(
                        FileDescriptor(descriptor ? ::fcntl(descriptor->get(), F_DUPFD_CLOEXEC, 0) : -1));
                }
            }));
}

void LogindSleepMonitor::inhibitorArrived(FileDescriptor inhibitor) {
    inhibitor_ = std::move(inhibitor);
    if (!inhibitor_.isOpen()) {
        askAgainAt_ = loop_.now() + patience_;
    }
}

/// Also one that is on its way.
void LogindSleepMonitor::dropInhibitor() {
    ++inhibitorRequest_;
    askAgainAt_.reset();
    inhibitor_.reset();
}

} // namespace tarnwick
