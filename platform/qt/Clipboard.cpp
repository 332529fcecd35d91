#include "platform/qt/Clipboard.h"

#include "platform/qt/WindowSystem.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QWindow>

namespace tarnwick::Clipboard {

void copy(const std::string& text) {
    const QString copied = QString::fromStdString(text);
    QGuiApplication::clipboard()->setText(copied);
    if (QGuiApplication::focusWindow() != nullptr || !WindowSystem::isWayland()) {
        return;
    }
    QObject::connect(
        qGuiApp, &QGuiApplication::focusWindowChanged, qGuiApp,
        [copied] { QGuiApplication::clipboard()->setText(copied); },
        // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): the toolkit's flags are joined so
        Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
}

} // namespace tarnwick::Clipboard
