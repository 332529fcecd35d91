#include "platform/qt/TrayStatusItem.h"

#include "platform/qt/FaceIcon.h"
#include "platform/qt/ScreenPixels.h"

#include <QCursor>
#include <QTextDocument>

#include <utility>

namespace tarnwick {

TrayStatusItem::TrayStatusItem(const FacePainter& painter, Ink ink) : painter_(painter), ink_(ink) {
    QObject::connect(&icon_, &QSystemTrayIcon::activated, &icon_, [this] {
        if (onActivate) {
            onActivate(bottomCenter());
        }
    });
    drawFace();
    icon_.show();
}

void TrayStatusItem::show(const ItemState& state) {
    const ItemState before = std::exchange(state_, state);
    if (state.face != before.face || state.ink != before.ink) {
        drawFace();
    }
    if (state.toolTip != before.toolTip) {
        // The toolkit takes some plain texts for markup: such a text is handed over as markup.
        const QString plain = QString::fromStdString(state.toolTip);
        icon_.setToolTip(Qt::mightBeRichText(plain) ? Qt::convertFromPlainText(plain) : plain);
    }
}

void TrayStatusItem::setInk(Ink ink) {
    ink_ = ink;
    drawFace();
}

void TrayStatusItem::drawFace() {
    Ink ink = ink_;
    if (state_.ink != InkChoice::automatic) {
        ink = state_.ink == InkChoice::light ? Ink::light : Ink::dark;
    }
    icon_.setIcon(faceIcon(state_.face, painter_, ink));
}

std::optional<ScreenPoint> TrayStatusItem::bottomCenter() const {
    const QRect place = icon_.geometry();
    return ScreenPixels::of(place.isValid() ? QPoint(place.center().x(), place.bottom()) : QCursor::pos());
}

} // namespace tarnwick
