#include "tests/platform/bus/BusPeer.h"

namespace tarnwick {

BusPeer::BusPeer(const std::string& address)
    : connection_(sdbus::createSessionBusConnectionWithAddress(address)) {
}

void BusPeer::process() {
    while (connection_->processPendingRequest()) {
    }
}

void BusPeer::recordSignals(const std::string& rule) {
    connection_->addMatch(
        rule, [this](sdbus::Message& message) { record(message); }, sdbus::floating_slot);
}

sdbus::IProxy& BusPeer::proxyFor(const Target& target) {
    auto& proxy = proxies_[{target.destination, target.path}];
    if (!proxy) {
        proxy = sdbus::createProxy(*connection_, target.destination, target.path);
    }
    return *proxy;
}

void BusPeer::record(sdbus::Message& message) {
    signals_.push_back(message.getMemberName());
    if (message.getMemberName() == "PropertiesChanged") {
        std::string interface;
        std::map<std::string, sdbus::Variant> changed;
        message >> interface >> changed;
        for (const auto& [name, value] : changed) {
            signals_.push_back(name);
        }
    }
}

} // namespace tarnwick
