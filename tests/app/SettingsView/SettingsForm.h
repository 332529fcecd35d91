// The settings window over a monitor in virtual time, for those who type and look.
#pragma once

#include "app/App/SettingsWindow.h"
#include "app/SettingsView/SettingsView.h"
#include "tests/app/StatusMenuView/StandardMenu.h"
#include "tests/app/WatchedMonitor.h"
#include "tests/simulation/FakeLoginItem.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTest>

#include <stdexcept>
#include <string>

namespace tarnwick::test {

struct SettingsForm : WatchedMonitor {
    explicit SettingsForm(SoftwareUpdates* updates = nullptr)
        : model(monitor, notifications, loginItem, updates), window(model, loop, menu.menu) {}

    /// The name of a control for people.
    [[nodiscard]] static std::string name(const QWidget& control) {
        if (const auto* const label = qobject_cast<const QLabel*>(&control)) {
            return label->text().toStdString();
        }
        const auto* const button = qobject_cast<const QPushButton*>(&control);
        const bool hasText = button != nullptr && !button->text().isEmpty();
        return (hasText ? button->text().remove(u'&') : control.accessibleName()).toStdString();
    }

    template<class Control>
    [[nodiscard]] Control& control(const char* wanted) {
        for (auto* const each : window.findChildren<Control*>()) {
            if (name(*each) == wanted) {
                return *each;
            }
        }
        throw std::logic_error(std::string("no control named ") + wanted);
    }

    [[nodiscard]] QLineEdit& host() { return control<QLineEdit>("Host to Ping"); }

    [[nodiscard]] QSpinBox& interval() { return control<QSpinBox>("Ping Every"); }

    [[nodiscard]] QSlider& threshold() { return control<QSlider>("Slow Ping Threshold"); }

    [[nodiscard]] QComboBox& display() { return control<QComboBox>("Display"); }

    [[nodiscard]] QComboBox& panelInk() { return control<QComboBox>("Color in the Panel"); }

    [[nodiscard]] QComboBox& lossText() { return control<QComboBox>("Packet Loss Text"); }

    [[nodiscard]] QCheckBox& alerts() { return control<QCheckBox>("Connection Up/Down Alerts"); }

    [[nodiscard]] QPushButton& test() { return control<QPushButton>("Test"); }

    [[nodiscard]] QCheckBox& launchAtLogin() { return control<QCheckBox>("Launch at Login"); }

    [[nodiscard]] QPushButton& restore() { return control<QPushButton>("Restore Default Settings"); }

    /// All labels that can be seen, one a line, with plain spaces.
    [[nodiscard]] std::string labels() const {
        QString text;
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            if (label->isVisible()) {
                text += label->text() + "\n";
            }
        }
        return text.replace(QChar::Nbsp, ' ').toStdString();
    }

    void present() {
        window.present();
        settle();
    }

    /// Lets everything happen that is due.
    void settle() {
        loop.runPending();
        QApplication::processEvents();
        loop.runPending(); // what those events have brought about
    }

    /// Sends keys to whatever has the keyboard.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWidget* const focused = QApplication::focusWidget();
        QTest::keyClick(focused != nullptr ? focused : &window, key, modifiers);
        settle();
    }

    /// In place of what the field holds.
    void type(const char* text) {
        press(Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(QApplication::focusWidget(), text);
        settle();
    }

    /// The name of the control with the focus.
    [[nodiscard]] static std::string focused() {
        const QWidget* const widget = QApplication::focusWidget();
        return widget == nullptr ? "" : name(*widget);
    }

    simulation::FakeLoginItem loginItem;
    StandardMenu menu;
    SettingsModel model;
    SettingsWindow window;
};

} // namespace tarnwick::test
