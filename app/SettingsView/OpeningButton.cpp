#include "app/SettingsView/OpeningButton.h"

#include <QAccessibleWidget>

namespace tarnwick {

namespace {

class AccessibleOpeningButton final : public QAccessibleWidget {
public:
    explicit AccessibleOpeningButton(OpeningButton& button)
        : QAccessibleWidget(
              &button,
              button.opens() == OpeningButton::Opens::menu ? QAccessible::ButtonMenu : QAccessible::Button),
          button_(button) {}

    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.hasPopup = button_.opens() == OpeningButton::Opens::menu;
        state.expandable = true;
        state.expanded = button_.isOpen();
        state.collapsed = !button_.isOpen();
        return state;
    }

    [[nodiscard]] int childCount() const override { return button_.content() != nullptr ? 1 : 0; }

    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        return index == 0 ? QAccessible::queryAccessibleInterface(button_.content()) : nullptr;
    }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
        return child->object() != nullptr && child->object() == button_.content() ? 0 : -1;
    }

    [[nodiscard]] QStringList actionNames() const override {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
    }

    void doAction(const QString& name) override {
        if (name == pressAction()) {
            button_.click();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    OpeningButton& button_;
};

QAccessibleInterface* makeButtonInterface(const QString& /*className*/, QObject* object) {
    auto* const button = dynamic_cast<OpeningButton*>(object);
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): owned by the toolkit's accessibility cache
    return button == nullptr ? nullptr : new AccessibleOpeningButton(*button);
}

} // namespace

OpeningButton::OpeningButton(Opens opens, QWidget* parent) : KeyButton(parent), opens_(opens) {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeButtonInterface);
        return true;
    }();
    static_cast<void>(isInstalled);
    setAutoDefault(false);
}

void OpeningButton::setOpen(bool isOpen) {
    if (isOpen == isOpen_) {
        return;
    }
    isOpen_ = isOpen;
    update();
    QAccessible::State changed;
    changed.expanded = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

} // namespace tarnwick
