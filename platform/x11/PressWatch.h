// Mouse buttons pressed and released anywhere on an X11 display, also outside this program's windows.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/StatusItem.h"
#include "platform/x11/X11Connection.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace tarnwick::X11 {

/// Tells of presses in other programs' windows and on the bare desktop; those still get them. Needed because
/// some desktops leave the keyboard with a window after a click elsewhere. Without an X11 display, or with
/// one too old to tell, it does nothing. Main thread.
class PressWatch {
public:
    struct Buttons {
        std::optional<ScreenPoint> pressedAt; ///< pixel of the whole desktop; absent: no press
        bool isHeld = false;                  ///< the button that moved last is still down
    };

    /// `onButtons` is called after buttons were pressed or released; a wheel is no button.
    PressWatch(RunLoop& loop, std::function<void(const Buttons&)> onButtons);

    PressWatch(const PressWatch&) = delete;
    PressWatch& operator=(const PressWatch&) = delete;

private:
    struct Moved {
        bool pressed = false;
        bool released = false;
    };

    bool selectButtons();
    void readAvailable();
    [[nodiscard]] Moved takeEvents();
    [[nodiscard]] std::optional<ScreenPoint> pointer() const;

    std::function<void(const Buttons&)> onButtons_;
    ConnectionPtr connection_;
    std::uint32_t root_ = 0;
    bool isHeld_ = false;
    RunLoop::Handle watch_;
};

} // namespace tarnwick::X11
