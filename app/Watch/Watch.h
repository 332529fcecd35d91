// The terminal program around the model: when it shows the reading, and its end.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/Watch/Presentation.h"

#include <memory>

namespace tarnwick {

class Watch {
public:
    /// Loop and monitor outlive it.
    Watch(RunLoop& loop, Monitor& monitor, std::unique_ptr<Presentation> presentation);

    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch();

    /// Starts the monitor and shows it from now on.
    void start();

    void windowResized() { presentation_->windowResized(); }

private:
    RunLoop& loop_;
    Monitor& monitor_;
    std::unique_ptr<Presentation> presentation_;
};

} // namespace tarnwick
