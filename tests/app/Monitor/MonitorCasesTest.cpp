// What the monitor does, in the cases of cases/*.txt.
#include "tests/app/Monitor/MonitorScript.h"

#include <gtest/gtest.h>

namespace tarnwick::simulation {

namespace {

class Monitored : public testing::TestWithParam<test::Case> {};

TEST_P(Monitored, Holds) {
    MonitorScript script;
    for (const test::CaseStep& step : GetParam().steps) {
        EXPECT_EQ(script.play(step), step.expected) << test::place(GetParam(), step);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Announcements, Monitored, testing::ValuesIn(test::readCases("announcements.txt")), test::caseName);
INSTANTIATE_TEST_SUITE_P(Down, Monitored, testing::ValuesIn(test::readCases("down.txt")), test::caseName);
INSTANTIATE_TEST_SUITE_P(Host, Monitored, testing::ValuesIn(test::readCases("host.txt")), test::caseName);
INSTANTIATE_TEST_SUITE_P(Path, Monitored, testing::ValuesIn(test::readCases("path.txt")), test::caseName);
INSTANTIATE_TEST_SUITE_P(Pings, Monitored, testing::ValuesIn(test::readCases("pings.txt")), test::caseName);
INSTANTIATE_TEST_SUITE_P(
    Settings, Monitored, testing::ValuesIn(test::readCases("settings.txt")), test::caseName);
INSTANTIATE_TEST_SUITE_P(Sleep, Monitored, testing::ValuesIn(test::readCases("sleep.txt")), test::caseName);
INSTANTIATE_TEST_SUITE_P(
    Statistics, Monitored, testing::ValuesIn(test::readCases("statistics.txt")), test::caseName);

} // namespace

} // namespace tarnwick::simulation
