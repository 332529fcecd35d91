// Notifications as this desktop shows them: by its notification daemon or, inside a sandbox, through the
// portal.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"
#include "platform/bus/NameClaim.h"
#include "platform/bus/NameWatch.h"
#include "platform/bus/NotificationService.h"
#include "platform/ports/NotificationCenter.h"

#include <cstddef>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

/// Asking may start the service, so nothing is asked before the first notification or request for
/// authorization. A notification that can't be shown yet waits a little for a service and is then dropped:
/// late news mislead. Main thread.
class DesktopNotificationCenter final : public NotificationCenter {
public:
    /// Of this process.
    enum class Surroundings { desktop, sandbox };

    [[nodiscard]] static Surroundings surroundings(bool isSandboxed) {
        return isSandboxed ? Surroundings::sandbox : Surroundings::desktop;
    }

    /// Seconds that a notification waits for an absent or silent bus or service.
    static constexpr double usualPatience = 5;
    /// Notifications that wait; one more drops the oldest.
    static constexpr std::size_t mostWaiting = 8;

    /// `bus` is the session's and outlives it. `iconFolder` holds the program's own icons, laid out as an
    /// icon theme; empty: the desktop's theme may have one. Of the programs with one subject the one of the
    /// first rank shows the notifications, or else the one that has had the subject for longest.
    DesktopNotificationCenter(
        RunLoop& loop, BusConnection& bus, Surroundings surroundings,
        const std::filesystem::path& iconFolder = {}, double patience = usualPatience,
        NameClaim::Rank rank = NameClaim::Rank::first);

    void post(const std::string& title, const std::string& body) override;
    void setSubject(const std::string& subject) override;
    void requestAuthorization() override;

    [[nodiscard]] Ability canNotify() const override { return ability_; }

private:
    struct Waiting {
        std::string title;
        std::string body;
        double deadline; ///< monotonic seconds
    };

    void setAbility(Ability ability);
    void busChanged();
    void serviceChanged(const std::string& owner, NameNews news);
    void findService();
    void probe();
    void probed(bool isThere);
    void showWaiting();
    void dropStale();

    RunLoop& loop_;
    BusConnection& bus_;
    double patience_;
    NameClaim::Rank rank_;
    std::unique_ptr<NotificationService> service_;
    Ability ability_ = Ability::unknown;
    bool isWanted_ = false; ///< there was a request or a notification
    bool isProbing_ = false;
    bool isAskedAgain_ = false; ///< since the present probe began
    std::string subject_;
    std::optional<NameClaim> claim_; ///< while there is a subject
    int probe_ = 0;                  ///< answers to earlier probes are ignored
    std::deque<Waiting> waiting_;
    RunLoop::Handle staleTimer_;
    Lifeline lifeline_;
    Subscription serviceWatch_;
    Subscription stateSubscription_;
};

} // namespace tarnwick
