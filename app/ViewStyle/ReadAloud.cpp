#include "app/ViewStyle/ReadAloud.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace tarnwick {

namespace {

QAccessible::Role accessibleRole(ReadAloudWidget::Role role) {
    switch (role) {
    case ReadAloudWidget::Role::text:
        return QAccessible::StaticText;
    case ReadAloudWidget::Role::chart:
        return QAccessible::Chart;
    case ReadAloudWidget::Role::group:
        break;
    }
    return QAccessible::Grouping;
}

QAccessibleInterface* makeReadAloud(const QString& /*className*/, QObject* object) {
    auto* const widget = dynamic_cast<ReadAloudWidget*>(object);
    // Owned by the accessibility cache of the toolkit.
    return widget == nullptr ? nullptr : new QAccessibleWidget(widget, accessibleRole(widget->role()));
}

} // namespace

ReadAloudWidget::ReadAloudWidget(Role role, QWidget* parent) : QWidget(parent), role_(role) {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeReadAloud);
        return true;
    }();
    static_cast<void>(isInstalled);
}

void ReadAloudWidget::setSpokenText(const QString& text) {
    if (text != accessibleName()) {
        setAccessibleName(text);
    }
}

} // namespace tarnwick
