// The field for the ping interval, with its stepper.
#pragma once

#include "app/SettingsView/Draft.h"

#include <QSpinBox>

#include <functional>

namespace tarnwick {

/// Whatever is typed is a draft. Once it counts, a number is brought into range and set, and anything else
/// brings the interval back. Steps go on from what is typed, and hold at once.
class IntervalBox final : public QSpinBox {
public:
    /// Where the interval is kept, in seconds.
    struct Setting {
        std::function<int()> get;
        std::function<void(int)> set; ///< may be called with what holds already
    };

    IntervalBox(Setting setting, QWidget* parent);

    /// Shows the setting, unless something is being typed.
    void follow();
    /// Shows the setting in place of whatever is typed.
    void reset();

    /// Lets what is typed count.
    void finish() { draft_.finish(); }

    /// The width of the part that is typed in.
    void setFieldWidth(int width);

    void stepBy(int steps) override;

protected:
    [[nodiscard]] StepEnabled stepEnabled() const override;
    QValidator::State validate(QString& text, int& position) const override;
    [[nodiscard]] int valueFromText(const QString& text) const override;
    [[nodiscard]] QString textFromValue(int seconds) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    void showSeconds(int seconds);
    void commit();

    Setting setting_;
    Draft draft_;
};

} // namespace tarnwick
