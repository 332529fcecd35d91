#include "platform/bus/BusConnection.h"

#include "platform/bus/BusLink.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

namespace tarnwick {

namespace {

/// Other events get their turn after this many messages.
constexpr int mostMessagesAtOnce = 100;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

} // namespace

struct BusConnection::Match : std::enable_shared_from_this<Match> {
    std::string rule;
    std::function<void(BusMessage&)> handler;
    Subscription added; ///< to the present link

    void addTo(BusLink& link) {
        added = link.addMatch(rule, [weak = weak_from_this()](BusMessage& message) {
            if (const auto match = weak.lock()) {
                match->handler(message);
            }
        });
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

BusLink* BusConnection::link() const {
    return state_ == State::connected ? link_.get() : nullptr;
}

std::string BusConnection::uniqueName() const {
    return link() == nullptr ? "" : link()->uniqueName();
}

void BusConnection::connect() {
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the analyzer loses the pointer in the move
    link_ = address_.empty() ? nullptr : BusLink::open(address_);
    if (!link_) {
        unavailable();
        return;
    }
    std::erase_if(matches_, [](const auto& match) { return match.expired(); });
    for (const auto& weakMatch : matches_) {
        if (const auto match = weakMatch.lock()) {
            match->addTo(*link_);
        }
    }
    link_->onSent = [this] {
        // `process` arms when it has finished. A failure must not end the connection here, since the
        // caller still uses it; the next `process` ends it.
        if (!isProcessing_ && !arm()) {
            processSoon();
        }
    };
    link_->onSent();
}

/// Plans the next attempt, and reports the state.
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
        stateListeners_.tell();
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
    if (!link_) {
        return;
    }
    if (isProcessing_) {
        // A handler runs a nested event loop, and the library can't be entered twice. New messages wait until
        // the handler returns; watching them would wake the nested loop again and again.
        stopWatching();
        return;
    }
    const bool wasReady = link_->isReady();
    auto step = BusLink::Step::worked;
    isProcessing_ = true;
    for (int i = 0; i < mostMessagesAtOnce && step == BusLink::Step::worked; ++i) {
        // Messages behind the bus's greeting wait until the listeners know of the connection.
        if (!wasReady && link_->isReady()) {
            break;
        }
        step = link_->process();
    }
    isProcessing_ = false;
    if (step == BusLink::Step::lost || !arm()) {
        lose();
    } else if (link_->isReady()) {
        retryDelay_ = firstRetry;
        setState(State::connected);
    }
}

/// Makes the loop call `process` when there is something to do. False when the connection is lost.
bool BusConnection::arm() {
    const std::optional<BusLink::Wait> wait = link_->wait();
    if (!wait) {
        return false;
    }
    if (!link_->isReady()) {
        // Until then, the library may go on to the next address, with a new socket of the same number.
        stopWatching();
    }
    if (!readable_) {
        readable_ = loop_.watchReadable(wait->descriptor, [this] { process(); });
    }
    if (!wait->forWriting) {
        writable_.reset();
    } else if (!writable_) {
        writable_ = loop_.watchWritable(wait->descriptor, [this] { process(); });
    }
    setTimer(wait->deadline);
    return readable_ != nullptr;
}

void BusConnection::setTimer(std::optional<double> deadline) {
    if (deadline && *deadline <= loop_.now()) {
        deadline.reset();
        processSoon();
    }
    if (deadline == timerDeadline_) {
        return;
    }
    timerDeadline_ = deadline;
    timer_.reset();
    if (deadline) {
        timer_ = loop_.after(*deadline - loop_.now(), [this] {
            timerDeadline_.reset();
            process();
        });
    }
}

void BusConnection::stopWatching() {
    readable_.reset();
    writable_.reset();
}

void BusConnection::lose() {
    // Destroyed at the end: the listeners first let go of the slots and objects that belong to it.
    const std::unique_ptr<BusLink> lost = std::exchange(link_, nullptr);
    lost->onSent = nullptr;
    stopWatching();
    setTimer(std::nullopt);
    for (const auto& weakMatch : matches_) {
        if (const auto match = weakMatch.lock()) {
            match->added.reset();
        }
    }
    const auto unanswered = std::exchange(unanswered_, {});
    unavailable();
    for (const auto& [number, answered] : unanswered) {
        answered(nullptr);
    }
}

Subscription BusConnection::addMatch(std::string rule, std::function<void(BusMessage&)> handler) {
    std::erase_if(matches_, [](const auto& ended) { return ended.expired(); });
    auto match = std::make_shared<Match>();
    match->rule = std::move(rule);
    match->handler = std::move(handler);
    matches_.push_back(match);
    if (link_) {
        match->addTo(*link_);
    }
    return match;
}

void BusConnection::call(
    const Call& call, const std::function<bool(BusMessage&)>& append,
    std::function<void(BusMessage*)> answered) {
    if (BusLink* const present = link()) {
        BusMessage message = present->newCall(call.destination, call.path, call.interface, call.method);
        const std::uint64_t number = ++latestCall_;
        auto handler = [this, number](BusMessage& reply) { answer(number, &reply); };
        if (append(message) && present->call(message, call.timeout, std::move(handler))) {
            unanswered_.emplace(number, std::move(answered));
            return;
        }
    }
    loop_.post([answered = std::move(answered)] { answered(nullptr); });
}

void BusConnection::answer(std::uint64_t call, BusMessage* reply) {
    // The library answers with errors while it closes a lost connection: `lose` does that in order.
    if (link_->isReady()) {
        const auto node = unanswered_.extract(call);
        node.mapped()(reply);
    }
}

} // namespace tarnwick
