#include "app/StatusItemController/Painting/MenuBarContent.h"

#include "app/StatusItemController/Painting/TabularLine.h"

#include <QFontDatabase>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick::MenuBarContent {

namespace {

QFont makeFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(13);
    font.setWeight(QFont::Normal);
    // Horizontal lines are fitted to the pixels, while widths stay in proportion at every scale.
    font.setHintingPreference(QFont::PreferVerticalHinting);
    return font;
}

} // namespace

const QFont& font() {
    static const QFont font = makeFont();
    return font;
}

double iconSlot() {
    static const double slot =
        std::ceil(std::max(MenuBarIcon::bars(0)->size().width(), MenuBarIcon::failed()->size().width()));
    return slot;
}

double lineWidth(const QString& text) {
    return std::ceil(TabularLine(font(), text).width());
}

Layout layout(std::optional<QSizeF> iconSize, double textSlot) {
    Layout layout;
    double textX = 0;
    if (iconSize) {
        textX = iconSlot() + textGap;
        layout.iconOrigin = {
            std::round((iconSlot() - iconSize->width()) * 0.5),
            std::round((height - iconSize->height()) * 0.5)};
    }
    layout.textOrigin = {textX, height - baseline};
    layout.size = {textSlot + textX, height};
    return layout;
}

TemplateImagePtr image(const TemplateImagePtr& icon, const QString& title, double textSlot) {
    const Layout parts = layout(icon ? std::optional(icon->size()) : std::nullopt, textSlot);
    const auto draw = [icon, parts, line = TabularLine(font(), title)](QPainter& painter, double scale) {
        const auto pixel = [scale](QPointF point) {
            return QPointF(std::round(point.x() * scale), std::round(point.y() * scale));
        };
        if (icon) {
            painter.save();
            painter.translate(pixel(parts.iconOrigin));
            icon->draw(painter, scale);
            painter.restore();
        }
        painter.setPen(Qt::black);
        line.draw(painter, pixel(parts.textOrigin), scale);
    };
    return std::make_shared<TemplateImage>(parts.size, title, draw);
}

} // namespace tarnwick::MenuBarContent
