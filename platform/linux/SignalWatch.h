// Signals as events of the run loop.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"

#include <functional>
#include <initializer_list>

namespace tarnwick {

/// Blocks the signals for good and reports each through `onSignal` on the main thread. Make it before any
/// thread starts, so that all inherit the block, or call `block` or `endProcessUntilWatched` before. Where
/// the system can't report signals in this way, they keep their effect. A hang-up that is ignored at the
/// start, as `nohup` does it, stays ignored.
class SignalWatch {
public:
    /// Blocks them in this thread and in those that it starts.
    static void block(std::initializer_list<int> signals);

    /// For a start that may take long while there is nothing to save: until a watch is made, the signals end
    /// the process at once, with status 0. After that, threads that were started before the watch pass them
    /// on to the main thread, where the watch reports them.
    static void endProcessUntilWatched(std::initializer_list<int> signals);

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
