#include "app/StatusItemController/Painting/SquareFace.h"

#include <QFontDatabase>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick::SquareFace {

namespace {

// Shares of the side.
constexpr double barsShare = 0.4;        ///< height of the bars below a figure
constexpr double loneFigureShare = 0.62; ///< height of a figure without bars
constexpr double narrowestFigure = 0.74; ///< of its natural width: squeezed further it gets hard to read
constexpr int outlinePixels = 200;       ///< size in which figures are taken from the font

int rounded(double value) {
    return static_cast<int>(std::lround(value));
}

/// One point in whole pixels.
int onePoint(int side) {
    return std::max(1, rounded(side / MenuBarIcon::panelHeight));
}

struct Columns {
    int left;
    int width;
    int gap;

    [[nodiscard]] int total() const { return barLevels * width + (barLevels - 1) * gap; }
};

Columns columns(int side) {
    const int gap = onePoint(side);
    const int width = std::max(1, (side - (barLevels - 1) * gap) / barLevels);
    Columns columns{0, width, gap};
    columns.left = (side - columns.total()) / 2;
    return columns;
}

/// Bars that grow by equal steps to about this height, with feet on `bottom`.
std::vector<QRect> barRects(int side, int bottom, double wantedHeight) {
    const Columns place = columns(side);
    const double slope = (MenuBarIcon::height - MenuBarIcon::smallestBar) / MenuBarIcon::height;
    const int steps = barLevels - 1;
    const int step = std::max(1, rounded(wantedHeight * slope / steps));
    const int first = std::clamp(rounded(wantedHeight) - steps * step, std::min(2, step + 1), step + 1);
    std::vector<QRect> rects;
    for (int index = 0; index < barLevels; ++index) {
        const int height = first + index * step;
        rects.emplace_back(
            place.left + index * (place.width + place.gap), bottom - height, place.width, height);
    }
    return rects;
}

const QFont& figureFont() {
    static const QFont font = [] {
        QFont condensed = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        condensed.setWeight(QFont::Bold);
        condensed.setStretch(QFont::SemiCondensed);
        condensed.setHintingPreference(QFont::PreferNoHinting);
        condensed.setPixelSize(outlinePixels);
        return condensed;
    }();
    return font;
}

/// Height of a digit with straight ends. Round digits are a little higher.
double digitHeight() {
    static const double height = [] {
        QPainterPath one;
        one.addText(0, 0, figureFont(), QStringLiteral("1"));
        return one.boundingRect().height();
    }();
    return height;
}

QRect triangleRect(int side) {
    const QSizeF points = MenuBarIcon::failed()->size();
    const int width = side - 2 * onePoint(side);
    const int height = rounded(width * points.height() / points.width());
    return {(side - width) / 2, (side - height) / 2, width, height};
}

void drawTriangle(QPainter& painter, const QRect& rect) {
    const QSizeF points = MenuBarIcon::failed()->size();
    painter.save();
    painter.translate(rect.topLeft());
    painter.scale(rect.width() / points.width(), rect.height() / points.height());
    painter.fillPath(MenuBarIcon::trianglePath(), Qt::black);
    painter.restore();
}

} // namespace

Content content(const StatusFace& face) {
    if (face.isDown) {
        return {.triangle = true};
    }
    return {
        .figure = QString::fromStdString(face.figure),
        .bars = face.icon == StatusFace::Icon::bars,
        .activeBars = face.activeBars,
    };
}

Layout layout(const Content& content, int side) {
    Layout layout;
    if (content.triangle) {
        layout.triangle = triangleRect(side);
        return layout;
    }
    const bool hasFigure = !content.figure.isEmpty();
    if (content.bars && !hasFigure) {
        const double width = columns(side).total();
        const double iconWidth = MenuBarIcon::bars(0)->size().width();
        layout.bars = barRects(side, 0, width * MenuBarIcon::height / iconWidth);
        const int height = layout.bars.back().height();
        for (QRect& bar : layout.bars) {
            bar.translate(0, (side + height) / 2);
        }
    } else if (content.bars) {
        layout.bars = barRects(side, side, side * barsShare);
        const int gap = onePoint(side);
        // Round digits are a little higher than straight ones. In large squares the figure starts lower, so
        // that they fit.
        const int margin = static_cast<int>(side / MenuBarIcon::panelHeight / 2);
        layout.figure = {0, margin, side, side - layout.bars.back().height() - gap - margin};
    } else if (hasFigure) {
        const int height = rounded(side * loneFigureShare);
        layout.figure = {0, (side - height) / 2, side, height};
    }
    return layout;
}

QPainterPath figurePath(const QString& figure, const QRect& room) {
    QPainterPath outline;
    outline.addText(0, 0, figureFont(), figure);
    const QRectF natural = outline.boundingRect();
    if (natural.isEmpty()) {
        return {};
    }
    const double fullScale = room.height() / digitHeight();
    const double squeeze = room.width() / (natural.width() * fullScale);
    // Feet and heads of the digits lie on whole pixels.
    const double height = squeeze < narrowestFigure
                              ? std::max(1.0, std::floor(room.height() * squeeze / narrowestFigure))
                              : room.height();
    const double scaleY = height / digitHeight();
    const double scaleX = std::min(scaleY, room.width() / natural.width());
    const double baseline = room.top() + std::floor((room.height() + height) / 2);
    QTransform place;
    place.translate(room.left() + (room.width() - natural.width() * scaleX) / 2, baseline);
    place.scale(scaleX, scaleY);
    place.translate(-natural.left(), 0);
    return place.map(outline);
}

void draw(QPainter& painter, const Content& content, int side) {
    const Layout place = layout(content, side);
    painter.setRenderHint(QPainter::Antialiasing);
    if (content.triangle) {
        drawTriangle(painter, place.triangle);
        return;
    }
    if (!content.figure.isEmpty()) {
        painter.fillPath(figurePath(content.figure, place.figure), Qt::black);
    }
    std::vector<MenuBarIcon::Bar> bars;
    for (std::size_t index = 0; index < place.bars.size(); ++index) {
        const bool isActive = static_cast<int>(index) < content.activeBars;
        bars.push_back(
            {place.bars[index], isActive ? MenuBarIcon::activeOpacity : MenuBarIcon::inactiveOpacity});
    }
    // Rounded corners would blur bars as small as these.
    const double scale = side / MenuBarIcon::panelHeight;
    MenuBarIcon::drawBars(painter, bars, side < 32 ? 0 : MenuBarIcon::cornerRadiusPixels(scale));
}

} // namespace tarnwick::SquareFace
