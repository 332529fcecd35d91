#include "platform/bus/BusLink.h"

#include <limits>
#include <poll.h>
#include <systemd/sd-bus.h>
#include <utility>

namespace tarnwick {

namespace {

using Handler = BusLink::Handler;

std::uint64_t microseconds(double seconds) {
    return static_cast<std::uint64_t>(seconds * 1e6);
}

int handle(sd_bus_message* message, void* handler, sd_bus_error* /*error*/) noexcept {
    try {
        BusMessage shared = BusMessage::sharing(message);
        (*static_cast<Handler*>(handler))(shared);
    } catch (...) {
        // An exception must not pass through the library's C code. Only this message is lost.
        return 0;
    }
    return 0; // other matches get the message too
}

/// The slot owns the handler from now on: a handler may end its own slot, and still runs to its end.
Subscription owning(sd_bus_slot* slot, std::unique_ptr<Handler> handler) {
    sd_bus_slot_set_destroy_callback(
        slot, [](void* owned) { const std::unique_ptr<Handler> last(static_cast<Handler*>(owned)); });
    (void)handler.release();
    return {slot, sd_bus_slot_unref};
}

} // namespace

std::unique_ptr<BusLink> BusLink::open(const std::string& address) {
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0) {
        return nullptr;
    }
    std::unique_ptr<BusLink> link(new BusLink(bus));
    // On a session bus all programs belong to the same user. Without trust, the library would ask the daemon
    // for the privileges of each caller, and block until it answers.
    const bool isStarted = sd_bus_set_address(bus, address.c_str()) >= 0 && sd_bus_set_bus_client(bus, 1) >= 0
                           && sd_bus_set_trusted(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
    return isStarted ? std::move(link) : nullptr;
}

BusLink::~BusLink() {
    sd_bus_close_unref(bus_);
}

bool BusLink::isReady() const {
    return sd_bus_is_ready(bus_) > 0;
}

std::string BusLink::uniqueName() const {
    const char* name = nullptr;
    // Before the link is ready, this call would block until the name comes.
    return isReady() && sd_bus_get_unique_name(bus_, &name) >= 0 ? name : "";
}

BusLink::Step BusLink::process() {
    const int result = sd_bus_process(bus_, nullptr);
    if (result < 0) {
        return Step::lost;
    }
    return result > 0 ? Step::worked : Step::idle;
}

std::string BusLink::currentSender() const {
    sd_bus_message* const message = sd_bus_get_current_message(bus_);
    return message == nullptr ? "" : BusMessage::sharing(message).sender();
}

std::optional<BusLink::Wait> BusLink::wait() const {
    constexpr std::uint64_t noTimeOut = std::numeric_limits<std::uint64_t>::max();
    const int descriptor = sd_bus_get_fd(bus_);
    const int events = sd_bus_get_events(bus_);
    std::uint64_t time = noTimeOut;
    if (descriptor < 0 || events < 0 || sd_bus_get_timeout(bus_, &time) < 0) {
        return std::nullopt;
    }
    return Wait{
        .descriptor = descriptor,
        .forWriting = (events & POLLOUT) != 0,
        .deadline = time == noTimeOut ? std::nullopt : std::optional(static_cast<double>(time) / 1e6),
    };
}

Subscription BusLink::addMatch(const std::string& rule, Handler handler) {
    auto owned = std::make_unique<Handler>(std::move(handler));
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(bus_, &slot, rule.c_str(), handle, nullptr, owned.get()) < 0) {
        return nullptr;
    }
    Subscription match = owning(slot, std::move(owned));
    callOnSent();
    return match;
}

BusMessage BusLink::newCall(
    const std::string& destination, const std::string& path, const std::string& interface,
    const std::string& method) const {
    sd_bus_message* message = nullptr;
    const int result = sd_bus_message_new_method_call(
        bus_, &message, destination.c_str(), path.c_str(), interface.c_str(), method.c_str());
    return result < 0 ? BusMessage() : BusMessage(message);
}

BusMessage BusLink::newSignal(
    const std::string& path, const std::string& interface, const std::string& signal) const {
    sd_bus_message* message = nullptr;
    const int result =
        sd_bus_message_new_signal(bus_, &message, path.c_str(), interface.c_str(), signal.c_str());
    return result < 0 ? BusMessage() : BusMessage(message);
}

bool BusLink::call(BusMessage& message, double timeout, Handler answered) {
    auto owned = std::make_unique<Handler>(std::move(answered));
    sd_bus_slot* slot = nullptr;
    if (!message.isValid()
        || sd_bus_call_async(bus_, &slot, message.get(), handle, owned.get(), microseconds(timeout)) < 0) {
        return false;
    }
    const Subscription untilAnswered = owning(slot, std::move(owned));
    sd_bus_slot_set_floating(slot, 1);
    callOnSent();
    return true;
}

bool BusLink::send(BusMessage& message) {
    if (!message.send()) {
        return false;
    }
    callOnSent();
    return true;
}

void BusLink::emitChange(const std::string& path, const std::string& interface, const char* property) {
    const int result = sd_bus_emit_properties_changed(
        bus_, path.c_str(), interface.c_str(), property, static_cast<char*>(nullptr));
    if (result >= 0) {
        callOnSent();
    }
}

} // namespace tarnwick
