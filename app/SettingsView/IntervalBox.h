// The field for the ping interval, with its stepper.
#pragma once

#include <QSpinBox>

#include <functional>

namespace tarnwick {

/// Whatever is typed stays a draft until Enter is pressed or the field is left. Then a number counts, brought
/// into range, and anything else brings the interval back.
class IntervalBox final : public QSpinBox {
public:
    explicit IntervalBox(QWidget* parent);

    /// Shows an interval that was set elsewhere, unless something is being typed.
    void follow(int seconds);
    /// The same, in place of whatever is typed.
    void reset(int seconds);

    /// The width of the part that is typed in.
    void setFieldWidth(int width);

    /// Called when another interval has been committed or stepped to.
    std::function<void(int)> onCommit;

protected:
    QValidator::State validate(QString& text, int& position) const override;
    [[nodiscard]] int valueFromText(const QString& text) const override;
    [[nodiscard]] QString textFromValue(int seconds) const override;
};

} // namespace tarnwick
