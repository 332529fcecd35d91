// One program per user session.
#include "platform/bus/InstanceGuard.h"

#include "tests/platform/bus/BusTest.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

using Request = InstanceGuard::Request;
using Result = InstanceGuard::Result;
using testing::ElementsAre;
using testing::Pair;

/// One start of the program.
struct Start {
    Start(RunLoop& loop, const std::string& address, InstanceGuard::Start start = {})
        : bus(loop, address),
          guard(loop, bus, std::move(start), [this](Result result) { results.push_back(result); }) {
        guard.onRequest = [this](const InstanceGuard::Start& asked) {
            requests.emplace_back(asked.request, asked.activationToken);
            pauses.push_back(asked.pauseSeconds);
        };
    }

    BusConnection bus;
    std::vector<Result> results;
    std::vector<std::pair<Request, std::string>> requests;
    std::vector<std::int32_t> pauses; ///< the length in each request
    InstanceGuard guard;
};

class InstanceGuardTest : public BusTest {
protected:
    [[nodiscard]] bool runUntilDecided(const Start& start) {
        return runUntil([&start] { return !start.results.empty(); });
    }

    /// Another program that has the name, and what it does with the request to show itself.
    [[nodiscard]] Subscription addOther(const std::function<void(BusMessage& call)>& activate) {
        BusPeer& other = addPeer();
        other.requestName(InstanceGuard::name);
        return other.takeCalls("/org/tarnwick/Tarnwick", activate);
    }

    [[nodiscard]] BusPeer::Target target() const {
        return {InstanceGuard::name, "/org/tarnwick/Tarnwick", "org.freedesktop.Application"};
    }
};

} // namespace

TEST_F(InstanceGuardTest, TheFirstStartIsTheFirst) {
    const Start start(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(start));

    EXPECT_THAT(start.results, ElementsAre(Result::first));
}

TEST_F(InstanceGuardTest, ASecondStartActivatesTheFirst) {
    const Start first(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(first));
    const Start second(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(second));

    EXPECT_THAT(second.results, ElementsAre(Result::anotherRuns));
    EXPECT_TRUE(runUntil([&first] { return first.requests.size() == 1; }));
}

TEST_F(InstanceGuardTest, ABusThatRefusesTheNameSaysNothingOfOthers) {
    stopBus();
    daemon_.refuse(InstanceGuard::name);
    ASSERT_TRUE(daemon_.start());
    const Start start(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(start));

    EXPECT_THAT(start.results, ElementsAre(Result::noBus));
}

TEST_F(InstanceGuardTest, ASecondStartPassesItsActivationTokenOn) {
    const Start first(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(first));

    const Start second(loop_, daemon_.address(), {.activationToken = "token-1"});

    ASSERT_TRUE(runUntilDecided(second));
    ASSERT_TRUE(runUntil([&first] { return !first.requests.empty(); }));
    EXPECT_THAT(first.requests, ElementsAre(Pair(Request::show, "token-1")));
}

TEST_F(InstanceGuardTest, ASecondStartAsksTheFirstForWhatItIsFor) {
    for (const Request request : {Request::settings, Request::outages, Request::quit}) {
        const Start first(loop_, daemon_.address());
        ASSERT_TRUE(runUntilDecided(first));

        const Start second(loop_, daemon_.address(), {.request = request, .activationToken = "token-1"});

        ASSERT_TRUE(runUntilDecided(second));
        EXPECT_THAT(second.results, ElementsAre(Result::anotherRuns));
        ASSERT_TRUE(runUntil([&first] { return !first.requests.empty(); }));
        EXPECT_THAT(first.requests, ElementsAre(Pair(request, "token-1")));
    }
}

TEST_F(InstanceGuardTest, ASecondStartAsksTheFirstToPauseForItsTime) {
    const Start first(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(first));

    for (const std::int32_t seconds : {3600, 0}) {
        const Start second(loop_, daemon_.address(), {.request = Request::pause, .pauseSeconds = seconds});
        ASSERT_TRUE(runUntilDecided(second));
        EXPECT_THAT(second.results, ElementsAre(Result::anotherRuns));
    }

    ASSERT_TRUE(runUntil([&first] { return first.requests.size() == 2; }));
    EXPECT_THAT(first.requests, testing::Each(Pair(Request::pause, "")));
    EXPECT_THAT(first.pauses, ElementsAre(3600, 0));
}

TEST_F(InstanceGuardTest, APauseWithoutALengthIsNone) {
    const Start start(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(start));
    BusPeer& peer = addPeer();
    using Value = std::variant<std::string, double>;
    const std::map<std::string, std::variant<std::string>> noData;

    for (const std::vector<Value>& parameter :
         {std::vector<Value>{}, std::vector<Value>{std::string("3600")}, std::vector<Value>{3600.0}}) {
        const auto answer = peer.call(target(), "ActivateAction", std::string("pause"), parameter, noData);
        ASSERT_TRUE(runUntilAnswered(answer));
        EXPECT_EQ(answer->error(), "");
    }

    EXPECT_TRUE(start.requests.empty());
}

TEST_F(InstanceGuardTest, AStartThatAsksForNothingLeavesTheFirstAlone) {
    const Start first(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(first));
    const Start second(loop_, daemon_.address(), {.request = Request::nothing});
    ASSERT_TRUE(runUntilDecided(second));
    EXPECT_THAT(second.results, ElementsAre(Result::anotherRuns));

    const Start third(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(third));

    ASSERT_TRUE(runUntil([&first] { return !first.requests.empty(); }));
    EXPECT_EQ(first.requests.size(), 1);
}

TEST_F(InstanceGuardTest, WhatTheLauncherHandsOverLeavesTheEnvironment) {
    setenv("XDG_ACTIVATION_TOKEN", "token-1", 1);
    setenv("DESKTOP_STARTUP_ID", "start-1", 1);

    const auto tokens = InstanceGuard::takeLaunchTokens();

    EXPECT_EQ(tokens.activation, "token-1");
    EXPECT_EQ(tokens.startup, "start-1");
    EXPECT_EQ(std::getenv("XDG_ACTIVATION_TOKEN"), nullptr);
    EXPECT_EQ(std::getenv("DESKTOP_STARTUP_ID"), nullptr);
    EXPECT_EQ(InstanceGuard::takeLaunchTokens().activation, "");
}

TEST_F(InstanceGuardTest, TheStartupIdServesAsTokenWhereThereIsNoOther) {
    setenv("DESKTOP_STARTUP_ID", "start-1", 1);

    EXPECT_EQ(InstanceGuard::takeLaunchTokens().activation, "start-1");
}

TEST_F(InstanceGuardTest, AFirstThatDoesNotAnswerIsStillThere) {
    BusMessage unanswered;
    const auto calls = addOther([&unanswered](const BusMessage& call) { unanswered = call; });
    const Start start(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(start));

    EXPECT_THAT(start.results, ElementsAre(Result::anotherIsSilent));
    EXPECT_EQ(unanswered.member(), "Activate");
}

TEST_F(InstanceGuardTest, AFirstThatRefusesHasNotShownItself) {
    const auto calls = addOther(
        [](const BusMessage& call) { call.reply({.name = BusError::failed, .text = "not now"}).send(); });
    const Start start(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(start));

    EXPECT_THAT(start.results, ElementsAre(Result::anotherIsSilent));
}

TEST_F(InstanceGuardTest, WhenTheFirstEndsWhileItIsAskedTheSecondIsTheFirst) {
    bool wasAsked = false;
    auto calls = addOther([&wasAsked](const BusMessage&) { wasAsked = true; });
    const Start start(loop_, daemon_.address());
    ASSERT_TRUE(runUntil([&wasAsked] { return wasAsked; }));

    calls.reset();
    peers_.clear();

    ASSERT_TRUE(runUntilDecided(start));
    EXPECT_THAT(start.results, ElementsAre(Result::first));
}

TEST_F(InstanceGuardTest, AfterTheEndOfTheFirstTheNextIsTheFirst) {
    std::optional<Start> first(std::in_place, loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(*first));
    first.reset();

    const Start next(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(next));
    EXPECT_THAT(next.results, ElementsAre(Result::first));
}

TEST_F(InstanceGuardTest, WithoutABusTheResultSaysSo) {
    const Start start(loop_, "");

    ASSERT_TRUE(runUntilDecided(start));

    EXPECT_THAT(start.results, ElementsAre(Result::noBus));
}

TEST_F(InstanceGuardTest, ABusThatIsNotRunningIsNoBus) {
    stopBus();
    const Start start(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(start));

    EXPECT_THAT(start.results, ElementsAre(Result::noBus));
}

TEST_F(InstanceGuardTest, WhoFoundNoBusIsTheFirstWhenItComes) {
    stopBus();
    const Start start(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(start));
    ASSERT_TRUE(daemon_.start());
    ASSERT_TRUE(runUntil([&start] { return start.bus.state() == BusConnection::State::connected; }));

    const Start next(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(next));
    EXPECT_THAT(next.results, ElementsAre(Result::anotherRuns));
    EXPECT_THAT(start.results, ElementsAre(Result::noBus));
}

TEST_F(InstanceGuardTest, OpeningFilesAndUnknownActionsDoNothing) {
    const Start start(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(start));
    BusPeer& peer = addPeer();
    using Value = std::variant<std::string>;
    const std::map<std::string, Value> noData;

    const auto open = peer.call(target(), "Open", std::vector<std::string>{"file:///x"}, noData);
    ASSERT_TRUE(runUntilAnswered(open));
    const auto action =
        peer.call(target(), "ActivateAction", std::string("dance"), std::vector<Value>(), noData);
    ASSERT_TRUE(runUntilAnswered(action));

    EXPECT_EQ(open->error(), "");
    EXPECT_EQ(action->error(), "");
    EXPECT_TRUE(start.requests.empty());
}

TEST_F(InstanceGuardTest, AnActivationWithWrongArgumentsIsAnError) {
    const Start start(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(start));

    const auto answer = addPeer().call(target(), "Activate", std::string("now"));

    ASSERT_TRUE(runUntilAnswered(answer));
    EXPECT_EQ(answer->error(), BusError::invalidArguments);
    EXPECT_TRUE(start.requests.empty());
}

} // namespace tarnwick
