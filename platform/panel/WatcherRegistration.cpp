#include "platform/panel/WatcherRegistration.h"

#include "platform/bus/BusCall.h"

#include <tuple>
#include <utility>

namespace tarnwick {

WatcherRegistration::WatcherRegistration(Needs needs, double patience)
    : needs_(std::move(needs)), patience_(patience) {
}

void WatcherRegistration::setService(const std::string& service) {
    if (service_ != service) {
        service_ = service;
        start();
    }
}

void WatcherRegistration::setWatcher(const std::string& watcher) {
    if (watcher_ != watcher) {
        watcher_ = watcher;
        start();
    }
}

void WatcherRegistration::start() {
    checkTimer_.reset();
    repetitions_ = 0;
    if (!service_.empty() && !watcher_.empty()) {
        needs_.forgetReaders();
        registerItem();
    }
}

void WatcherRegistration::registerItem() {
    // The answer does not matter: some panels answer and never read the item.
    tellBus(
        needs_.bus,
        {
            .destination = watcher_,
            .path = "/StatusNotifierWatcher",
            .interface = "org.kde.StatusNotifierWatcher",
            .method = "RegisterStatusNotifierItem",
        },
        std::tuple(service_));
    checkTimer_ = needs_.loop.after(patience_, [this] { check(); });
}

void WatcherRegistration::check() {
    checkTimer_.reset();
    if (!needs_.wasRead() && repetitions_ < mostRepetitions) {
        ++repetitions_;
        registerItem();
    }
}

} // namespace tarnwick
