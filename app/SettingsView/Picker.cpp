#include "app/SettingsView/Picker.h"

namespace tarnwick::Picker {

QString title(Preferences::Display display) {
    switch (display) {
    case Preferences::Display::iconOnly:
        return QStringLiteral("Icon Only");
    case Preferences::Display::textOnly:
        return QStringLiteral("Text Only");
    case Preferences::Display::iconAndText:
        break;
    }
    return QStringLiteral("Icon and Text");
}

QString title(MenuBarTitle::LossMode mode) {
    switch (mode) {
    case MenuBarTitle::LossMode::off:
        return QStringLiteral("Off");
    case MenuBarTitle::LossMode::always:
        return QStringLiteral("Always");
    case MenuBarTitle::LossMode::whenLossy:
        break;
    }
    return QStringLiteral("When There's Loss");
}

QString title(StatusItem::Form form) {
    switch (form) {
    case StatusItem::Form::label:
        return QStringLiteral("Text Beside Icon");
    case StatusItem::Form::wide:
        return QStringLiteral("Wide Image");
    case StatusItem::Form::square:
        return QStringLiteral("Square Image");
    case StatusItem::Form::automatic:
        break;
    }
    return QStringLiteral("Automatic");
}

QString title(StatusItem::InkChoice ink) {
    switch (ink) {
    case StatusItem::InkChoice::light:
        return QStringLiteral("Light");
    case StatusItem::InkChoice::dark:
        return QStringLiteral("Dark");
    case StatusItem::InkChoice::automatic:
        break;
    }
    return QStringLiteral("Automatic");
}

} // namespace tarnwick::Picker
