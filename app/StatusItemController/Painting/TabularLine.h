// A line of text whose digits are all equally wide, with any font.
#pragma once

#include <QFont>
#include <QPointF>
#include <QString>

#include <vector>

class QPainter;

namespace tarnwick {

class TabularLine {
public:
    /// `font` gives its size in pixels or in points.
    TabularLine(const QFont& font, const QString& text);

    /// In the units of the font's pixels.
    [[nodiscard]] double width() const { return width_; }

    /// With the start of its baseline at `origin` and the painter's pen, `scale` times as large.
    void draw(QPainter& painter, QPointF origin, double scale = 1) const;

private:
    struct Piece {
        QString text;
        double x;
    };

    QFont font_;
    std::vector<Piece> pieces_;
    double width_ = 0;
};

} // namespace tarnwick
