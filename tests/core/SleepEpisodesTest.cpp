// Each sleep is reported once, however many sources tell of it: the cases of cases/sleep.txt.
#include "core/SleepEpisodes.h"

#include "tests/core/CaseFile.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

std::string text(const SleepEpisodes::Events& events) {
    std::string text;
    for (const SleepEpisodes::Event event : events) {
        text += text.empty() ? "" : " ";
        text += event == SleepEpisodes::Event::fellAsleep ? "fellAsleep" : "woke";
    }
    return text;
}

class SleepEpisodesTest : public testing::TestWithParam<test::Case> {
protected:
    std::string play(const test::CaseStep& step) {
        const std::string& name = step.words.front();
        if (name == "announcer") {
            return text(episodes_.setHasAnnouncer(step.word(1) == "on"));
        }
        if (name == "announce") {
            return text(
                step.word(1) == "sleep" ? episodes_.sleepAnnounced(clocks_)
                                        : episodes_.wakeAnnounced(clocks_));
        }
        if (name == "check") {
            return text(episodes_.check(clocks_));
        }
        if (name == "checks") {
            return text(checks(step.number(1)));
        }
        if (name == "state") {
            return episodes_.isAsleep() ? "asleep" : "awake";
        }
        if (name == "pass") {
            clocks_.now += step.number(1);
            return {};
        }
        if (name == "suspend") {
            clocks_.suspended += step.number(1);
            return {};
        }
        return "no such step";
    }

private:
    SleepEpisodes::Events checks(double count) {
        SleepEpisodes::Events all;
        for (int i = 0; i < static_cast<int>(count); ++i) {
            clocks_.now += 1;
            const SleepEpisodes::Events events = episodes_.check(clocks_);
            all.insert(all.end(), events.begin(), events.end());
        }
        return all;
    }

    SleepEpisodes::Clocks clocks_{.now = 1000, .suspended = 500};
    SleepEpisodes episodes_{clocks_};
};

INSTANTIATE_TEST_SUITE_P(
    Sleep, SleepEpisodesTest, testing::ValuesIn(test::readCases("sleep.txt")), test::caseName);

TEST_P(SleepEpisodesTest, Holds) {
    for (const test::CaseStep& step : GetParam().steps) {
        EXPECT_EQ(play(step), step.expected) << test::place(GetParam(), step);
    }
}

} // namespace
} // namespace tarnwick
