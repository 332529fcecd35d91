#include "app/ViewStyle/KeyButton.h"

#include <QKeyEvent>

namespace tarnwick {

void KeyButton::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_Select:
        if (!event->isAutoRepeat()) {
            click();
        }
        return;
    default:
        event->ignore();
    }
}

} // namespace tarnwick
