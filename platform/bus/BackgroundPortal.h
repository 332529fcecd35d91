// The login item of programs inside a sandbox: the desktop is asked through its portal.
#pragma once

#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"
#include "platform/ports/LoginItem.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// The portal does not tell what it has granted, so the latest answer is remembered. Until the portal, or a
/// person whom it asks, has answered, the item is as it was asked for. A request ends without an answer when
/// the bus or the portal goes, and when another one follows it. Main thread.
class BackgroundPortal final : public LoginItem {
public:
    static constexpr auto noPortal =
        "Can’t be set from inside a sandbox. Add Tarnwick to what your desktop starts.";
    static constexpr auto refused = "Your desktop does not let Tarnwick start with the session.";

    struct Needs {
        BusConnection& bus;               ///< the session's; outlives the item
        std::vector<std::string> command; ///< as inside the sandbox
        /// Whether the portal has granted it; both last from run to run.
        std::function<bool()> isGranted;
        std::function<void(bool)> remember;
    };

    explicit BackgroundPortal(Needs needs);

    [[nodiscard]] Status status() const override;
    [[nodiscard]] std::optional<std::string> enroll() override;
    [[nodiscard]] std::optional<std::string> withdraw() override;

private:
    struct Request {
        bool toStart = false;
        std::string token;
        Subscription answer{};
        Subscription portal{};
    };

    [[nodiscard]] std::optional<std::string> ask(bool toStart);
    [[nodiscard]] Subscription awaitAnswer(const Request& request);
    [[nodiscard]] Subscription awaitEndOfPortal();
    void answered(const std::string& failure);

    Needs needs_;
    std::optional<Request> request_; ///< while the portal is asked
    Lifeline lifeline_;
};

} // namespace tarnwick
