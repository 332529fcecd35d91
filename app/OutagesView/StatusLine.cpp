#include "app/OutagesView/StatusLine.h"

#include "app/NoticesView/WrappedText.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

StatusLine::StatusLine(QWidget* parent) : ReadAloudWidget(Role::text, parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void StatusLine::showText(const QString& text, bool isFailure) {
    text_ = text;
    isFailure_ = isFailure;
    setSpokenText(text);
    setToolTip(text);
    update();
}

QSize StatusLine::sizeHint() const {
    const double line = QFontMetricsF(ViewStyle(*this).font(ViewStyle::smallText)).lineSpacing();
    return {0, static_cast<int>(std::ceil(2 * line))};
}

void StatusLine::paintEvent(QPaintEvent* /*event*/) {
    const ViewStyle style(*this);
    const WrappedText lines(style.font(ViewStyle::smallText), text_, width());
    QPainter painter(this);
    painter.setPen(isFailure_ ? style.colors().bad() : style.colors().secondary());
    lines.draw(painter, {0, std::max(0.0, std::floor((height() - lines.height()) / 2.0))});
}

} // namespace tarnwick
