#include "platform/qt/QtLoopHost.h"

#include "platform/loop/EpollRunLoop.h"

namespace tarnwick {

QtLoopHost::QtLoopHost(EpollRunLoop& loop) : notifier_(loop.descriptor(), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [&loop] { loop.runReady(); });
}

} // namespace tarnwick
