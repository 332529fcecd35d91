#include "app/StatusMenuView/VerdictView.h"

#include "app/NoticesView/WrappedText.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QPainter>

namespace tarnwick {

VerdictView::VerdictView(QWidget* parent) : ReadAloudWidget(Role::text, parent) {
}

void VerdictView::setText(const QString& text, int width) {
    text_ = text;
    width_ = width;
    setSpokenText(text);
    update();
}

QSize VerdictView::sizeHint() const {
    return {
        width_, text_.isEmpty()
                    ? 0
                    : WrappedText(ViewStyle(*this).font(ViewStyle::smallText), text_, width_).height()};
}

void VerdictView::paintEvent(QPaintEvent* /*event*/) {
    const ViewStyle style(*this);
    QPainter painter(this);
    painter.setPen(style.colors().warnText());
    WrappedText(style.font(ViewStyle::smallText), text_, width()).draw(painter, {0, 0});
}

} // namespace tarnwick
