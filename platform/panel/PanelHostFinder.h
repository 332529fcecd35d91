// Finds out which panel shows the status items, and notices when it comes or goes.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"
#include "platform/panel/PanelHosts.h"

#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace tarnwick {

/// Main thread.
class PanelHostFinder {
public:
    /// All names that a process goes by, the usual one first. Empty when the process is gone.
    using ProcessNames = std::function<std::vector<std::string>(unsigned pid)>;

    static constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
    /// Seconds after a question that failed until the bus is asked again.
    static constexpr double usualRetryDelay = 30;

    /// `bus` outlives it.
    explicit PanelHostFinder(
        BusConnection& bus, ProcessNames processNames, double retryDelay = usualRetryDelay);

    [[nodiscard]] const PanelHost& host() const { return *host_; }

    /// The unique name of the connection that keeps the list of items; empty while there is none, and while
    /// no panel shows that list.
    [[nodiscard]] std::string watcher() const;

    /// Told when the panel or the watcher changes.
    std::function<void()> onChange;

private:
    struct Owner {
        std::string uniqueName;
        std::string process{}; ///< empty until it is known
    };

    template<typename Result, typename... Arguments, typename Answered>
    void ask(const char* method, const std::tuple<Arguments...>& arguments, Answered answered);
    void lookAgainLater();

    void busChanged();
    void lookAround();
    void namesListed(const std::vector<std::string>& names);
    void setOwner(const std::string& name, const std::string& uniqueName);
    void askProcess(const std::string& name, const std::string& uniqueName);
    [[nodiscard]] std::string watcherOwner() const;
    /// Asks the watcher whether a panel shows its list.
    void askForHost();
    void setShownByHost(bool isShown);
    void decide();

    BusConnection& bus_;
    ProcessNames processNames_;
    double retryDelay_;
    std::map<std::string, Owner> owners_; ///< of the watcher's name and of the panels' names
    const PanelHost* host_;
    std::string decidedWatcher_;
    bool isShownByHost_ = false; ///< what the present watcher says
    RunLoop::Handle retry_;      ///< after a question that failed
    Lifeline lifeline_;
    Subscription stateSubscription_;
    Subscription ownerMatch_;
    Subscription hostMatch_;
};

} // namespace tarnwick
