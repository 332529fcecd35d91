// The field for the ping interval, with its stepper.
#pragma once

#include "app/SettingsView/Draft.h"

#include <QSpinBox>

#include <functional>

namespace tarnwick {

/// A typed text is a draft. When it is committed, a number is brought into range and set; any other text
/// gives way to the interval. A step starts from a typed number, and is set at once.
class IntervalBox final : public QSpinBox {
public:
    /// Where the interval is kept, in seconds.
    struct Setting {
        std::function<int()> get;
        std::function<void(int)> set; ///< also called with an unchanged value
    };

    IntervalBox(Setting setting, QWidget* parent);

    /// Shows the setting, unless there is a draft.
    void follow();
    /// Shows the setting and drops a draft.
    void reset();

    /// Commits a draft.
    void finish() { draft_.finish(); }

    /// The width without the buttons.
    void setFieldWidth(int width);

    void stepBy(int steps) override;

protected:
    [[nodiscard]] StepEnabled stepEnabled() const override;
    QValidator::State validate(QString& text, int& position) const override;
    [[nodiscard]] int valueFromText(const QString& text) const override;
    [[nodiscard]] QString textFromValue(int seconds) const override;
    void changeEvent(QEvent* event) override;

private:
    void showSeconds(int seconds);
    void commit();

    Setting setting_;
    Draft draft_;
};

} // namespace tarnwick
