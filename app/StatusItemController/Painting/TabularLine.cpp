#include "app/StatusItemController/Painting/TabularLine.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <array>

namespace tarnwick {

namespace {

bool isDigit(QChar character) {
    return character >= u'0' && character <= u'9';
}

/// Advances of the ten digits.
class DigitWidths {
public:
    explicit DigitWidths(const QFontMetricsF& metrics) {
        for (std::size_t digit = 0; digit < advances_.size(); ++digit) {
            advances_[digit] = metrics.horizontalAdvance(QChar(static_cast<char16_t>(u'0' + digit)));
        }
        const auto [narrowest, widest] = std::ranges::minmax(advances_);
        widest_ = widest;
        areEqual_ = widest - narrowest < 0.01;
    }

    [[nodiscard]] bool areEqual() const { return areEqual_; }

    [[nodiscard]] double widest() const { return widest_; }

    [[nodiscard]] double of(QChar digit) const {
        return advances_[static_cast<std::size_t>(digit.unicode() - u'0')];
    }

private:
    std::array<double, 10> advances_{};
    double widest_ = 0;
    bool areEqual_ = false;
};

/// The font in a size that need not be a whole number of pixels.
QFont scaledFont(const QFont& font, double scale, const QPaintDevice& device) {
    QFont scaled = font;
    const double points =
        font.pixelSize() > 0 ? font.pixelSize() * 72.0 / device.logicalDpiY() : font.pointSizeF();
    scaled.setPointSizeF(points * scale);
    return scaled;
}

} // namespace

TabularLine::TabularLine(const QFont& font, const QString& text) : font_(font) {
    const QFontMetricsF metrics(font);
    const DigitWidths digits(metrics);
    for (qsizetype at = 0; at < text.size();) {
        const QChar character = text[at];
        if (!digits.areEqual() && isDigit(character)) {
            // In the middle of a cell as wide as the widest digit.
            pieces_.push_back({character, width_ + (digits.widest() - digits.of(character)) / 2});
            width_ += digits.widest();
            ++at;
            continue;
        }
        qsizetype end = at;
        while (end < text.size() && (digits.areEqual() || !isDigit(text[end]))) {
            ++end;
        }
        const QString piece = text.mid(at, end - at);
        pieces_.push_back({piece, width_});
        width_ += metrics.horizontalAdvance(piece);
        at = end;
    }
}

void TabularLine::draw(QPainter& painter, QPointF origin, double scale) const {
    painter.setFont(scale == 1 ? font_ : scaledFont(font_, scale, *painter.device()));
    painter.setLayoutDirection(Qt::LeftToRight); // on every desktop: the texts are English
    for (const Piece& piece : pieces_) {
        painter.drawText(origin + QPointF(piece.x * scale, 0), piece.text);
    }
}

} // namespace tarnwick
