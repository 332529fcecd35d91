// Dates and times as people at different places write them.
#include "app/SettingsView/DateText.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace tarnwick {

namespace {

std::string written(const char* locale) {
    const QDateTime moment(QDate(2026, 11, 21), QTime(18, 5, 59));
    const RunLoop::WallTime when{std::chrono::milliseconds(moment.toMSecsSinceEpoch())};
    // Newer tables of the toolkit have a narrow space before "PM".
    return dateText(when, QLocale(QLatin1String(locale))).replace(QChar(0x202F), ' ').toStdString();
}

} // namespace

TEST(DateTextTest, TheMonthIsAbbreviatedAndSecondsAreLeftOut) {
    EXPECT_EQ(written("C"), "21 Nov 2026, 18:05");
    EXPECT_EQ(written("en_GB"), "21 Nov 2026, 18:05");
}

TEST(DateTextTest, OrderAndSignsAreThoseOfThePlace) {
    EXPECT_EQ(written("de_DE"), "21. Nov. 2026, 18:05");
    EXPECT_EQ(written("en_US"), "Nov 21, 2026, 6:05 PM");
    EXPECT_EQ(written("hu_HU"), "2026. nov. 21., 18:05");
    EXPECT_EQ(written("ja_JP"), "2026年11月21日, 18:05");
}

TEST(DateTextTest, DigitsAndCommaAreThoseOfTheScript) {
    EXPECT_EQ(written("ar_EG"), "٢١ نوفمبر ٢٠٢٦، ٦:٠٥ م");
}

TEST(DateTextTest, NothingIsLeftOfTheDayOfTheWeek) {
    EXPECT_EQ(written("th_TH"), "21 พ.ย. 2026, 18:05");
    EXPECT_EQ(written("tr_TR"), "21 Kas 2026, 18:05");
    EXPECT_EQ(written("ar_EG").find("السبت"), std::string::npos);
}

} // namespace tarnwick
