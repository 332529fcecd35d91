// What the tests of the settings form have in common.
#pragma once

#include "tests/app/SettingsView/SettingsForm.h"

#include <QAccessible>
#include <QLocale>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace tarnwick::test {

class SettingsFormTest : public testing::Test, protected SettingsForm {
public:
    SettingsFormTest(const SettingsFormTest&) = delete;
    SettingsFormTest& operator=(const SettingsFormTest&) = delete;

    ~SettingsFormTest() override { QLocale::setDefault(QLocale::c()); }

protected:
    explicit SettingsFormTest(SoftwareUpdates* updates = nullptr) : SettingsForm(updates) {}

    /// Puts the text in place of what the field holds, with the keyboard, and leaves it there.
    void typeInto(QWidget& field, const char* text) {
        field.setFocus();
        type(text);
    }

    /// And presses Enter.
    void submit(QWidget& field, const char* text) {
        typeInto(field, text);
        press(Qt::Key_Return);
    }

    /// Another window has the keyboard for a while.
    void lookElsewhere() {
        QWidget other;
        other.show();
        other.activateWindow();
        settle();
        ASSERT_FALSE(window.isActiveWindow());
        other.close();
        window.activateWindow();
        settle();
        ASSERT_TRUE(window.isActiveWindow());
    }

    /// What assistive technology does to enter a text.
    void replaceText(QWidget& field, const char* text) {
        QAccessibleInterface& interface = accessible(field);
        interface.editableTextInterface()->replaceText(
            0, interface.textInterface()->characterCount(), QString::fromUtf8(text));
        settle();
    }

    [[nodiscard]] static QAccessibleInterface& accessible(QWidget& widget) {
        return *QAccessible::queryAccessibleInterface(&widget);
    }

    /// Where it is in the form.
    [[nodiscard]] QRect place(const QWidget& widget) const {
        return {widget.mapTo(&window.view(), QPoint()), widget.size()};
    }

    /// The label that begins with this text.
    [[nodiscard]] QLabel& label(const std::string& text) const {
        for (QLabel* each : window.findChildren<QLabel*>()) {
            if (each->text().replace(QChar::Nbsp, ' ').toStdString().starts_with(text)) {
                return *each;
            }
        }
        throw std::logic_error("no label " + text);
    }

    /// Sets the font in which the design's points are pixels.
    void useUsualFont() {
        QFont font = window.view().font();
        font.setPixelSize(13);
        window.view().setFont(font);
    }
};

} // namespace tarnwick::test
