// Presses of mouse buttons anywhere on an X11 display, also where they are no concern of this program's.
#pragma once

#include "core/RunLoop.h"
#include "platform/StatusItem.h"

#include <functional>
#include <memory>

struct xcb_connection_t;

namespace tarnwick {

/// Tells of presses in other programs' windows and on the bare desktop, without taking them away. Some
/// desktops leave the keyboard with a window although the user has clicked elsewhere. Does nothing where
/// there is no X11 display, or one that can't tell. Main thread.
class PressWatch {
public:
    /// `onPress` is called with where the pointer is, in pixels of the whole desktop.
    PressWatch(RunLoop& loop, std::function<void(ScreenPoint)> onPress);

    PressWatch(const PressWatch&) = delete;
    PressWatch& operator=(const PressWatch&) = delete;

    /// Whether presses are told here.
    [[nodiscard]] bool isWatching() const { return watch_ != nullptr; }

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };

    bool selectPresses();
    void readAvailable();

    std::function<void(ScreenPoint)> onPress_;
    std::unique_ptr<xcb_connection_t, Disconnect>
        connection_; ///< its own: the toolkit's tells of its windows only
    std::uint32_t root_ = 0;
    RunLoop::Handle watch_;
};

} // namespace tarnwick
