#include "tests/app/views/ReadmePictures.h"

#include "platform/qt/Appearance.h"
#include "tests/app/views/Scenes.h"
#include "tests/support/MadeLocale.h"
#include "tests/support/Variable.h"

#include <QApplication>
#include <QDir>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tarnwick {

namespace {

using namespace scenes;

using Form = StatusItem::Form;

constexpr double titleBarHeight = 36;
constexpr double frameRadius = 10;
constexpr double frameMargin = 14; ///< around a window, for its shadow
constexpr int panelHeight = 44;    ///< in pixels, twice that of a small panel
constexpr int panelGap = 16;

/// Fonts of the desktops that most people have, the best known first.
void useUsualFont() {
    for (const char* const family : {"Noto Sans", "Cantarell", "DejaVu Sans"}) {
        if (QFontDatabase::families().contains(QLatin1String(family))) {
            QFont font(family);
            font.setPointSizeF(QApplication::font().pointSizeF());
            QApplication::setFont(font);
            return;
        }
    }
}

/// Soft, and dropped a little, as desktops draw it.
void drawWindowShadow(QPainter& painter, const QRectF& window) {
    painter.setPen(Qt::NoPen);
    for (int ring = 11; ring > -6; --ring) {
        const double share = (12 - ring) / 17.0;
        painter.setBrush(QColor::fromRgbF(0, 0, 0, static_cast<float>(0.034 * share * share)));
        painter.drawRoundedRect(
            window.adjusted(-ring, -ring, ring, ring).translated(0, 3), frameRadius + ring,
            frameRadius + ring);
    }
}

void drawTitleBar(QPainter& painter, const QRectF& bar, const QString& title) {
    const QColor text = QApplication::palette().color(QPalette::WindowText);
    QFont font = QApplication::font();
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    painter.setPen(text);
    painter.drawText(bar, Qt::AlignCenter, title);
    QColor quiet = text;
    quiet.setAlphaF(0.1F);
    const QPointF middle(bar.right() - 20, bar.center().y());
    painter.setPen(Qt::NoPen);
    painter.setBrush(quiet);
    painter.drawEllipse(middle, 11, 11);
    painter.setPen(QPen(text, 1.4, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(middle + QPointF(-3.5, -3.5), middle + QPointF(3.5, 3.5));
    painter.drawLine(middle + QPointF(-3.5, 3.5), middle + QPointF(3.5, -3.5));
}

/// In the frame that a desktop gives a window.
QImage framed(const QImage& content, const QString& title) {
    const double ratio = content.devicePixelRatio();
    const QSizeF inside = content.size() / ratio;
    const QRectF window(frameMargin, frameMargin, inside.width(), inside.height() + titleBarHeight);
    const QSizeF whole = window.size() + QSizeF(2 * frameMargin, 2 * frameMargin);
    QImage picture((whole * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    drawWindowShadow(painter, window);
    QPainterPath shape;
    shape.addRoundedRect(window, frameRadius, frameRadius);
    painter.setClipPath(shape);
    painter.fillRect(window, QApplication::palette().color(QPalette::Window));
    painter.drawImage(window.topLeft() + QPointF(0, titleBarHeight), content);
    drawTitleBar(painter, {window.topLeft(), QSizeF(inside.width(), titleBarHeight)}, title);
    QColor line = QApplication::palette().color(QPalette::WindowText);
    line.setAlphaF(0.18F);
    painter.setClipping(false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(line, 1));
    painter.drawRoundedRect(window.adjusted(0.5, 0.5, -0.5, -0.5), frameRadius, frameRadius);
    return picture;
}

std::vector<StatusFace> facesOfADay() {
    using Icon = StatusFace::Icon;
    return {
        face(Icon::bars, 5, "9ms", "9"),
        face(Icon::bars, 4, "142ms", "142"),
        face(Icon::bars, 3, "0.3s (3%)", "0.3s"),
        face(Icon::bars, 1, "1.2s (15%)", "1.2s"),
        face(Icon::bars, 0, "…", "…"),
        face(Icon::failed, 0, "Failed", ""),
    };
}

/// A small panel with one face in the middle of each of its cells.
QImage panelWith(Form form, Ink ink, int cell) {
    const std::vector<StatusFace> faces = facesOfADay();
    QImage panel(cell * static_cast<int>(faces.size()), panelHeight, QImage::Format_ARGB32_Premultiplied);
    panel.fill(Qt::transparent);
    QPainter painter(&panel);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink == Ink::light ? QColor(0x2b, 0x2e, 0x36) : QColor(0xe9, 0xea, 0xed));
    painter.drawRoundedRect(panel.rect(), 8, 8);
    int left = 0;
    for (const StatusFace& each : faces) {
        const QImage image = painted(each, form, panelHeight, ink);
        painter.drawImage(left + (cell - image.width()) / 2, 0, image);
        left += cell;
    }
    return panel;
}

/// Wide faces above square ones, on a light panel and on a dark one, all at the same pitch.
QImage panels() {
    int cell = 0;
    for (const StatusFace& each : facesOfADay()) {
        cell = std::max(cell, painted(each, Form::wide, panelHeight, Ink::dark).width() + 28);
    }
    std::vector<QImage> all;
    for (const Form form : {Form::wide, Form::square}) {
        for (const Ink ink : {Ink::dark, Ink::light}) {
            all.push_back(panelWith(form, ink, cell));
        }
    }
    const int count = static_cast<int>(all.size());
    QImage picture(
        all.front().width(), count * panelHeight + (count - 1) * panelGap,
        QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    int y = 0;
    for (const QImage& panel : all) {
        painter.drawImage(0, y, panel);
        y += panelHeight + panelGap;
    }
    return picture;
}

} // namespace

void drawReadmePictures(const QDir& folder) {
    const test::MadeLocale locale("en_US");
    const test::Variable language("LC_ALL", locale.name());
    useUsualFont();
    WatchedMonitor busy;
    watchBusily(busy);
    WatchedMonitor changed;
    changeSomeSettings(changed);
    WatchedMonitor down;
    loseProvider(down);
    simulation::FakeLoginItem loginItem;
    loginItem.now = LoginItem::Status::enabled;
    for (const bool isDark : {false, true}) {
        Appearance::prefer(isDark);
        const QString end = isDark ? "-dark.png" : "-light.png";
        grabDropDown(busy, false, 0, "README").save(folder.filePath("drop-down" + end));
        framed(grabOutages(), "Tarnwick Outages").save(folder.filePath("outages" + end));
        grabVerdict(down).save(folder.filePath("verdict" + end));
        framed(grabSettings(changed, loginItem), "Tarnwick Settings").save(folder.filePath("settings" + end));
        framed(grabUpdate(Updating::Found{someUpdate(), true}), "Software Update")
            .save(folder.filePath("update" + end));
    }
    panels().save(folder.filePath("faces.png"));
}

} // namespace tarnwick
