#include "app/StatusMenuView/MenuIcons.h"

#include <QIcon>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <cmath>

namespace tarnwick {

namespace {

QPixmap ownIcon(const QString& name, int pixels) {
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(":/tarnwick/icons/" + name + ".svg");
    if (renderer.isValid()) {
        QPainter painter(&pixmap);
        renderer.render(&painter);
    }
    return pixmap;
}

QPixmap draw(const QString& name, int pixels, const QColor& color) {
    const QPixmap ofTheme = QIcon::fromTheme(name).pixmap(QSize(pixels, pixels), 1);
    QPixmap mask = ofTheme.width() == pixels && ofTheme.height() == pixels ? ofTheme : ownIcon(name, pixels);
    QPainter painter(&mask);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(mask.rect(), color);
    return mask;
}

} // namespace

QPixmap menuIcon(const QString& name, int side, const QColor& color, double pixelRatio) {
    const int pixels = static_cast<int>(std::lround(side * pixelRatio));
    const QString key =
        QStringLiteral("menu icon %1 %2 %3").arg(name).arg(pixels).arg(color.name(QColor::HexArgb));
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = draw(name, pixels, color);
        QPixmapCache::insert(key, pixmap);
    }
    pixmap.setDevicePixelRatio(pixelRatio);
    return pixmap;
}

} // namespace tarnwick
