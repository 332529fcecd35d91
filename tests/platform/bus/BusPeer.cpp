#include "tests/platform/bus/BusPeer.h"

#include <gtest/gtest.h>

#include <map>
#include <systemd/sd-bus.h>
#include <tuple>

namespace tarnwick {

namespace {

using CallHandler = std::function<void(BusMessage& call)>;

int takeCall(sd_bus_message* message, void* handler, sd_bus_error* /*error*/) {
    BusMessage call = BusMessage::sharing(message);
    (*static_cast<CallHandler*>(handler))(call);
    return 1;
}

} // namespace

BusPeer::BusPeer(const std::string& address) : link_(BusLink::open(address)) {
    // Asking for the name waits until there is one.
    const char* name = nullptr;
    EXPECT_GE(sd_bus_get_unique_name(link_->get(), &name), 0);
}

void BusPeer::requestName(const std::string& name) {
    EXPECT_GE(sd_bus_request_name(link_->get(), name.c_str(), 0), 0) << name;
}

void BusPeer::releaseName(const std::string& name) {
    EXPECT_GE(sd_bus_release_name(link_->get(), name.c_str()), 0) << name;
}

void BusPeer::process() {
    while (link_->process() == BusLink::Step::worked) {
    }
}

Subscription BusPeer::takeCalls(const std::string& path, std::function<void(BusMessage& call)> handler) {
    auto owned = std::make_unique<CallHandler>(std::move(handler));
    sd_bus_slot* slot = nullptr;
    EXPECT_GE(sd_bus_add_object(link_->get(), &slot, path.c_str(), takeCall, owned.get()), 0);
    sd_bus_slot_set_destroy_callback(
        slot, [](void* given) { const std::unique_ptr<CallHandler> last(static_cast<CallHandler*>(given)); });
    (void)owned.release();
    return {slot, sd_bus_slot_unref};
}

void BusPeer::recordSignals(const std::string& rule) {
    recorded_.push_back(link_->addMatch(rule, [this](BusMessage& message) { record(message); }));
}

void BusPeer::setDestination(BusMessage& message, const std::string& destination) {
    if (!destination.empty()) {
        EXPECT_GE(sd_bus_message_set_destination(message.get(), destination.c_str()), 0);
    }
}

void BusPeer::sendChecked(bool isComplete, BusMessage& message) {
    EXPECT_TRUE(isComplete && message.send());
}

void BusPeer::record(BusMessage& message) {
    signals_.push_back(message.member());
    if (message.member() == "PropertiesChanged") {
        using Changed = std::map<std::string, std::variant<std::monostate>>;
        const auto [interface, changed] = message.read<std::string, Changed>().value();
        for (const auto& [name, value] : changed) {
            signals_.push_back(name);
        }
    }
}

} // namespace tarnwick
