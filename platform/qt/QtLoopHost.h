// Runs a run loop inside the toolkit's event loop.
#pragma once

#include <QSocketNotifier>

namespace tarnwick {

class EpollRunLoop;

/// The loop's tasks run wherever the toolkit handles events, so also while a dialog or a menu runs an event
/// loop of its own, even inside a task. Main thread; a QCoreApplication and the loop must outlive it.
class QtLoopHost {
public:
    explicit QtLoopHost(EpollRunLoop& loop);

private:
    QSocketNotifier notifier_;
};

} // namespace tarnwick
