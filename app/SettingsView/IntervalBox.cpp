#include "app/SettingsView/IntervalBox.h"

#include "app/SettingsView/EvenDigits.h"
#include "app/ViewStyle/FormStyle.h"
#include "core/PingIntervalSetting.h"

#include <QEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSpinBox>

#include <optional>
#include <string>
#include <utility>

namespace tarnwick {

namespace {

/// Replaces the digits of every script by ASCII digits.
std::string plainDigits(QString text) {
    for (QChar& character : text) {
        if (const int digit = character.digitValue(); digit >= 0) {
            character = QChar('0' + digit);
        }
    }
    return text.toStdString();
}

std::optional<int> parsed(const QString& text) {
    return PingIntervalSetting::parse(plainDigits(text));
}

} // namespace

IntervalBox::IntervalBox(Setting setting, QWidget* parent)
    : QSpinBox(parent), setting_(std::move(setting)), draft_(*this, *lineEdit(), [this] { commit(); }) {
    setRange(PingIntervalSetting::range.lowest, PingIntervalSetting::range.highest);
    setKeyboardTracking(false);
    setAlignment(Qt::AlignRight);
    FormStyle::dress(*lineEdit());
    lineEdit()->setFont(withEvenDigits(font()));
    connect(this, &QSpinBox::valueChanged, this, [this](int seconds) {
        setting_.set(seconds);
        reset();
    });
    // The text decides which steps are possible.
    connect(lineEdit(), &QLineEdit::textChanged, this, [this] { update(); });
}

void IntervalBox::follow() {
    const int seconds = setting_.get(); // always read: a tracked caller is to learn of later changes
    if (!draft_.exists()) {
        showSeconds(seconds);
    }
}

void IntervalBox::reset() {
    showSeconds(setting_.get());
}

void IntervalBox::showSeconds(int seconds) {
    draft_.discard();
    const QSignalBlocker quiet(this);
    setValue(seconds);
}

void IntervalBox::commit() {
    if (const auto seconds = parsed(text())) {
        setting_.set(*seconds);
    }
    reset();
}

void IntervalBox::stepBy(int steps) {
    const auto typed = draft_.exists() ? parsed(text()) : std::nullopt;
    showSeconds(typed.value_or(setting_.get()));
    QSpinBox::stepBy(steps);
    // A step at the end of the range changes no value, so no signal comes. The typed number must still be
    // set.
    setting_.set(value());
}

QAbstractSpinBox::StepEnabled IntervalBox::stepEnabled() const {
    return draft_.exists() ? StepUpEnabled | StepDownEnabled : QSpinBox::stepEnabled();
}

void IntervalBox::setFieldWidth(int width) {
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    option.rect.setWidth(4 * width);
    const QRect field =
        style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxEditField, this);
    setFixedWidth(width + option.rect.width() - field.width());
}

void IntervalBox::changeEvent(QEvent* event) {
    QSpinBox::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        lineEdit()->setFont(withEvenDigits(font()));
    }
}

QValidator::State IntervalBox::validate(QString& /*text*/, int& /*position*/) const {
    return QValidator::Acceptable;
}

// The base class reads the text at many events. These two make it find the old value, so that it does not
// replace a draft.

int IntervalBox::valueFromText(const QString& /*text*/) const {
    return value();
}

QString IntervalBox::textFromValue(int seconds) const {
    return draft_.exists() ? text() : locale().toString(seconds);
}

} // namespace tarnwick
