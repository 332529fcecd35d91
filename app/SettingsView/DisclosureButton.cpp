#include "app/SettingsView/DisclosureButton.h"

#include "app/ViewStyle/ControlLooks.h"
#include "app/ViewStyle/FormStyle.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QStyleOptionButton>
#include <QStylePainter>

namespace tarnwick {

namespace {

constexpr double titleInset = 10;
constexpr double quarterTurn = 90;

} // namespace

DisclosureButton::DisclosureButton(const QString& title, QWidget* parent)
    : OpeningButton(Opens::section, parent) {
    setText(title);
    setAccessibleName(QString(title).remove(u'&'));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    FormStyle::dress(*this);
}

QSize DisclosureButton::sizeHint() const {
    const ViewStyle style(*this);
    const int title = fontMetrics().size(Qt::TextShowMnemonic, text()).width();
    return {FormStyle::arrowRoom(*this) + title + style.length(titleInset), ControlLooks::height(style)};
}

QSize DisclosureButton::minimumSizeHint() const {
    return sizeHint();
}

void DisclosureButton::paintEvent(QPaintEvent* /*event*/) {
    QStyleOptionButton option;
    initStyleOption(&option);
    QStylePainter painter(this);
    painter.drawPrimitive(QStyle::PE_PanelButtonTool, option);
    const int room = FormStyle::arrowRoom(*this);
    const QRect title = option.rect.adjusted(room, 0, 0, 0);
    const bool underlines = style()->styleHint(QStyle::SH_UnderlineShortcut, &option, this) != 0;
    painter.drawItemText(
        QStyle::visualRect(option.direction, option.rect, title),
        static_cast<int>(QStyle::visualAlignment(option.direction, Qt::AlignLeft) | Qt::AlignVCenter)
            | (underlines ? Qt::TextShowMnemonic : Qt::TextHideMnemonic),
        palette(), isEnabled(), text(), QPalette::WindowText);
    const QRect arrow = QStyle::visualRect(option.direction, option.rect, QRect(0, 0, room, height()));
    painter.translate(QRectF(arrow).center());
    if (!isOpen()) {
        painter.rotate(option.direction == Qt::RightToLeft ? quarterTurn : -quarterTurn);
    }
    option.rect = QRect(-1, -1, 2, 2);
    painter.drawPrimitive(QStyle::PE_IndicatorArrowDown, option);
}

} // namespace tarnwick
