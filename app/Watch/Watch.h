// The terminal program around the model: when it shows the reading, and which notes it adds.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/Watch/Presentation.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

class Watch {
public:
    struct Needs {
        RunLoop& loop;
        Monitor& monitor;
        /// What must be changed before this user may ping; nothing when that is not the obstacle.
        std::function<std::optional<std::string>()> missingPingPermission;
    };

    Watch(Needs needs, std::unique_ptr<Presentation> presentation);

    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch();

    /// Starts the monitor and shows it from now on.
    void start();

    void windowResized() { presentation_->windowResized(); }

private:
    void updateNotes();

    Needs needs_;
    std::unique_ptr<Presentation> presentation_;
    std::vector<std::string> notes_;
    std::optional<Recording> notedRecording_; ///< what the notes were made from
    std::optional<PingError> notedError_;     ///< likewise
    std::unique_ptr<RenderLoop> noteLoop_;
};

} // namespace tarnwick
