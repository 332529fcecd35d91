// What the monitor does, in the cases of cases/*.txt.
#include "tests/app/Monitor/MonitorScript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <vector>

namespace tarnwick::simulation {

namespace {

class Monitored : public testing::TestWithParam<test::Case> {};

TEST_P(Monitored, Holds) {
    MonitorScript script;
    for (const test::CaseStep& step : GetParam().steps) {
        EXPECT_EQ(script.play(step), step.expected) << test::place(GetParam(), step);
    }
}

/// Of every file in the folder, so that none is left out.
std::vector<test::Case> allCases() {
    std::vector<test::Case> all;
    for (const auto& entry : std::filesystem::directory_iterator(TARNWICK_CASES)) {
        if (entry.path().extension() == ".txt") {
            std::ranges::copy(test::readCases(entry.path().filename()), std::back_inserter(all));
        }
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Cases, Monitored, testing::ValuesIn(allCases()), test::caseName);

} // namespace

} // namespace tarnwick::simulation
