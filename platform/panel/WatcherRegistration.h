// Registers the status item with the watcher, which keeps the list of such items; again with each new one.
#pragma once

#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"

#include <functional>
#include <string>

namespace tarnwick {

/// Some panels lose an item that was registered before they started: the watcher answers, but no panel reads
/// the item. An item that is still unread some time after registering is registered again, a bounded number
/// of times. Main thread.
class WatcherRegistration {
public:
    static constexpr double usualPatience = 3.5; ///< seconds
    static constexpr int mostRepetitions = 5;

    /// The references outlive it. `wasRead` tells whether a panel has read the item since the latest call of
    /// `forgetReaders`.
    struct Needs {
        RunLoop& loop;
        BusConnection& bus;
        std::function<bool()> wasRead;
        std::function<void()> forgetReaders;
    };

    explicit WatcherRegistration(Needs needs, double patience = usualPatience);

    /// The item's name on the bus; empty while it has none.
    void setService(const std::string& service);
    /// The watcher's unique name; empty while there is none.
    void setWatcher(const std::string& watcher);

private:
    void start();
    void registerItem();
    void check();

    Needs needs_;
    double patience_;
    std::string service_;
    std::string watcher_;
    int repetitions_ = 0;
    RunLoop::Handle checkTimer_;
};

} // namespace tarnwick
