#include "app/NoticesView/WrappedText.h"

#include <QPainter>
#include <QTextOption>

#include <cmath>

namespace tarnwick {

WrappedText::WrappedText(const QFont& font, const QString& text, double width) : layout_(text, font) {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout_.setTextOption(option);
    double y = 0;
    layout_.beginLayout();
    for (QTextLine line = layout_.createLine(); line.isValid(); line = layout_.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, y});
        y += std::ceil(line.height());
    }
    layout_.endLayout();
    height_ = static_cast<int>(y);
}

void WrappedText::draw(QPainter& painter, QPointF topLeft) const {
    layout_.draw(&painter, topLeft);
}

} // namespace tarnwick
