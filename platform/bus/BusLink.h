// One connection to a bus daemon, made without waiting and driven from outside.
#pragma once

#include "platform/bus/BusMessage.h"
#include "platform/bus/Subscription.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

struct sd_bus;

namespace tarnwick {

/// A thin owner of the library's connection. Handlers run inside `process`; an exception in one of them ends
/// there. Main thread.
class BusLink {
public:
    using Handler = std::function<void(BusMessage&)>;

    /// Never blocks on a local socket; the lookup of a host name in the address does. Null when every address
    /// fails at once.
    [[nodiscard]] static std::unique_ptr<BusLink> open(const std::string& address);

    BusLink(const BusLink&) = delete;
    BusLink& operator=(const BusLink&) = delete;
    /// Drops what has not been written yet.
    ~BusLink();

    /// Connected, and named by the bus daemon. Messages sent earlier wait for that.
    [[nodiscard]] bool isReady() const;

    /// Empty until the link is ready.
    [[nodiscard]] std::string uniqueName() const;

    enum class Step { idle, worked, lost };

    /// Writes what is queued, and handles one message. Not from inside a handler.
    [[nodiscard]] Step process();

    /// The sender of the message that is being handled; empty outside of `process`.
    [[nodiscard]] std::string currentSender() const;

    /// When `process` must be called, besides when there is something to read.
    struct Wait {
        int descriptor = -1;
        bool forWriting = false;
        std::optional<double> deadline; ///< monotonic seconds; may be past
    };

    /// Nothing when the connection is lost.
    [[nodiscard]] std::optional<Wait> wait() const;

    /// Messages that match the rule, until the subscription ends. Null when the connection is going down.
    /// A rule that the daemon refuses ends the connection.
    [[nodiscard]] Subscription addMatch(const std::string& rule, Handler handler);

    [[nodiscard]] BusMessage newCall(
        const std::string& destination, const std::string& path, const std::string& interface,
        const std::string& method) const;
    [[nodiscard]] BusMessage newSignal(
        const std::string& path, const std::string& interface, const std::string& signal) const;

    /// `answered` is called once with the answer, which may be an error; a lost connection is an error too.
    /// `timeout` in seconds. False when the call can't be sent; then `answered` is never called.
    [[nodiscard]] bool call(BusMessage& message, double timeout, Handler answered);

    /// Without waiting. False when the message can't be sent.
    bool send(BusMessage& message);

    /// Reads this property of an object on the link, and tells its new value.
    void emitChange(const std::string& path, const std::string& interface, const char* property);

    /// Called after something was sent: the result of `wait` may differ now.
    std::function<void()> onSent;

    [[nodiscard]] sd_bus* get() const { return bus_; }

private:
    explicit BusLink(sd_bus* bus) : bus_(bus) {}

    void callOnSent() const {
        if (onSent) {
            onSent();
        }
    }

    sd_bus* bus_;
};

} // namespace tarnwick
