#include "app/SettingsView/DateText.h"

#include <QDateTime>
#include <QRegularExpression>

#include <chrono>

namespace tarnwick {

namespace {

/// The toolkit has a long format and a numeric one. This is the long one without the day of the week, and
/// with the month abbreviated.
QString dateFormat(const QLocale& locale) {
    static const QRegularExpression dayOfWeek(QStringLiteral(R"(\s*[,،]?\s*dddd[^\s']*\s*)"));
    return locale.dateFormat(QLocale::LongFormat)
        .remove(dayOfWeek)
        .replace(QLatin1String("MMMM"), QLatin1String("MMM"));
}

QString timeFormat(const QLocale& locale) {
    return locale.timeFormat(QLocale::ShortFormat).remove(QStringLiteral(":ss"));
}

} // namespace

QString dateText(RunLoop::WallTime when, const QLocale& locale) {
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(when.time_since_epoch());
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(sinceEpoch.count());
    const QString comma =
        locale.script() == QLocale::ArabicScript ? QStringLiteral("، ") : QStringLiteral(", ");
    return locale.toString(moment.date(), dateFormat(locale)) + comma
           + locale.toString(moment.time(), timeFormat(locale));
}

} // namespace tarnwick
