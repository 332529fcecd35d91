#include "platform/qt/TrayStatusItem.h"

#include "platform/qt/FaceIcon.h"
#include "platform/qt/ScreenPixels.h"

#include <QCursor>
#include <QTextDocument>

namespace tarnwick {

TrayStatusItem::TrayStatusItem(const FacePainter& painter, Ink ink) : painter_(painter), ink_(ink) {
    QObject::connect(&icon_, &QSystemTrayIcon::activated, &icon_, [this] {
        if (onActivate) {
            onActivate(bottomCenter());
        }
    });
    showFace();
    icon_.show();
}

void TrayStatusItem::setFace(const StatusFace& face) {
    face_ = face;
    showFace();
}

void TrayStatusItem::setToolTip(const std::string& text) {
    // The toolkit takes some plain texts for markup: such a text is handed over as markup.
    const QString plain = QString::fromStdString(text);
    icon_.setToolTip(Qt::mightBeRichText(plain) ? Qt::convertFromPlainText(plain) : plain);
}

void TrayStatusItem::setInk(Ink ink) {
    ink_ = ink;
    showFace();
}

void TrayStatusItem::showFace() {
    icon_.setIcon(faceIcon(face_, painter_, ink_));
}

std::optional<ScreenPoint> TrayStatusItem::bottomCenter() const {
    const QRect place = icon_.geometry();
    return ScreenPixels::of(place.isValid() ? QPoint(place.center().x(), place.bottom()) : QCursor::pos());
}

} // namespace tarnwick
