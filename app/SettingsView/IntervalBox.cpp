#include "app/SettingsView/IntervalBox.h"

#include "core/PingIntervalSetting.h"

#include <QLineEdit>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSpinBox>

#include <string>

namespace tarnwick {

namespace {

/// Digits of every script as those that machines read.
std::string plainDigits(QString text) {
    for (QChar& character : text) {
        if (const int digit = character.digitValue(); digit >= 0) {
            character = QChar('0' + digit);
        }
    }
    return text.toStdString();
}

} // namespace

IntervalBox::IntervalBox(QWidget* parent) : QSpinBox(parent) {
    setRange(PingIntervalSetting::range.lowest, PingIntervalSetting::range.highest);
    setKeyboardTracking(false);
    connect(this, &QSpinBox::valueChanged, this, [this](int seconds) {
        if (onCommit) {
            onCommit(seconds);
        }
    });
}

void IntervalBox::follow(int seconds) {
    const bool isDraft = lineEdit()->text() != textFromValue(value());
    if (!isDraft) {
        reset(seconds);
    }
}

void IntervalBox::reset(int seconds) {
    const QSignalBlocker quiet(this);
    setValue(seconds);
}

void IntervalBox::setFieldWidth(int width) {
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    option.rect.setWidth(4 * width);
    const QRect field =
        style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxEditField, this);
    setFixedWidth(width + option.rect.width() - field.width());
}

QValidator::State IntervalBox::validate(QString& /*text*/, int& /*position*/) const {
    return QValidator::Acceptable;
}

int IntervalBox::valueFromText(const QString& text) const {
    return PingIntervalSetting::parse(plainDigits(text)).value_or(value());
}

QString IntervalBox::textFromValue(int seconds) const {
    return locale().toString(seconds);
}

} // namespace tarnwick
