// A connection to a message bus, driven by the run loop. A bus that is absent, goes away or comes back is a
// state, not an error.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/Subscription.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

class BusLink;
class BusMessage;

/// Connects when it is made or first needed, and again whenever the connection is lost: after a second at
/// first, after half a minute at last. Never blocks on a local socket. Main thread; outlives its users.
class BusConnection {
public:
    enum class State {
        connecting, ///< for the first time, or not needed yet: whether there is a bus is unknown
        connected,
        unavailable, ///< not at present
    };

    enum class Opening {
        soon,
        whenNeeded, ///< by a call of `need`: costs nothing until then
    };

    static constexpr double firstRetry = 1;
    static constexpr double longestRetry = 30;
    static constexpr double callTimeout = 25;

    /// An empty address stands for a bus that will never be there.
    BusConnection(RunLoop& loop, std::string address, Opening opening = Opening::soon);
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;
    ~BusConnection();

    /// From the environment, or else where such buses usually are.
    [[nodiscard]] static std::string sessionAddress();
    [[nodiscard]] static std::string systemAddress();

    [[nodiscard]] State state() const { return state_; }

    /// Opens a connection that was to be opened when needed.
    void need();

    /// Told after each change; they read `state`, which may have changed again. When the connection is lost,
    /// listeners destroy everything that they made on it.
    [[nodiscard]] Subscription onStateChange(std::function<void()> listener) {
        return stateListeners_.add(std::move(listener));
    }

    // For the adapters of the bus.

    /// Null unless connected.
    [[nodiscard]] BusLink* link() const;

    [[nodiscard]] RunLoop& loop() const { return loop_; }

    /// Empty unless connected.
    [[nodiscard]] std::string uniqueName() const;

    /// Hands over messages that match the rule, on this connection and on later ones. The answer to a call
    /// made after this one never overtakes such a message. A rule that the bus daemon refuses ends the
    /// connection.
    [[nodiscard]] Subscription addMatch(std::string rule, std::function<void(BusMessage&)> handler);

    struct Call {
        std::string destination;
        std::string path;
        std::string interface;
        std::string method;
        double timeout = callTimeout;
    };

    /// `append` adds the arguments and returns whether that worked. `answered` is called later, once, with
    /// the answer, which may be an error. It is called with null when the call could not be sent, and when
    /// the connection is lost, after the listeners were told. See also BusCall.h.
    void call(
        const Call& call, const std::function<bool(BusMessage&)>& append,
        std::function<void(BusMessage*)> answered);

private:
    struct Match;

    using Answered = std::function<void(BusMessage*)>;

    void connect();
    void unavailable();
    void process();
    void processSoon();
    [[nodiscard]] bool arm();
    void stopWatching();
    void setTimer(std::optional<double> deadline);
    void lose();
    void answer(std::uint64_t call, BusMessage* reply);
    void setState(State state);

    RunLoop& loop_;
    std::string address_;
    State state_ = State::connecting;
    double retryDelay_ = firstRetry;
    Subscribers stateListeners_;
    std::vector<std::weak_ptr<Match>> matches_;
    std::map<std::uint64_t, Answered> unanswered_; ///< the calls sent on the present connection, by number
    std::uint64_t latestCall_ = 0;
    std::unique_ptr<BusLink> link_; ///< connected, or about to be
    bool isNeeded_ = false;
    bool isProcessing_ = false;
    bool willProcess_ = false;
    RunLoop::Handle readable_;
    RunLoop::Handle writable_; ///< only while something waits to be written
    RunLoop::Handle timer_;    ///< only while an answer is awaited
    std::optional<double> timerDeadline_;
    RunLoop::Handle retry_;
    Lifeline lifeline_;
};

} // namespace tarnwick
