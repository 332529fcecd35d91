// Termination and window signals as events of the run loop, never as interruptions.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"

#include <initializer_list>

namespace tarnwick {

/// Blocks the signals for good and reports each through `onSignal` on the main thread. To be made before any
/// thread starts, so that all inherit the block; where that can't be, `block` is called before. Where the
/// system can report none so, they keep their effect.
class SignalWatch {
public:
    /// For this thread and those that it starts.
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
