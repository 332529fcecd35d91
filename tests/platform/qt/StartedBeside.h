// Waiting for what becomes of programs that are started beside this one.
#pragma once

#include "platform/qt/DesktopOpener.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <functional>
#include <optional>

namespace tarnwick::test {

/// The answer about a program that `start` starts; nothing without one in time.
[[nodiscard]] inline std::optional<bool> answerOf(const std::function<void(DesktopOpened)>& start) {
    std::optional<bool> answer;
    start([&answer](bool isOpened) { answer = isOpened; });
    QElapsedTimer timer;
    timer.start();
    while (!answer && !timer.hasExpired(20'000)) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return answer;
}

} // namespace tarnwick::test
