// When the next scheduled check is due.
#include "core/Update/CheckSchedule.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>

namespace tarnwick {
namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

const RunLoop::WallTime present = std::chrono::sys_days(std::chrono::year(2026) / 11 / 23);

struct ScheduleCase {
    std::string name;
    std::optional<seconds> sinceLast; ///< none: never checked
    seconds interval;
    double jitter;
    seconds expected; ///< from now

    friend void PrintTo(const ScheduleCase& tested, std::ostream* out) { *out << tested.name; }
};

class NextCheck : public testing::TestWithParam<ScheduleCase> {};

INSTANTIATE_TEST_SUITE_P(
    CheckSchedule, NextCheck,
    testing::Values(
        ScheduleCase{"JustChecked", seconds(0), days(1), 0, days(1)},
        ScheduleCase{"JustCheckedWithJitter", seconds(0), days(1), 1, hours(25)},
        ScheduleCase{"JustCheckedWithHalfJitter", seconds(0), days(1), 0.5, hours(24) + minutes(30)},
        ScheduleCase{"ShortInterval", seconds(0), hours(1), 1, minutes(62) + seconds(30)},
        ScheduleCase{"LongInterval", days(10), days(30), 0, days(20)},
        ScheduleCase{"Earlier", hours(20), days(1), 0, hours(4)},
        ScheduleCase{"SoonDue", hours(24) - minutes(1), days(1), 0, minutes(1)},
        ScheduleCase{"DueBeforeItIsCalm", hours(24) - seconds(59), days(1), 0, minutes(1)},
        ScheduleCase{"DueByItsJitter", hours(24), days(1), 0.5, minutes(30)},
        ScheduleCase{"JustMissed", hours(25), days(1), 0.5, minutes(3) + seconds(30)},
        ScheduleCase{"LongMissed", days(400), days(1), 0, minutes(1)},
        ScheduleCase{"LongMissedWithJitter", days(400), days(1), 1, minutes(6)},
        ScheduleCase{"Never", std::nullopt, days(1), 0, minutes(1)},
        ScheduleCase{"NeverWithJitter", std::nullopt, days(1), 1, minutes(6)},
        ScheduleCase{"ClockSetBack", -seconds(1), days(1), 0, minutes(1)},
        ScheduleCase{"ClockSetBackByYears", -days(2000), days(1), 1, minutes(6)},
        ScheduleCase{"JitterBelowItsRange", seconds(0), days(1), -1, days(1)},
        ScheduleCase{"JitterAboveItsRange", seconds(0), days(1), 7, hours(25)}),
    test::caseName);

TEST_P(NextCheck, IsDueByLastCheckIntervalAndJitter) {
    std::optional<RunLoop::WallTime> last;
    if (GetParam().sinceLast) {
        last = present - *GetParam().sinceLast;
    }
    const auto due = nextCheck(last, GetParam().interval, GetParam().jitter, present) - present;
    EXPECT_EQ(std::chrono::duration_cast<seconds>(due), GetParam().expected);
}

} // namespace
} // namespace tarnwick
