#include "app/App/ProgramIcon.h"

#include "platform/ports/ApplicationId.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace tarnwick {

namespace {

/// Painted here: the toolkit reads such a file as an icon only with a plug-in, which Debian 13 packages
/// apart.
QIcon builtInIcon() {
    QSvgRenderer renderer(QStringLiteral(":/tarnwick/icons/tarnwick.svg"));
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 96, 128, 192, 256}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

QIcon programIcon() {
    const QIcon ofTheme = QIcon::fromTheme(QLatin1String(applicationId));
    return ofTheme.availableSizes().isEmpty() ? builtInIcon() : ofTheme;
}

} // namespace tarnwick
