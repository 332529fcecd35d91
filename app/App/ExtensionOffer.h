// Offers once to switch our extension of GNOME Shell on.
#pragma once

#include "app/Monitor/Monitor.h"
#include "platform/bus/ShellExtension.h"

#include <filesystem>

namespace tarnwick {

/// A notice, until the user has answered it. Main thread.
class ExtensionOffer {
public:
    /// A file at `answered` remembers that the user has answered. `bus` and `monitor` outlive this.
    ExtensionOffer(BusConnection& bus, Monitor& monitor, std::filesystem::path answered);

    /// Called once; offers where the shell knows the extension and has it switched off.
    void start();
    void answer(bool switchOn);

private:
    void ask();
    void remember();

    BusConnection& bus_;
    Monitor& monitor_;
    std::filesystem::path answered_;
    ShellExtension extension_;
    Subscription stateSubscription_;
};

} // namespace tarnwick
