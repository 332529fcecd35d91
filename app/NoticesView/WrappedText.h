// A text in as many lines as it needs at a width.
#pragma once

#include <QFont>
#include <QString>
#include <QTextLayout>

class QPainter;

namespace tarnwick {

/// Breaks at blanks, and inside words that are wider than a line.
class WrappedText {
public:
    WrappedText(const QFont& font, const QString& text, double width);

    [[nodiscard]] int height() const { return height_; }

    /// In the painter's color.
    void draw(QPainter& painter, QPointF topLeft) const;

private:
    QTextLayout layout_;
    int height_;
};

} // namespace tarnwick
