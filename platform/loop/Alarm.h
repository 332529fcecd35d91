// Makes a descriptor readable at a given time.
#pragma once

#include "core/FileDescriptor.h"

#include <chrono>
#include <optional>

namespace tarnwick {

/// One system timer on the monotonic clock. Its descriptor stays readable from the time that was set until
/// another is set, so it need not be read.
class Alarm {
public:
    /// Throws std::system_error when the system gives no timer.
    Alarm();

    [[nodiscard]] int descriptor() const { return timer_.get(); }

    /// `time` counts from the clock's zero; nothing: never. Setting the same time again costs nothing.
    void set(std::optional<std::chrono::nanoseconds> time);

private:
    FileDescriptor timer_;
    std::optional<std::chrono::nanoseconds> time_;
};

} // namespace tarnwick
