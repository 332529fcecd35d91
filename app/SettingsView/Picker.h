// Pickers over the cases of an enumeration.
#pragma once

#include "app/Preferences/Preferences.h"

#include <QComboBox>
#include <QSignalBlocker>
#include <QString>

namespace tarnwick::Picker {

[[nodiscard]] QString title(Preferences::Display display);
[[nodiscard]] QString title(MenuBarTitle::LossMode mode);
[[nodiscard]] QString title(StatusItem::Form form);
[[nodiscard]] QString title(StatusItem::InkChoice ink);

/// Fills a picker, and hands on what is picked.
template<class Cases, class Pick>
void offer(QComboBox& picker, const Cases& cases, Pick pick) {
    for (const auto each : cases) {
        picker.addItem(title(each), static_cast<int>(each));
    }
    QObject::connect(&picker, &QComboBox::currentIndexChanged, &picker, [&picker, pick](int index) {
        pick(static_cast<typename Cases::value_type>(picker.itemData(index).toInt()));
    });
}

/// Without handing it on.
template<class Case>
void show(QComboBox& picker, Case picked) {
    const QSignalBlocker quiet(picker);
    picker.setCurrentIndex(picker.findData(static_cast<int>(picked)));
}

} // namespace tarnwick::Picker
