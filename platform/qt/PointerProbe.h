// Finds the pointer on a Wayland desktop.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/StatusItem.h"
#include "platform/qt/ScreenOverlay.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QScreen;

namespace tarnwick {

/// A Wayland compositor tells a program where the pointer is when it comes into a window of the program. So
/// transparent windows cover all screens, panels as well, until it is found. Main thread.
class PointerProbe {
public:
    /// In seconds. The compositor waits for the end of a click before it tells.
    static constexpr double patience = 1;

    /// `onFound` is called once, in a later turn of the loop: with the place in the units of windows, or
    /// without one when the patience has ended. The windows are gone then. It may destroy the probe. The
    /// references outlive it.
    PointerProbe(
        RunLoop& loop, Wayland::LayerShell& shell, std::function<void(std::optional<ScreenPoint>)> onFound);
    PointerProbe(const PointerProbe&) = delete;
    PointerProbe& operator=(const PointerProbe&) = delete;
    ~PointerProbe();

private:
    class Window;

    void end(std::optional<ScreenPoint> found);

    RunLoop& loop_;
    std::function<void(std::optional<ScreenPoint>)> onFound_;
    std::vector<std::unique_ptr<Window>> windows_;
    RunLoop::Handle timer_;
};

} // namespace tarnwick
