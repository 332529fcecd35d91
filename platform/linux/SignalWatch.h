// Signals as events of the run loop.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"

#include <functional>
#include <initializer_list>

namespace tarnwick {

/// Blocks the signals for good and reports each through `onSignal` on the main thread. Make it before any
/// thread starts, so that all inherit the block, or call `block` before. Where the system can't report
/// signals in this way, they keep their effect.
class SignalWatch {
public:
    /// Blocks them in this thread and in those that it starts.
    static void block(std::initializer_list<int> signals);

    SignalWatch(RunLoop& loop, std::initializer_list<int> signals, std::function<void(int)> onSignal);

    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

private:
    void readAvailable();

    std::function<void(int)> onSignal_;
    FileDescriptor descriptor_;
    RunLoop::Handle watch_;
};

} // namespace tarnwick
