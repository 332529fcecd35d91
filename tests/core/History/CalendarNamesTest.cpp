// What days and months are called.
#include "core/History/CalendarNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace tarnwick {
namespace {

using testing::ElementsAre;

TEST(CalendarNames, AreThoseOfTheWeek) {
    std::vector<std::string> names;
    std::vector<std::string> shortNames;
    for (unsigned day = 0; day < 7; ++day) {
        names.emplace_back(CalendarNames::of(std::chrono::weekday(day)));
        shortNames.emplace_back(CalendarNames::shortOf(std::chrono::weekday(day)));
    }

    EXPECT_THAT(
        names, ElementsAre("Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"));
    EXPECT_THAT(shortNames, ElementsAre("Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"));
}

TEST(CalendarNames, AreThoseOfTheYear) {
    std::string names;
    for (unsigned month = 1; month <= 12; ++month) {
        names += CalendarNames::shortOf(std::chrono::month(month));
    }

    EXPECT_EQ(names, "JanFebMarAprMayJunJulAugSepOctNovDec");
}

} // namespace
} // namespace tarnwick
