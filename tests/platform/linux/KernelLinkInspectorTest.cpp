// Questions about the link and their answers, in virtual time; and one to the real kernel.
#include "platform/linux/KernelLinkInspector.h"

#include "platform/loop/EpollRunLoop.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/LoopTurn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KernelLinkInspectorTest : public testing::Test {
protected:
    void ask(const std::string& address) {
        inspector_->inspect(
            ResolvedAddress{.family = 0, .sockaddr = {}, .display = address},
            [this](const std::optional<LinkState>& state) {
                answers_.push_back(state ? state->router.value_or("") : "none");
            });
    }

    simulation::VirtualRunLoop loop_;
    std::vector<std::string> answers_;
    std::optional<KernelLinkInspector> inspector_{
        std::in_place, loop_, [](const std::optional<ResolvedAddress>& to) -> std::optional<LinkState> {
            return LinkState{.router = "before " + to->display};
        }};
};

} // namespace

TEST_F(KernelLinkInspectorTest, AnAnswerComesSoonButNotFromInsideTheQuestion) {
    ask("a");
    EXPECT_THAT(answers_, IsEmpty());

    loop_.runPending();

    EXPECT_THAT(answers_, ElementsAre("before a"));
}

TEST_F(KernelLinkInspectorTest, WhileTheKernelKeepsOneWaitingOnlyTheLatestOfTheOthersIsAnswered) {
    loop_.holdDetachedWork();
    ask("a");
    ask("b");
    ask("c");
    EXPECT_EQ(loop_.heldWork(), 1U);
    loop_.releaseDetachedWork();

    loop_.runPending();

    EXPECT_THAT(answers_, ElementsAre("before a", "before c"));
}

TEST_F(KernelLinkInspectorTest, ALaterQuestionIsAskedAnew) {
    ask("a");
    loop_.runPending();

    ask("b");
    loop_.runPending();

    EXPECT_THAT(answers_, ElementsAre("before a", "before b"));
}

TEST_F(KernelLinkInspectorTest, WithoutAThreadThereIsNoAnswerUntilThereIsOne) {
    loop_.hasThreads = false;
    ask("a");
    loop_.runPending();
    loop_.hasThreads = true;
    ask("b");

    loop_.runPending();

    EXPECT_THAT(answers_, ElementsAre("none", "before b"));
}

TEST_F(KernelLinkInspectorTest, NothingIsAnsweredAfterItsEnd) {
    ask("a");
    ask("b");

    inspector_.reset();
    loop_.runPending();

    EXPECT_THAT(answers_, IsEmpty());
}

TEST_F(KernelLinkInspectorTest, AnAnswerMayEndIt) {
    inspector_->inspect(ResolvedAddress{}, [this](const auto&) {
        inspector_.reset();
        answers_.emplace_back("ended");
    });

    loop_.runPending();

    EXPECT_THAT(answers_, ElementsAre("ended"));
}

TEST(KernelLinkInspector, TheKernelOfThisMachineAnswers) {
    EpollRunLoop loop;
    KernelLinkInspector inspector(loop);
    std::optional<LinkState> state;
    bool isAnswered = false;
    inspector.inspect(std::nullopt, [&](const std::optional<LinkState>& answer) {
        state = answer;
        isAnswered = true;
    });

    const double patience = loop.now() + 20;
    while (!isAnswered && loop.now() < patience) {
        test::runOneTurn(loop, 0.1);
    }

    ASSERT_TRUE(isAnswered);
    EXPECT_TRUE(state);
}

} // namespace tarnwick
