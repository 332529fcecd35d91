// Pickers over the cases of an enumeration.
#pragma once

#include <QComboBox>
#include <QSignalBlocker>

namespace tarnwick::Picker {

/// Fills a picker, and hands on what is picked.
template<class Cases, class Title, class Pick>
void offer(QComboBox& picker, const Cases& cases, Title title, Pick pick) {
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
