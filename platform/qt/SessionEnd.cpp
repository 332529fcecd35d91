#include "platform/qt/SessionEnd.h"

#include <QGuiApplication>
#include <QSessionManager>

#include <utility>

namespace tarnwick {

SessionEnd::SessionEnd(std::function<void()> onEnd) {
    const auto answer = [onEnd = std::move(onEnd)](QSessionManager& manager) {
        manager.setRestartHint(QSessionManager::RestartNever);
        onEnd();
    };
    QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, &receiver_, answer, Qt::DirectConnection);
    QObject::connect(qGuiApp, &QGuiApplication::saveStateRequest, &receiver_, answer, Qt::DirectConnection);
}

} // namespace tarnwick
