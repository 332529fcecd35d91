#include "app/SettingsView/EvenDigits.h"

#include <QFontDatabase>
#include <QFontMetricsF>

namespace tarnwick {

QFont withEvenDigits(const QFont& font) {
    const QFontMetricsF metrics(font);
    const double width = metrics.horizontalAdvance(u'0');
    for (char16_t digit = u'1'; digit <= u'9'; ++digit) {
        if (metrics.horizontalAdvance(digit) != width) {
            QFont fixed = font;
            fixed.setFamily(QFontDatabase::systemFont(QFontDatabase::FixedFont).family());
            return fixed;
        }
    }
    return font;
}

} // namespace tarnwick
