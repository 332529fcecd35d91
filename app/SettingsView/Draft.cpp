#include "app/SettingsView/Draft.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWidget>

#include <utility>

namespace tarnwick {

namespace {

/// Another window and a menu give the focus back.
bool leavesForGood(const QEvent& event) {
    const auto* const focus = dynamic_cast<const QFocusEvent*>(&event);
    return event.type() == QEvent::FocusOut && focus != nullptr
           && focus->reason() != Qt::ActiveWindowFocusReason && focus->reason() != Qt::PopupFocusReason;
}

bool isEnter(const QEvent& event) {
    const auto* const key = dynamic_cast<const QKeyEvent*>(&event);
    return event.type() == QEvent::KeyPress && key != nullptr
           && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter);
}

} // namespace

Draft::Draft(QWidget& field, QLineEdit& text, std::function<void()> commit) : commit_(std::move(commit)) {
    // `textEdited` would miss assistive technology and dropped texts.
    connect(&text, &QLineEdit::textChanged, this, [this, &field] {
        exists_ = true;
        if (field.window()->focusWidget() != &field) {
            finish();
        }
    });
    field.installEventFilter(this);
}

void Draft::finish() {
    if (std::exchange(exists_, false)) {
        commit_();
    }
}

bool Draft::eventFilter(QObject* /*watched*/, QEvent* event) {
    if (isEnter(*event) || leavesForGood(*event)) {
        finish();
    }
    return false;
}

} // namespace tarnwick
