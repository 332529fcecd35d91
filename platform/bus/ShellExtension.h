// Our extension of GNOME Shell, as the shell knows it.
#pragma once

#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"

#include <functional>
#include <string>

namespace tarnwick {

/// Main thread.
class ShellExtension {
public:
    /// `bus` is the session's and outlives it.
    explicit ShellExtension(BusConnection& bus);

    /// `answered` is called later, once, unless this ends before: whether the shell knows the extension and
    /// has it switched off. False also where no such shell runs.
    void askWhetherOff(std::function<void(bool isOff)> answered);

    /// To be called after such an answer. `answered` is called likewise: whether the shell has done it.
    void switchOn(std::function<void(bool isOn)> answered);

private:
    void askForState(const std::function<void(bool)>& answered);

    BusConnection& bus_;
    std::string uuid_; ///< of the one for this version of the shell; empty until it is known
    Lifeline lifeline_;
};

} // namespace tarnwick
