// Which answers to a repeated question count.
#include "app/Diagnostician/RepeatedQuestion.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace tarnwick {
namespace {

class RepeatedQuestionTest : public testing::Test {
protected:
    void ask(double now) {
        question->askWhenDue(now, [this](auto answer) { answers.push_back(std::move(answer)); });
    }

    std::optional<RepeatedQuestion<int>> question{std::in_place, 5};
    std::vector<RepeatedQuestion<int>::Answer> answers;
};

TEST_F(RepeatedQuestionTest, IsAskedAtOnceAndThenAfterTheInterval) {
    for (const double now : {100.0, 101.0, 104.9, 105.0, 109.0, 111.0}) {
        ask(now);
    }

    EXPECT_EQ(answers.size(), 3U);
}

TEST_F(RepeatedQuestionTest, TheLatestAnswerIsKeptUntilTheNext) {
    EXPECT_EQ(question->latest(), 0);
    ask(100);
    answers[0](7);
    ask(105);
    EXPECT_EQ(question->latest(), 7);

    answers[1](8);

    EXPECT_EQ(question->latest(), 8);
}

TEST_F(RepeatedQuestionTest, AnAnswerToAnEarlierQuestionDoesNotCount) {
    ask(100);
    ask(105);
    answers[0](7);

    EXPECT_EQ(question->latest(), 0);
}

TEST_F(RepeatedQuestionTest, WhatIsForgottenIsAskedAnewAtOnce) {
    ask(100);
    ask(105);
    answers[1](7);
    question->forget();
    EXPECT_EQ(question->latest(), 0);
    answers[1](8);
    EXPECT_EQ(question->latest(), 0);

    ask(105.1);

    ASSERT_EQ(answers.size(), 3U);
    answers[2](9);
    EXPECT_EQ(question->latest(), 9);
}

TEST_F(RepeatedQuestionTest, AnAnswerMayComeAfterItsEnd) {
    ask(100);
    question.reset();

    answers[0](7);

    EXPECT_FALSE(question);
}

} // namespace
} // namespace tarnwick
