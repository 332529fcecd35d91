// Notifications as this desktop shows them: by its notification daemon or, inside a sandbox, through the
// portal.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"
#include "platform/bus/NotificationService.h"
#include "platform/ports/NotificationCenter.h"

#include <cstddef>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>

namespace tarnwick {

/// Nobody is asked, and so nobody is started, before there is something to show or authorization is
/// requested. What can't be shown yet waits a little for somebody who can, and is dropped after that: news
/// that come late mislead. Main thread.
class DesktopNotificationCenter final : public NotificationCenter {
public:
    enum class Surroundings { desktop, sandbox };

    /// Those that this process is in.
    [[nodiscard]] static Surroundings surroundings();

    /// A notification waits at most so many seconds for the bus and the service, absent or silent.
    static constexpr double usualPatience = 5;
    /// And the oldest gives way when so many wait.
    static constexpr std::size_t mostWaiting = 8;

    /// `bus` is the session's and outlives it. `iconFolder` holds the program's own icons, laid out as an
    /// icon theme; empty: it is left to the desktop's theme to have one.
    DesktopNotificationCenter(
        RunLoop& loop, BusConnection& bus, Surroundings surroundings,
        const std::filesystem::path& iconFolder = {}, double patience = usualPatience);

    void post(const std::string& title, const std::string& body) override;
    void requestAuthorization() override;

    [[nodiscard]] Ability canNotify() const override { return ability_; }

private:
    struct Waiting {
        std::string title;
        std::string body;
        double deadline; ///< monotonic seconds
    };

    void busChanged();
    void serviceChanged(bool isThere);
    void findService();
    void probe();
    void probed(bool isThere);
    void showWaiting();
    void dropStale();

    RunLoop& loop_;
    BusConnection& bus_;
    double patience_;
    std::unique_ptr<NotificationService> service_;
    Ability ability_ = Ability::unknown;
    bool isWanted_ = false; ///< somebody has asked, or posted
    bool isProbing_ = false;
    bool isAskedAgain_ = false; ///< since the present probe began
    int probe_ = 0;             ///< answers to earlier ones come too late
    std::deque<Waiting> waiting_;
    RunLoop::Handle staleTimer_;
    Lifeline lifeline_;
    Subscription stateSubscription_;
    Subscription serviceMatch_;
};

} // namespace tarnwick
