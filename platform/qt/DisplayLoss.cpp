#include "platform/qt/DisplayLoss.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>
#include <QTimer>

#include <cstdlib>
#include <memory>
#include <utility>

namespace tarnwick {

namespace {

/// For the main thread, which may be busy when another thread is about to end the process.
constexpr int patienceMs = 2000;

// The libraries call functions without a context.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
std::function<void()> lossHandler; ///< main thread only
QtMessageHandler previousMessageHandler = nullptr;

// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

void handleLoss() {
    if (lossHandler) {
        lossHandler();
    }
}

/// On Wayland the toolkit calls `_exit`, on the main thread or on one of its own, whichever is first. Each
/// writes a warning before.
void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (previousMessageHandler != nullptr) {
        previousMessageHandler(type, context, text);
    }
    if (!text.startsWith(QLatin1String("The Wayland connection "))) {
        return;
    }
    if (QThread::currentThread() == qApp->thread()) {
        handleLoss();
    } else {
        // Shared: the main thread may come to it after the wait.
        const auto handled = std::make_shared<QSemaphore>();
        const auto handle = [handled] {
            handleLoss();
            handled->release();
        };
        QTimer::singleShot(0, qApp, handle);
        handled->tryAcquire(1, patienceMs);
    }
}

} // namespace

DisplayLoss::DisplayLoss(std::function<void()> onLoss) {
    lossHandler = std::move(onLoss);
    // On X11, and when the session manager goes, the libraries call `exit`.
    [[maybe_unused]] static const int isRegistered = std::atexit(handleLoss);
    previousMessageHandler = qInstallMessageHandler(handleMessage);
}

DisplayLoss::~DisplayLoss() {
    qInstallMessageHandler(previousMessageHandler);
    lossHandler = nullptr;
}

} // namespace tarnwick
