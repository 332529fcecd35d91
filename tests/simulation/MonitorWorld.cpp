#include "tests/simulation/MonitorWorld.h"

#include <netinet/in.h>
#include <utility>

namespace tarnwick::simulation {

MonitorWorld::MonitorWorld(std::shared_ptr<test::TemporaryFolder> sharedFolder)
    : folder(std::move(sharedFolder)) {
    defaults.put(PreferenceKey::hostname, std::string(host));
    answerAfter(usualDelay);
}

void MonitorWorld::create() {
    monitor.reset();
    prefs = std::make_unique<Preferences>(defaults);
    monitor = std::make_unique<Monitor>(
        *prefs, MonitorEnvironment{loop, network, path, sleep, notifications, store()});
}

void MonitorWorld::start() {
    create();
    startedAt = loop.now();
    monitor->start();
    loop.runPending();
}

void MonitorWorld::end() {
    monitor->saveStats();
    kill();
}

void MonitorWorld::kill() {
    monitor.reset();
}

void MonitorWorld::answerAfter(double delay) {
    network.setBehavior([delay](const SentRequest&) { return Answer{.delay = delay}; });
}

void MonitorWorld::fallSilent() {
    network.setBehavior([](const SentRequest&) { return Answer{.copies = 0}; });
}

void MonitorWorld::setHost(const std::string& name, const std::vector<std::string>& addresses, double delay) {
    std::vector<ResolvedAddress> resolved;
    for (const std::string& address : addresses) {
        resolved.push_back(VirtualNetwork::address(address));
    }
    network.setHost(name, resolved, delay);
}

void MonitorWorld::setUnknownHost(const std::string& name, const std::string& reason) {
    network.setHost(name, PingError::resolution(reason));
}

void MonitorWorld::deliverReply(std::uint64_t id) {
    network.deliver(AF_INET, VirtualNetwork::echoReply(id, network.sent().back().identifier, AF_INET));
}

std::vector<double> MonitorWorld::sendTimes() const {
    std::vector<double> times;
    for (const SentRequest& request : network.sent()) {
        times.push_back(request.at - startedAt);
    }
    return times;
}

int MonitorWorld::restarts() const {
    return network.lookups(prefs->hostname());
}

} // namespace tarnwick::simulation
