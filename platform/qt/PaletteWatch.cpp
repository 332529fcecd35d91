#include "platform/qt/PaletteWatch.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace tarnwick {

PaletteWatch::PaletteWatch(std::function<void()> onChange) : onChange_(std::move(onChange)) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool PaletteWatch::eventFilter(QObject* watched, QEvent* event) {
    if (watched == QCoreApplication::instance() && event->type() == QEvent::ApplicationPaletteChange) {
        onChange_();
    }
    return false;
}

} // namespace tarnwick
