// Another program on the bus, played by a test: a panel, a service, a second start.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

/// Lives on the test's thread: nothing reaches it but in `process`.
class BusPeer {
public:
    explicit BusPeer(const std::string& address);

    [[nodiscard]] sdbus::IConnection& connection() { return *connection_; }

    [[nodiscard]] std::string uniqueName() const { return connection_->getUniqueName(); }

    /// Deals with everything that has come.
    void process();

    struct Target {
        std::string destination;
        std::string path;
        std::string interface;
    };

    struct Answer {
        bool hasCome = false;
        std::string error{}; ///< its name; empty when there was none
        sdbus::MethodReply reply{};

        /// To be read once.
        template<typename Value>
        [[nodiscard]] Value value() {
            Value result{};
            reply >> result;
            return result;
        }
    };

    /// Sends now; the answer comes while processing.
    template<typename... Arguments>
    [[nodiscard]] std::shared_ptr<Answer> call(
        const Target& target, const std::string& method, const Arguments&... arguments) {
        sdbus::IProxy& proxy = proxyFor(target);
        sdbus::MethodCall message = proxy.createMethodCall(target.interface, method);
        (void)(static_cast<sdbus::Message&>(message) << ... << arguments);
        auto answer = std::make_shared<Answer>();
        proxy.callMethod(message, [answer](sdbus::MethodReply& reply, const sdbus::Error* error) {
            answer->hasCome = true;
            if (error != nullptr) {
                answer->error = error->getName();
            } else {
                answer->reply = reply;
            }
        });
        return answer;
    }

    /// From now on, the members of the signals that come, in their order. "PropertiesChanged" is followed by
    /// the names of the properties.
    void recordSignals(const std::string& rule);

    [[nodiscard]] std::vector<std::string> takeSignals() { return std::exchange(signals_, {}); }

private:
    [[nodiscard]] sdbus::IProxy& proxyFor(const Target& target);
    void record(sdbus::Message& message);

    std::unique_ptr<sdbus::IConnection> connection_;
    std::map<std::pair<std::string, std::string>, std::unique_ptr<sdbus::IProxy>> proxies_;
    std::vector<std::string> signals_;
};

} // namespace tarnwick
