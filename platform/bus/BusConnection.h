// A connection to a message bus, driven by the run loop. A bus that is absent, goes away or comes back is a
// state, not an error.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/Subscription.h"

#include <functional>
#include <memory>
#include <string>

namespace sdbus {
class IConnection;
class Message;
class MethodCall;
class MethodReply;
} // namespace sdbus

namespace tarnwick {

/// Connects by itself, and again whenever the connection is lost: after a second at first, after half a
/// minute at last. Main thread; outlives its users.
///
/// It never blocks: a connection is opened, and its matches are added, on a detached thread. There is one
/// exception: a match that is added while connected waits for the bus daemon, at most `matchTimeout` seconds.
class BusConnection {
public:
    enum class State {
        connecting, ///< for the first time, or not even that; nobody knows yet whether there is a bus
        connected,
        unavailable, ///< not at present
    };

    enum class Opening {
        soon,
        whenNeeded, ///< by somebody who calls `need`: costs nothing until then
    };

    static constexpr double firstRetry = 1;
    static constexpr double longestRetry = 30;
    static constexpr double matchTimeout = 2;
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

    /// From now on there is to be a connection, whatever was said at the making.
    void need();

    /// Told of each change. When the connection has gone, listeners must let go of all that they made with
    /// it.
    [[nodiscard]] Subscription onStateChange(std::function<void(State)> listener) {
        return stateListeners_.add(std::move(listener));
    }

    // For the adapters in this folder.

    /// Null unless connected. Whoever makes it send something calls `flush` afterwards.
    [[nodiscard]] sdbus::IConnection* connection() const;
    void flush();

    /// Messages that match the rule, in this connection and in all later ones; best added before the first.
    /// No connection comes up with a rule that the daemon does not take.
    [[nodiscard]] Subscription addMatch(std::string rule, std::function<void(sdbus::Message&)> handler);

    struct Call {
        std::string destination;
        std::string path;
        std::string interface;
        std::string method;
        double timeout = callTimeout;
    };

    /// `answered` is called later, once, with null for every failure; perhaps never when the connection is
    /// lost. See also BusCall.h.
    void call(
        const Call& call, const std::function<void(sdbus::MethodCall&)>& writeArguments,
        std::function<void(sdbus::MethodReply*)> answered);

private:
    struct Match;
    struct Link;

    [[nodiscard]] static std::shared_ptr<Link> open(
        const std::string& address, const std::vector<std::weak_ptr<Match>>& matches,
        const std::vector<std::string>& rules);

    void connect();
    void adopt(std::shared_ptr<Link> link);
    void unavailable();
    void process();
    void processSoon();
    [[nodiscard]] bool arm();
    void lose();
    void setState(State state);

    RunLoop& loop_;
    std::string address_;
    State state_ = State::connecting;
    double retryDelay_ = firstRetry;
    Subscribers<State> stateListeners_;
    std::vector<std::weak_ptr<Match>> matches_;
    std::shared_ptr<Link> link_; ///< only while connected
    bool isNeeded_ = false;
    bool isProcessing_ = false;
    bool willProcess_ = false;
    RunLoop::Handle retry_;
    Lifeline lifeline_;
};

} // namespace tarnwick
