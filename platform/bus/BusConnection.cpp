#include "platform/bus/BusConnection.h"

#include "core/FileDescriptor.h"
#include "platform/bus/BusCall.h"
#include "platform/bus/BusProbe.h"

#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <map>
#include <optional>
#include <poll.h>
#include <sys/epoll.h>
#include <utility>

namespace tarnwick {

namespace {

/// So many messages are dealt with before other events get their turn.
constexpr int mostMessagesAtOnce = 100;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

std::uint64_t microseconds(double seconds) {
    return static_cast<std::uint64_t>(seconds * 1e6);
}

std::uint32_t epollEvents(short pollEvents) {
    const auto events = static_cast<unsigned>(pollEvents);
    return ((events & POLLIN) != 0 ? std::uint32_t{EPOLLIN} : 0U)
           | ((events & POLLOUT) != 0 ? std::uint32_t{EPOLLOUT} : 0U);
}

} // namespace

struct BusConnection::Match {
    std::string rule;
    std::function<void(sdbus::Message&)> handler;
};

/// One connection with all that hangs on it; what is declared last goes first.
struct BusConnection::Link {
    std::unique_ptr<sdbus::IConnection> connection;
    std::map<std::pair<std::string, std::string>, std::unique_ptr<sdbus::IProxy>> proxies;

    struct AddedMatch {
        std::weak_ptr<Match> match;
        sdbus::Slot slot;
    };

    std::vector<AddedMatch> matches;

    /// Readable when the socket is ready for what the connection waits for, be it reading or writing.
    FileDescriptor readiness;
    std::uint32_t awaitedEvents = 0;
    RunLoop::Handle watch;
    RunLoop::Handle timer;
    std::uint64_t timerTime = std::numeric_limits<std::uint64_t>::max();

    /// May throw.
    void add(const std::weak_ptr<Match>& match, const std::string& rule) {
        auto handle = [match](sdbus::Message& message) {
            if (const auto present = match.lock()) {
                present->handler(message);
            }
        };
        matches.push_back({.match = match, .slot = connection->addMatch(rule, std::move(handle))});
    }

    [[nodiscard]] bool has(const std::shared_ptr<Match>& match) const {
        return std::ranges::any_of(
            matches, [&match](const AddedMatch& added) { return added.match.lock() == match; });
    }

    void dropEndedMatches() {
        std::erase_if(matches, [](const AddedMatch& added) { return added.match.expired(); });
    }

    [[nodiscard]] sdbus::IProxy& proxy(const std::string& destination, const std::string& path) {
        std::unique_ptr<sdbus::IProxy>& proxy = proxies[{destination, path}];
        if (!proxy) {
            proxy = sdbus::createProxy(*connection, destination, path);
        }
        return *proxy;
    }

    [[nodiscard]] bool waitFor(const sdbus::IConnection::PollData& poll) {
        const std::uint32_t events = epollEvents(poll.events);
        const int operation = readiness.isOpen() ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
        if (!readiness.isOpen()) {
            readiness = FileDescriptor(epoll_create1(EPOLL_CLOEXEC));
        } else if (events == awaitedEvents) {
            return true;
        }
        awaitedEvents = events;
        epoll_event event{};
        event.events = events;
        return epoll_ctl(readiness.get(), operation, poll.fd, &event) == 0;
    }
};

std::string BusConnection::sessionAddress() {
    if (std::string address = environment("DBUS_SESSION_BUS_ADDRESS"); !address.empty()) {
        return address;
    }
    const std::string folder = environment("XDG_RUNTIME_DIR");
    return folder.empty() ? std::string() : "unix:path=" + folder + "/bus";
}

std::string BusConnection::systemAddress() {
    const std::string address = environment("DBUS_SYSTEM_BUS_ADDRESS");
    return address.empty() ? "unix:path=/run/dbus/system_bus_socket" : address;
}

BusConnection::BusConnection(RunLoop& loop, std::string address, Opening opening)
    : loop_(loop), address_(std::move(address)) {
    if (opening == Opening::soon) {
        need();
    }
}

BusConnection::~BusConnection() = default;

void BusConnection::need() {
    if (!std::exchange(isNeeded_, true)) {
        retry_ = loop_.after(0, [this] { connect(); });
    }
}

sdbus::IConnection* BusConnection::connection() const {
    return link_ ? link_->connection.get() : nullptr;
}

std::shared_ptr<BusConnection::Link> BusConnection::open(
    const std::string& address, const std::vector<std::weak_ptr<Match>>& matches,
    const std::vector<std::string>& rules) {
    try {
        auto link = std::make_shared<Link>();
        link->connection = sdbus::createSessionBusConnectionWithAddress(address);
        link->connection->setMethodCallTimeout(microseconds(matchTimeout));
        for (std::size_t i = 0; i < matches.size(); ++i) {
            link->add(matches[i], rules[i]);
        }
        return link;
    } catch (const sdbus::Error&) {
        return nullptr;
    }
}

void BusConnection::connect() {
    // Asked here, where it is only a glance: an absent bus is to cost no thread again and again.
    if (address_.empty() || !mayBeListening(address_)) {
        unavailable();
        return;
    }
    std::vector<std::string> rules;
    std::erase_if(matches_, [](const auto& match) { return match.expired(); });
    std::ranges::transform(
        matches_, std::back_inserter(rules), [](const auto& match) { return match.lock()->rule; });
    // Posted from the other thread, and perhaps after the end of this object.
    auto adoptLink = lifeline_.guarded([this](std::shared_ptr<Link> link) { adopt(std::move(link)); });
    auto work = [address = address_, matches = matches_, rules = std::move(rules),
                 adoptLink = std::move(adoptLink)]() -> RunLoop::Task {
        return [link = open(address, matches, rules), adoptLink] { adoptLink(link); };
    };
    if (!loop_.detach(std::move(work))) {
        unavailable();
    }
}

void BusConnection::adopt(std::shared_ptr<Link> link) {
    try {
        if (link) {
            link->dropEndedMatches();
            for (const auto& weakMatch : matches_) {
                if (const auto match = weakMatch.lock(); match && !link->has(match)) {
                    link->add(match, match->rule);
                }
            }
        }
    } catch (const sdbus::Error&) {
        link.reset();
    }
    link_ = std::move(link);
    if (!link_ || !arm()) {
        link_.reset();
        unavailable();
        return;
    }
    retryDelay_ = firstRetry;
    setState(State::connected);
}

/// At present; it is tried again.
void BusConnection::unavailable() {
    if (!address_.empty()) {
        retry_ = loop_.after(retryDelay_, [this] { connect(); });
        retryDelay_ = std::min(retryDelay_ * 2, longestRetry);
    }
    setState(State::unavailable);
}

void BusConnection::setState(State state) {
    if (state_ != state) {
        state_ = state;
        stateListeners_.tell(state);
    }
}

void BusConnection::processSoon() {
    if (!willProcess_) {
        willProcess_ = true;
        loop_.post(lifeline_.guarded([this] {
            willProcess_ = false;
            process();
        }));
    }
}

void BusConnection::process() {
    if (!link_ || isProcessing_) {
        return;
    }
    bool isUsable = true;
    isProcessing_ = true;
    try {
        for (int i = 0; i < mostMessagesAtOnce && link_->connection->processPendingRequest(); ++i) {
        }
    } catch (const sdbus::Error&) {
        isUsable = false;
    }
    isProcessing_ = false;
    if (!isUsable || !arm()) {
        lose();
    }
}

/// Makes the loop call `process` when there will be something to do.
bool BusConnection::arm() {
    constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();
    try {
        const sdbus::IConnection::PollData poll = link_->connection->getEventLoopPollData();
        if (!link_->waitFor(poll)) {
            return false;
        }
        if (!link_->watch) {
            link_->watch = loop_.watchReadable(link_->readiness.get(), [this] { process(); });
        }
        if (poll.timeout_usec == 0) {
            processSoon();
        } else if (poll.timeout_usec == never) {
            link_->timer.reset();
        } else if (poll.timeout_usec != link_->timerTime) {
            const std::chrono::duration<double> delay =
                poll.getRelativeTimeout().value_or(std::chrono::microseconds::zero());
            link_->timer = loop_.after(delay.count(), [this] {
                link_->timerTime = never;
                process();
            });
        }
        link_->timerTime = poll.timeout_usec;
        return link_->watch != nullptr;
    } catch (const sdbus::Error&) {
        return false;
    }
}

void BusConnection::flush() {
    // While messages are processed this is done at their end. A failure shows again in `process`, which may
    // end the connection, as nobody may whose caller is still at work with it.
    if (link_ && !isProcessing_ && !arm()) {
        processSoon();
    }
}

void BusConnection::lose() {
    // Gone for its users first, who then let go of their parts of it.
    const std::shared_ptr<Link> lost = std::exchange(link_, nullptr);
    lost->watch.reset();
    lost->timer.reset();
    unavailable();
}

Subscription BusConnection::addMatch(std::string rule, std::function<void(sdbus::Message&)> handler) {
    auto match = std::make_shared<Match>(Match{.rule = std::move(rule), .handler = std::move(handler)});
    matches_.push_back(match);
    if (link_) {
        // Refused or not answered here, it is tried again with the next connection.
        (void)attempt([this, &match] {
            link_->dropEndedMatches();
            link_->add(match, match->rule);
        });
        flush();
    }
    return match;
}

void BusConnection::call(
    const Call& call, const std::function<void(sdbus::MethodCall&)>& writeArguments,
    std::function<void(sdbus::MethodReply*)> answered) {
    const bool isSent = link_ && attempt([&] {
                            sdbus::IProxy& proxy = link_->proxy(call.destination, call.path);
                            sdbus::MethodCall message = proxy.createMethodCall(call.interface, call.method);
                            writeArguments(message);
                            proxy.callMethod(
                                message,
                                [answered](sdbus::MethodReply& reply, const sdbus::Error* error) {
                                    answered(error == nullptr ? &reply : nullptr);
                                },
                                microseconds(call.timeout));
                        });
    if (isSent) {
        flush();
        return;
    }
    loop_.post([answered = std::move(answered)] { answered(nullptr); });
}

} // namespace tarnwick
