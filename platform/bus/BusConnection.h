// A connection to a message bus, driven by the run loop. A bus that is absent, goes away or comes back is a
// state, not an error.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/Subscription.h"

#include <functional>
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

    /// Told of each change. When the connection is lost, listeners destroy everything that they made on it.
    [[nodiscard]] Subscription onStateChange(std::function<void(State)> listener) {
        return stateListeners_.add(std::move(listener));
    }

    // For the adapters of the bus.

    /// Null unless connected.
    [[nodiscard]] BusLink* link() const;

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
    /// null for every failure; perhaps never when the connection is lost. See also BusCall.h.
    void call(
        const Call& call, const std::function<bool(BusMessage&)>& append,
        std::function<void(BusMessage*)> answered);

private:
    struct Match;

    void connect();
    void unavailable();
    void process();
    void processSoon();
    [[nodiscard]] bool arm();
    void stopWatching();
    void setTimer(std::optional<double> deadline);
    void lose();
    void setState(State state);

    RunLoop& loop_;
    std::string address_;
    State state_ = State::connecting;
    double retryDelay_ = firstRetry;
    Subscribers<State> stateListeners_;
    std::vector<std::weak_ptr<Match>> matches_;
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
