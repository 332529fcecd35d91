// An object on the bus that other programs call: its methods, properties and signals.
#pragma once

#include "platform/bus/BusLink.h"
#include "platform/bus/BusType.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>

namespace tarnwick {

/// What a method gives back when it may also fail.
template<typename Value>
struct BusOutcome {
    std::variant<Value, BusError> content;

    BusOutcome(Value value) : content(std::move(value)) {}

    BusOutcome(BusError error) : content(std::move(error)) {}
};

/// How results travel: none, one, or several as a tuple.
template<typename Result>
struct BusResults {
    static std::string signature() { return BusType<Result>::signature(); }

    static bool send(const BusMessage& call, const Result& result) {
        BusMessage reply = call.reply();
        return reply.append(result) && reply.send();
    }
};

template<>
struct BusResults<NoResult> {
    static std::string signature() { return ""; }

    static bool send(const BusMessage& call, NoResult /*none*/) { return call.reply().send(); }
};

template<typename... Values>
struct BusResults<std::tuple<Values...>> {
    static std::string signature() { return BusType<std::tuple<Values...>>::contents(); }

    static bool send(const BusMessage& call, const std::tuple<Values...>& results) {
        BusMessage reply = call.reply();
        const auto appendAll = [&reply](const auto&... value) { return reply.append(value...); };
        return std::apply(appendAll, results) && reply.send();
    }
};

template<typename Result>
struct BusResults<BusOutcome<Result>> {
    static std::string signature() { return BusResults<Result>::signature(); }

    static bool send(const BusMessage& call, const BusOutcome<Result>& outcome) {
        if (const auto* error = std::get_if<BusError>(&outcome.content)) {
            return call.reply(*error).send();
        }
        return BusResults<Result>::send(call, std::get<Result>(outcome.content));
    }
};

/// One interface at one path of one connection. Everything is declared first and then published. Calls with
/// other arguments than declared, and an exception in a handler, are answered with an error. Its end removes
/// it from the bus; a handler may destroy it. Main thread.
class BusObject {
public:
    /// The names of arguments and results, for tools that show the object: all of them, or none.
    using Names = std::initializer_list<std::string_view>;

    enum class Change {
        silent, ///< changes are reported by a signal of the interface, or not at all
        told,   ///< changes are reported by `emitChange`
    };

    /// `link` outlives it.
    BusObject(BusLink& link, std::string path, std::string interface);
    BusObject(const BusObject&) = delete;
    BusObject& operator=(const BusObject&) = delete;
    ~BusObject();

    /// `handler` takes the arguments as values and returns nothing, a result, a tuple of them, or a
    /// `BusOutcome`.
    template<typename Handler>
    void method(const std::string& name, Names arguments, Names results, Handler handler) {
        addMethod(name, arguments, results, std::function(std::move(handler)));
    }

    template<typename Read>
    void property(const std::string& name, Read read, Change change = Change::silent) {
        using Value = std::invoke_result_t<Read>;
        auto append = [read = std::move(read)](BusMessage& reply) { return reply.append(Value(read())); };
        declareProperty(name, BusType<Value>::signature(), std::move(append), change);
    }

    template<typename... Values>
    void signal(const std::string& name, Names arguments = {}) {
        declareSignal(name, (std::string() + ... + BusType<Values>::signature()), arguments);
    }

    /// False when the connection is going down.
    [[nodiscard]] bool publish();

    template<typename... Values>
    void emit(const std::string& signal, const Values&... values) {
        BusMessage message = newSignal(signal);
        if (message.append(values...)) {
            link_.send(message);
        }
    }

    /// Reads the property and tells its new value.
    void emitChange(const char* property);

private:
    struct Members;

    /// Whether the call was answered.
    using Answer = std::function<bool(BusMessage& call)>;
    using Append = std::function<bool(BusMessage& reply)>;

    template<typename Result, typename... Arguments>
    void addMethod(
        const std::string& name, Names arguments, Names results,
        std::function<Result(Arguments...)> handler) {
        using Sent = std::conditional_t<std::is_void_v<Result>, NoResult, std::decay_t<Result>>;
        auto answer = [handler = std::move(handler)](BusMessage& call) {
            auto values = call.read<std::decay_t<Arguments>...>();
            if (!values) {
                return false;
            }
            if constexpr (std::is_void_v<Result>) {
                std::apply(handler, std::move(*values));
                return BusResults<Sent>::send(call, NoResult());
            } else {
                return BusResults<Sent>::send(call, std::apply(handler, std::move(*values)));
            }
        };
        const std::string signature = (std::string() + ... + BusType<std::decay_t<Arguments>>::signature());
        declareMethod(
            name, signature, BusResults<Sent>::signature(), joined({arguments, results}), std::move(answer));
    }

    [[nodiscard]] static std::string joined(std::initializer_list<Names> lists);
    void declareMethod(
        const std::string& name, std::string arguments, std::string results, std::string names,
        Answer answer);
    void declareProperty(const std::string& name, std::string type, Append append, Change change);
    void declareSignal(const std::string& name, std::string arguments, Names names);
    [[nodiscard]] BusMessage newSignal(const std::string& signal) const;

    BusLink& link_;
    std::string path_;
    std::string interface_;
    std::shared_ptr<Members> members_;
    Subscription published_;
};

} // namespace tarnwick
