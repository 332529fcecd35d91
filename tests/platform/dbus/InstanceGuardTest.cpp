// One program per user session.
#include "platform/dbus/InstanceGuard.h"

#include "BusTest.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <vector>

namespace tarnwick {

namespace {

using Result = InstanceGuard::Result;
using testing::ElementsAre;

/// One start of the program.
struct Start {
    Start(RunLoop& loop, const std::string& address)
        : bus(loop, address), guard(loop, bus, [this](Result result) { results.push_back(result); }) {
        guard.onActivate = [this](const std::string& token) { activations.push_back(token); };
    }

    BusConnection bus;
    std::vector<Result> results;
    std::vector<std::string> activations;
    InstanceGuard guard;
};

class InstanceGuardTest : public BusTest {
protected:
    [[nodiscard]] bool runUntilDecided(const Start& start) {
        return runUntil([&start] { return !start.results.empty(); });
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
    EXPECT_TRUE(runUntil([&first] { return first.activations.size() == 1; }));
}

TEST_F(InstanceGuardTest, ASecondStartPassesItsActivationTokenOn) {
    const Start first(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(first));
    setenv("XDG_ACTIVATION_TOKEN", "token-1", 1);

    const Start second(loop_, daemon_.address());
    const bool isDecided = runUntilDecided(second);
    unsetenv("XDG_ACTIVATION_TOKEN");

    ASSERT_TRUE(isDecided);
    ASSERT_TRUE(runUntil([&first] { return !first.activations.empty(); }));
    EXPECT_THAT(first.activations, ElementsAre("token-1"));
}

TEST_F(InstanceGuardTest, AFirstThatDoesNotAnswerIsStillThere) {
    BusPeer& silent = addPeer();
    silent.connection().requestName(InstanceGuard::name);
    sdbus::MethodCall unanswered;
    const auto object = sdbus::createObject(silent.connection(), "/org/tarnwick/Tarnwick");
    object->registerMethod(
        "org.freedesktop.Application", "Activate", "a{sv}", "",
        [&unanswered](const sdbus::MethodCall& call) { unanswered = call; });
    object->finishRegistration();
    const Start start(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(start));

    EXPECT_THAT(start.results, ElementsAre(Result::anotherRuns));
    EXPECT_TRUE(unanswered.isValid());
}

TEST_F(InstanceGuardTest, AfterTheEndOfTheFirstTheNextIsTheFirst) {
    std::optional<Start> first(std::in_place, loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(*first));
    first.reset();

    const Start next(loop_, daemon_.address());

    ASSERT_TRUE(runUntilDecided(next));
    EXPECT_THAT(next.results, ElementsAre(Result::first));
}

TEST_F(InstanceGuardTest, WithoutABusNobodyCanTell) {
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

TEST_F(InstanceGuardTest, OpeningFilesAndActionsDoNothing) {
    const Start start(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(start));
    BusPeer& peer = addPeer();
    const std::map<std::string, sdbus::Variant> noData;

    const auto open = peer.call(target(), "Open", std::vector<std::string>{"file:///x"}, noData);
    ASSERT_TRUE(runUntilAnswered(open));
    const auto action =
        peer.call(target(), "ActivateAction", std::string("quit"), std::vector<sdbus::Variant>(), noData);
    ASSERT_TRUE(runUntilAnswered(action));

    EXPECT_EQ(open->error, "");
    EXPECT_EQ(action->error, "");
    EXPECT_TRUE(start.activations.empty());
}

TEST_F(InstanceGuardTest, AnActivationWithWrongArgumentsIsAnError) {
    const Start start(loop_, daemon_.address());
    ASSERT_TRUE(runUntilDecided(start));

    const auto answer = addPeer().call(target(), "Activate", std::string("now"));

    ASSERT_TRUE(runUntilAnswered(answer));
    EXPECT_EQ(answer->error, "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_TRUE(start.activations.empty());
}

} // namespace tarnwick
