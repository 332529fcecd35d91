// What the update window asks before it shows itself.
#pragma once

#include "core/Update/UpdateDecision.h"

namespace tarnwick {

/// The names say who asks: the standard user driver, which is the updater's own window. Main thread.
class UserDriverDelegate {
public:
    UserDriverDelegate() = default;
    UserDriverDelegate(const UserDriverDelegate&) = delete;
    UserDriverDelegate& operator=(const UserDriverDelegate&) = delete;
    virtual ~UserDriverDelegate() = default;

    /// Whether the program has ways of its own to tell of an update that a scheduled check has found.
    [[nodiscard]] virtual bool supportsGentleScheduledUpdateReminders() const = 0;

    /// Whether the window shows such an update; else the program does in its own way. Asked only where there
    /// is one. `inImmediateFocus`: the user is at the program just now.
    [[nodiscard]] virtual bool standardUserDriverShouldHandleShowingScheduledUpdate(
        const FoundUpdate& update, bool inImmediateFocus) = 0;

    /// An update is shown next: by the window, or by the program in its own way where `handleShowingUpdate`
    /// is false. The check was the user's own or a scheduled one.
    virtual void standardUserDriverWillHandleShowingUpdate(
        bool handleShowingUpdate, const FoundUpdate& update, bool isUserInitiated) = 0;

    /// The window says next that the program is up to date, or that something failed.
    virtual void standardUserDriverWillShowModalAlert() = 0;
};

} // namespace tarnwick
