// Plays every script of data/ and compares the figures.
#include "tests/core/StatisticsScript.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> allScripts() {
    std::vector<fs::path> scripts;
    for (const fs::directory_entry& entry : fs::directory_iterator(TARNWICK_SCRIPTS)) {
        if (entry.path().extension() == ".txt") {
            scripts.push_back(entry.path());
        }
    }
    std::ranges::sort(scripts);
    return scripts;
}

class Statistics : public testing::TestWithParam<fs::path> {};

INSTANTIATE_TEST_SUITE_P(Script, Statistics, testing::ValuesIn(allScripts()), [](const auto& tested) {
    return tested.param.stem().string();
});

TEST_P(Statistics, HaveTheFiguresThatTheScriptExpects) {
    test::StatisticsScript script(GetParam());
    EXPECT_THAT(script.play(), testing::IsEmpty());
    EXPECT_GT(script.expectationCount(), 0);
}

} // namespace
} // namespace tarnwick
