// Mouse buttons pressed and released anywhere on an X11 display, also where they are no concern of this
// program's.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/StatusItem.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

struct xcb_connection_t;

namespace tarnwick {

/// Tells of presses in other programs' windows and on the bare desktop, without taking them away. Some
/// desktops leave the keyboard with a window although the user has clicked elsewhere. Does nothing where
/// there is no X11 display, or one that can't tell. Main thread.
class PressWatch {
public:
    struct Buttons {
        std::optional<ScreenPoint> pressedAt; ///< in pixels of the whole desktop; absent: none was pressed
        bool isHeld = false;                  ///< the last one that moved is still down
    };

    /// `onButtons` is called when buttons have been pressed or released; wheels are not buttons.
    PressWatch(RunLoop& loop, std::function<void(const Buttons&)> onButtons);

    PressWatch(const PressWatch&) = delete;
    PressWatch& operator=(const PressWatch&) = delete;

    /// Whether buttons are told here.
    [[nodiscard]] bool isWatching() const { return watch_ != nullptr; }

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };

    struct Moved {
        bool pressed = false;
        bool released = false;
    };

    bool selectButtons();
    void readAvailable();
    [[nodiscard]] Moved takeEvents();
    [[nodiscard]] std::optional<ScreenPoint> pointer() const;

    std::function<void(const Buttons&)> onButtons_;
    std::unique_ptr<xcb_connection_t, Disconnect>
        connection_; ///< its own: the toolkit's tells of its windows only
    std::uint32_t root_ = 0;
    bool isHeld_ = false;
    RunLoop::Handle watch_;
};

} // namespace tarnwick
