// Another program on the bus, played by a test: a panel, a service, a second start.
#pragma once

#include "platform/bus/BusLink.h"
#include "platform/bus/BusType.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

/// Lives on the test's thread: nothing reaches it outside of `process`.
class BusPeer {
public:
    /// Waits until it is connected.
    explicit BusPeer(const std::string& address);

    [[nodiscard]] BusLink& link() { return *link_; }

    [[nodiscard]] std::string uniqueName() const { return link_->uniqueName(); }

    /// These wait for the bus daemon.
    void requestName(const std::string& name);
    void releaseName(const std::string& name);

    /// Deals with everything that has come.
    void process();

    struct Target {
        std::string destination;
        std::string path;
        std::string interface;
    };

    struct Answer {
        bool hasCome = false;
        BusMessage reply{};

        /// Empty when there was none.
        [[nodiscard]] std::string error() const { return reply.errorName(); }

        /// The first result. Throws when it has another type.
        template<typename Value>
        [[nodiscard]] Value value() {
            return std::get<0>(reply.read<Value>().value());
        }

        template<typename... Values>
        [[nodiscard]] std::tuple<Values...> values() {
            return reply.read<Values...>().value();
        }
    };

    /// Sends now; the answer comes while processing.
    template<typename... Arguments>
    [[nodiscard]] std::shared_ptr<Answer> call(
        const Target& target, const std::string& method, const Arguments&... arguments) {
        BusMessage message = link_->newCall(target.destination, target.path, target.interface, method);
        auto answer = std::make_shared<Answer>();
        constexpr double patience = 25;
        if (!message.append(arguments...) || !link_->call(message, patience, [answer](BusMessage& reply) {
                answer->hasCome = true;
                answer->reply = reply;
            })) {
            return nullptr;
        }
        return answer;
    }

    /// Where a signal comes from.
    struct Source {
        std::string path;
        std::string interface;
    };

    /// To all programs on the bus, or to one.
    template<typename... Arguments>
    void emit(const Source& source, const std::string& signal, const Arguments&... arguments) {
        emitTo("", source, signal, arguments...);
    }

    template<typename... Arguments>
    void emitTo(
        const std::string& destination, const Source& source, const std::string& signal,
        const Arguments&... arguments) {
        BusMessage message = link_->newSignal(source.path, source.interface, signal);
        setDestination(message, destination);
        sendChecked(message.append(arguments...), message);
    }

    /// Every call of that object, which the handler may leave without an answer.
    [[nodiscard]] Subscription takeCalls(
        const std::string& path, std::function<void(BusMessage& call)> handler);

    /// From now on, the members of the signals that come, in their order. "PropertiesChanged" is followed by
    /// the names of the properties.
    void recordSignals(const std::string& rule);

    [[nodiscard]] std::vector<std::string> takeSignals() { return std::exchange(signals_, {}); }

private:
    static void setDestination(BusMessage& message, const std::string& destination);
    static void sendChecked(bool isComplete, BusMessage& message);
    void record(BusMessage& message);

    std::unique_ptr<BusLink> link_;
    std::vector<std::string> signals_;
    std::vector<Subscription> recorded_;
};

} // namespace tarnwick
