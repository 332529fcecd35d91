// The end of the display: the toolkit then ends the process.
#pragma once

#include <functional>

namespace tarnwick {

/// Calls `onLoss` on the main thread when the X server, the compositor or the session manager has gone. The
/// toolkit ends the process as soon as it returns, without coming back to its event loop: save there. It may
/// be called twice. Needs a QGuiApplication; one at a time.
class DisplayLoss {
public:
    explicit DisplayLoss(std::function<void()> onLoss);
    DisplayLoss(const DisplayLoss&) = delete;
    DisplayLoss& operator=(const DisplayLoss&) = delete;
    ~DisplayLoss();
};

} // namespace tarnwick
