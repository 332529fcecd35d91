#include "platform/bus/NameWatch.h"

#include "core/Lifeline.h"
#include "platform/bus/BusCall.h"

#include <tuple>
#include <utility>

namespace tarnwick {

namespace {

constexpr const char* daemonName = "org.freedesktop.DBus";

class NameWatch {
public:
    NameWatch(BusConnection& bus, const std::string& name, OwnerListener listener, double retryDelay)
        : bus_(bus), name_(name), listener_(std::move(listener)), retryDelay_(retryDelay) {
        match_ = bus_.addMatch(nameChangeRule(name), [this](BusMessage& message) {
            if (const auto change = nameChange(message); change && change->name == name_) {
                tell(change->owner);
            }
        });
        stateSubscription_ = bus_.onStateChange([this] { busChanged(); });
        busChanged();
    }

private:
    void busChanged() {
        retry_.reset();
        if (bus_.state() == BusConnection::State::connected) {
            ask();
        } else if (const auto lost = std::exchange(owner_, std::nullopt); lost && !lost->empty()) {
            notify("", NameNews::changed);
        }
    }

    void ask() {
        askBus<std::string>(
            bus_, daemonCall("GetNameOwner"), std::tuple(name_),
            lifeline_.guarded([this](const BusReply<std::string>& reply) { answered(reply); }));
    }

    void answered(const BusReply<std::string>& reply) {
        if (reply.result || reply.error == BusError::nameHasNoOwner) {
            tell(reply.result.value_or(""));
        } else if (!owner_ && bus_.state() == BusConnection::State::connected) {
            retry_ = bus_.loop().after(retryDelay_, [this] { ask(); });
        }
    }

    void tell(const std::string& owner) {
        if (owner_ != owner) {
            const NameNews news = owner_ ? NameNews::changed : NameNews::first;
            owner_ = owner;
            notify(owner, news);
        }
    }

    void notify(const std::string& owner, NameNews news) const {
        // A copy: the listener may destroy this watch.
        const OwnerListener listener = listener_;
        listener(owner, news);
    }

    BusConnection& bus_;
    std::string name_;
    OwnerListener listener_;
    double retryDelay_;
    std::optional<std::string> owner_; ///< unknown until the bus daemon has answered
    RunLoop::Handle retry_;            ///< after a question that failed
    Lifeline lifeline_;
    Subscription stateSubscription_;
    Subscription match_;
};

} // namespace

Subscription watchName(
    BusConnection& bus, const std::string& name, OwnerListener listener, double retryDelay) {
    return std::make_shared<NameWatch>(bus, name, std::move(listener), retryDelay);
}

std::string nameChangeRule(const std::string& name, const char* key) {
    return "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
           "member='NameOwnerChanged',"
           + std::string(key) + "='" + name + "'";
}

std::optional<NameChange> nameChange(BusMessage& message) {
    if (message.sender() != daemonName) {
        return std::nullopt;
    }
    const auto values = message.read<std::string, std::string, std::string>();
    return values ? std::optional(NameChange{.name = std::get<0>(*values), .owner = std::get<2>(*values)})
                  : std::nullopt;
}

} // namespace tarnwick
