#include "app/SettingsView/RowLabel.h"

#include <QAbstractButton>
#include <QFontMetricsF>
#include <QKeySequence>
#include <QMouseEvent>
#include <QPainter>
#include <QShortcut>

#include <cmath>

namespace tarnwick {

void RowLabel::setMnemonic(QChar letter) {
    mnemonic_ = letter;
    const auto key = static_cast<Qt::Key>(letter.toUpper().unicode());
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): owned by the label
    auto* const shortcut = new QShortcut(QKeySequence(Qt::AltModifier | key), this);
    connect(shortcut, &QShortcut::activated, this, [this] { activate(Qt::ShortcutFocusReason); });
}

void RowLabel::setShowsMnemonic(bool shows) {
    if (shows != showsMnemonic_) {
        showsMnemonic_ = shows;
        update();
    }
}

void RowLabel::activate(Qt::FocusReason reason) {
    if (auto* const button = qobject_cast<QAbstractButton*>(buddy())) {
        button->click();
    } else if (qobject_cast<QLabel*>(buddy()) == nullptr) { // a value is only read
        buddy()->setFocus(reason);
    }
}

// Without this the release would go to the parent.
void RowLabel::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void RowLabel::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->pos())) {
        activate(Qt::MouseFocusReason);
    }
}

void RowLabel::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    const qsizetype at = text().indexOf(mnemonic_, 0, Qt::CaseInsensitive);
    if (!showsMnemonic_ || mnemonic_.isNull() || at < 0) {
        return;
    }
    const QFontMetricsF metrics(font());
    const double all = metrics.horizontalAdvance(text());
    const double begin = layoutDirection() == Qt::RightToLeft ? width() - all : 0;
    const double left = begin + metrics.horizontalAdvance(text().left(at));
    const double baseline = (height() - metrics.height()) / 2 + metrics.ascent();
    QPainter(this).fillRect(
        QRectF(left, std::round(baseline + metrics.underlinePos()), metrics.horizontalAdvance(text()[at]), 1),
        palette().color(QPalette::WindowText));
}

} // namespace tarnwick
