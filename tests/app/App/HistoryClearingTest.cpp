// The question before the history is cleared, and what follows from its answer.
#include "app/App/HistoryClearing.h"

#include "tests/app/MonitorSurroundings.h"
#include "tests/simulation/FakeLoginItem.h"
#include "tests/simulation/RecordingJournal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A monitor that has kept a history of some minutes.
class HistoryClearingTest : public testing::Test, protected MonitorSurroundings {
protected:
    HistoryClearingTest() {
        monitor.start();
        loop.advance(300);
    }

    [[nodiscard]] std::vector<Period> periods() { return journal.read(prefs.hostname(), {}).periods; }

    simulation::FakeLoginItem loginItem;
    simulation::RecordingJournal journal;
    Monitor monitor{prefs, environment(&journal)};
    SettingsModel settings{monitor, notifications, loginItem};
    std::vector<Question> questions;
    std::function<void(bool)> answer;
    std::optional<HistoryClearing> clearing{
        std::in_place, monitor, settings,
        [this](const Question& question, std::function<void(bool)> answered) {
            questions.push_back(question);
            answer = std::move(answered);
        }};
};

} // namespace

TEST_F(HistoryClearingTest, ItAsksAndSaysWhatGoesAndWhatStays) {
    settings.clearHistory();

    ASSERT_EQ(questions.size(), 1U);
    EXPECT_EQ(questions[0].title, "Clear History");
    EXPECT_THAT(questions[0].text, HasSubstr("of all hosts?"));
    EXPECT_THAT(questions[0].note, HasSubstr("for good"));
    EXPECT_THAT(questions[0].note, HasSubstr("stats stay"));
    EXPECT_EQ(questions[0].confirm, "Clear");
    EXPECT_EQ(questions[0].cancel, "Cancel");
    EXPECT_THAT(periods(), Not(IsEmpty()));
}

TEST_F(HistoryClearingTest, ConfirmedNothingIsLeftButTheStatistics) {
    settings.clearHistory();
    answer(true);

    EXPECT_THAT(periods(), IsEmpty());
    EXPECT_EQ(settings.historyProblem(), "");
    EXPECT_GE(monitor.reading().site.sent, 300);
}

TEST_F(HistoryClearingTest, CancelledAllOfItStays) {
    const std::size_t before = periods().size();
    settings.clearHistory();
    answer(false);

    EXPECT_EQ(periods().size(), before);
}

TEST_F(HistoryClearingTest, WhatMayBeLeftIsToldUntilTheNextAttempt) {
    journal.clearingFails = true;
    settings.clearHistory();
    answer(true);
    EXPECT_THAT(settings.historyProblem(), HasSubstr("may be left"));

    settings.clearHistory();
    EXPECT_EQ(settings.historyProblem(), "");
}

TEST_F(HistoryClearingTest, SwitchedOffAHistoryCanBeClearedToo) {
    prefs.setKeepsHistory(false);
    ASSERT_THAT(periods(), Not(IsEmpty()));
    settings.clearHistory();
    answer(true);

    EXPECT_THAT(periods(), IsEmpty());
}

TEST_F(HistoryClearingTest, AfterItsEndAnAnswerDoesNothing) {
    settings.clearHistory();
    clearing.reset();
    answer(true);

    EXPECT_THAT(periods(), Not(IsEmpty()));
    EXPECT_FALSE(settings.clearHistory);
}

} // namespace tarnwick
