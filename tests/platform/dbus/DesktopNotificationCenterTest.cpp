// Notifications on the desktop's bus, which shows them or is not there to do so.
#include "platform/dbus/DesktopNotificationCenter.h"

#include "BusTest.h"
#include "FakeNotificationServices.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

namespace {

using Ability = NotificationCenter::Ability;
using Surroundings = DesktopNotificationCenter::Surroundings;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

/// Outlasts any test.
constexpr double longPatience = 60;
constexpr double shortPatience = 0.5;

class DesktopNotificationCenterTest : public BusTest {
protected:
    explicit DesktopNotificationCenterTest(double patience = longPatience)
        : center_(loop_, bus_, Surroundings::desktop, patience) {
        center_.onAbilityChange = [this] { abilities_.push_back(center_.canNotify()); };
    }

    void addDaemon(std::vector<std::string> capabilities = {"body"}) {
        service_.emplace(addPeer(), std::move(capabilities));
    }

    /// It ends.
    void removeDaemon() {
        service_.reset();
        peers_.clear();
    }

    /// It has the name, but reads nothing.
    void addHangingDaemon() {
        hanging_ = std::make_unique<BusPeer>(daemon_.address());
        hanging_->connection().requestName(FakeNotificationDaemon::name);
    }

    [[nodiscard]] bool runUntilAbilityIs(Ability ability) {
        return runUntil([this, ability] { return center_.canNotify() == ability; });
    }

    [[nodiscard]] bool runUntilShown(std::size_t count) {
        return runUntil([this, count] { return service_->shown().size() == count; });
    }

    [[nodiscard]] bool runUntilUnavailable() {
        return runUntil([this] { return bus_.state() == BusConnection::State::unavailable; });
    }

    [[nodiscard]] std::vector<std::string> summaries() const {
        std::vector<std::string> found;
        for (const auto& notification : service_->shown()) {
            found.push_back(notification.summary);
        }
        return found;
    }

    std::optional<FakeNotificationDaemon> service_;
    std::unique_ptr<BusPeer> hanging_;
    std::vector<Ability> abilities_;
    DesktopNotificationCenter center_;
};

class ImpatientNotificationCenterTest : public DesktopNotificationCenterTest {
protected:
    ImpatientNotificationCenterTest() : DesktopNotificationCenterTest(shortPatience) {}
};

std::vector<std::string> names(const Hints& hints) {
    std::vector<std::string> found;
    for (const auto& [name, value] : hints) {
        found.push_back(name);
    }
    return found;
}

} // namespace

TEST_F(DesktopNotificationCenterTest, TheDaemonIsGivenEverythingThatItShows) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());

    center_.post("Connection down", "Nothing answers.");

    ASSERT_TRUE(runUntilShown(1));
    const FakeNotificationDaemon::Notification& shown = service_->shown().front();
    EXPECT_EQ(shown.application, "Tarnwick");
    EXPECT_EQ(shown.replaces, 0U);
    EXPECT_EQ(shown.icon, "tarnwick");
    EXPECT_EQ(shown.summary, "Connection down");
    EXPECT_EQ(shown.body, "Nothing answers.");
    EXPECT_THAT(shown.actions, IsEmpty());
    EXPECT_EQ(shown.expires, -1);
    ASSERT_THAT(names(shown.hints), UnorderedElementsAre("desktop-entry", "sound-name", "urgency"));
    EXPECT_EQ(shown.hints.at("desktop-entry").get<std::string>(), "tarnwick");
    EXPECT_EQ(shown.hints.at("sound-name").get<std::string>(), "message-new-instant");
    EXPECT_EQ(shown.hints.at("urgency").get<std::uint8_t>(), 1);
}

TEST_F(DesktopNotificationCenterTest, TwoNotificationsInARowAreTwo) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());

    center_.post("down", "");
    center_.post("up", "");

    ASSERT_TRUE(runUntilShown(2));
    EXPECT_THAT(summaries(), ElementsAre("down", "up"));
    EXPECT_EQ(service_->shown().back().replaces, 0U);
}

TEST_F(DesktopNotificationCenterTest, TheDaemonIsAskedOnceForAllNotifications) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.post("down", "");
    center_.post("up", "");
    ASSERT_TRUE(runUntilShown(2));

    center_.post("down", "");

    ASSERT_TRUE(runUntilShown(3));
    EXPECT_EQ(service_->questions(), 1);
}

TEST_F(DesktopNotificationCenterTest, ABodyIsEscapedForADaemonThatReadsMarkup) {
    addDaemon({"body", "body-markup"});
    ASSERT_TRUE(runUntilConnected());

    center_.post("a < b & c", "1 < 2 & 3 > 2 \"quoted\"");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(service_->shown().front().body, "1 &lt; 2 &amp; 3 &gt; 2 \"quoted\"");
    // Summaries are never markup.
    EXPECT_EQ(service_->shown().front().summary, "a < b & c");
}

TEST_F(DesktopNotificationCenterTest, ABodyIsLeftAsItIsForADaemonThatReadsNoMarkup) {
    addDaemon({"body"});
    ASSERT_TRUE(runUntilConnected());

    center_.post("title", "1 < 2 & 3");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(service_->shown().front().body, "1 < 2 & 3");
}

TEST_F(DesktopNotificationCenterTest, ANewDaemonIsAskedAnew) {
    addDaemon({"body", "body-markup"});
    ASSERT_TRUE(runUntilConnected());
    center_.post("first", "&");
    ASSERT_TRUE(runUntilShown(1));
    removeDaemon();
    ASSERT_TRUE(runUntilAbilityIs(Ability::unknown));

    addDaemon({"body"});

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    center_.post("second", "&");
    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(service_->shown().front().body, "&");
}

TEST_F(DesktopNotificationCenterTest, TextThatIsNotUtf8DoesNotCostTheConnection) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());

    center_.post("caf\xe9", "\xff");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(service_->shown().front().summary, "caf\uFFFD");
    EXPECT_EQ(service_->shown().front().body, "\uFFFD");
}

TEST_F(DesktopNotificationCenterTest, WhatIsPostedWhileTheBusIsStillConnectingIsShown) {
    addDaemon();
    ASSERT_EQ(bus_.state(), BusConnection::State::connecting);

    center_.post("early", "");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(summaries(), ElementsAre("early"));
}

TEST_F(DesktopNotificationCenterTest, ABusThatNobodyElseNeedsIsOpenedByTheFirstNotification) {
    addDaemon();
    BusConnection unopened(loop_, daemon_.address(), BusConnection::Opening::whenNeeded);
    DesktopNotificationCenter center(loop_, unopened, Surroundings::desktop, longPatience);
    ASSERT_TRUE(runUntilConnected());
    runFor(0.1);
    ASSERT_EQ(unopened.state(), BusConnection::State::connecting);

    center.post("Title", "Body");

    EXPECT_TRUE(runUntilShown(1));
}

TEST_F(DesktopNotificationCenterTest, WithoutABusWhatIsPostedIsDropped) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());

    center_.post("lost", "");

    ASSERT_TRUE(daemon_.start());
    addDaemon();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(runUntilHeardBy(service_->peer()));
    EXPECT_THAT(summaries(), IsEmpty());
}

TEST_F(DesktopNotificationCenterTest, WithoutADaemonWhatIsPostedIsDropped) {
    ASSERT_TRUE(runUntilConnected());
    center_.post("lost", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));

    addDaemon();

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(runUntilHeardBy(service_->peer()));
    EXPECT_THAT(summaries(), IsEmpty());
}

TEST_F(DesktopNotificationCenterTest, ADaemonThatComesLateShowsWhatIsPostedFromThenOn) {
    ASSERT_TRUE(runUntilConnected());
    center_.post("lost", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));
    addDaemon();

    center_.post("shown", "");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(summaries(), ElementsAre("shown"));
}

TEST_F(DesktopNotificationCenterTest, AfterARestartOfTheBusItGoesOn) {
    addDaemon();
    center_.post("first", "");
    ASSERT_TRUE(runUntilShown(1));
    service_.reset();
    stopBus();
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));

    ASSERT_TRUE(daemon_.start());
    addDaemon();

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    center_.post("second", "");
    EXPECT_TRUE(runUntilShown(1));
}

TEST_F(DesktopNotificationCenterTest, ADaemonThatHangsHoldsNothingUp) {
    addHangingDaemon();
    ASSERT_TRUE(runUntilConnected());
    const double start = loop_.now();

    center_.post("down", "");

    bool isRunning = false;
    const auto timer = loop_.after(0, [&isRunning] { isRunning = true; });
    EXPECT_TRUE(runUntil([&isRunning] { return isRunning; }));
    EXPECT_LT(loop_.now() - start, longPatience / 2);
}

TEST_F(ImpatientNotificationCenterTest, WhatADaemonHasNotTakenInTimeIsDropped) {
    addHangingDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.post("stale", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));

    hanging_.reset();
    addDaemon();

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(runUntilHeardBy(service_->peer()));
    EXPECT_THAT(summaries(), IsEmpty());
}

TEST_F(DesktopNotificationCenterTest, ADaemonThatHangsLaterOnGetsWhatItMayStillShow) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));

    // The peer is not served meanwhile.
    center_.post("down", "");
    center_.post("up", "");
    const double end = loop_.now() + 0.5;
    while (loop_.now() < end) {
        loop_.runOne(0.01);
    }

    ASSERT_TRUE(runUntilShown(2));
    EXPECT_THAT(summaries(), ElementsAre("down", "up"));
}

TEST_F(ImpatientNotificationCenterTest, ABusThatDoesNotAnswerInTimeLetsThePostGo) {
    addDaemon();
    center_.post("stale", "");
    // While nothing runs the connection is not taken up, as if the bus took so long.
    const double end = loop_.now() + 2 * shortPatience;
    while (loop_.now() < end) {
    }

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(runUntilHeardBy(service_->peer()));
    EXPECT_THAT(summaries(), IsEmpty());
}

TEST_F(DesktopNotificationCenterTest, OfManyThatWaitTheLatestAreKept) {
    for (std::size_t i = 0; i < DesktopNotificationCenter::mostWaiting + 2; ++i) {
        center_.post(std::to_string(i), "");
    }

    addDaemon();

    ASSERT_TRUE(runUntilShown(DesktopNotificationCenter::mostWaiting));
    EXPECT_EQ(summaries().front(), "2");
}

TEST_F(ImpatientNotificationCenterTest, ADaemonThatIsReplacedWhileItIsAskedLeavesTheAnswerToTheNext) {
    addHangingDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilHeardBy(addPeer()));

    hanging_->connection().releaseName(FakeNotificationDaemon::name);
    addDaemon();

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    // The first one's time is up meanwhile.
    runFor(2 * shortPatience);
    EXPECT_EQ(center_.canNotify(), Ability::yes);
}

TEST_F(DesktopNotificationCenterTest, NobodyIsAskedBeforeThereIsAReason) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());

    ASSERT_TRUE(runUntilHeardBy(service_->peer()));
    EXPECT_EQ(service_->questions(), 0);
    EXPECT_EQ(center_.canNotify(), Ability::unknown);
}

TEST_F(DesktopNotificationCenterTest, AuthorizationIsTheDaemonsPresence) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());

    center_.requestAuthorization();

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    EXPECT_THAT(abilities_, ElementsAre(Ability::yes));
}

TEST_F(DesktopNotificationCenterTest, AuthorizationMayBeRequestedBeforeTheBusIsThere) {
    addDaemon();

    center_.requestAuthorization();

    EXPECT_TRUE(runUntilAbilityIs(Ability::yes));
}

TEST_F(DesktopNotificationCenterTest, WithoutADaemonThereIsNoAuthorization) {
    ASSERT_TRUE(runUntilConnected());

    center_.requestAuthorization();

    ASSERT_TRUE(runUntilAbilityIs(Ability::no));
    EXPECT_THAT(abilities_, ElementsAre(Ability::no));
}

TEST_F(DesktopNotificationCenterTest, WithoutABusThereIsNoAuthorization) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());

    center_.requestAuthorization();

    EXPECT_EQ(center_.canNotify(), Ability::no);
}

TEST_F(DesktopNotificationCenterTest, ADaemonThatComesLateAuthorizes) {
    ASSERT_TRUE(runUntilConnected());
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));

    addDaemon();

    EXPECT_TRUE(runUntilAbilityIs(Ability::yes));
    EXPECT_THAT(abilities_, ElementsAre(Ability::no, Ability::yes));
}

TEST_F(DesktopNotificationCenterTest, ADaemonThatHasEndedMayBeStartedAgainByTheNextNotification) {
    addDaemon();
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));

    removeDaemon();

    EXPECT_TRUE(runUntilAbilityIs(Ability::unknown));
}

TEST_F(DesktopNotificationCenterTest, ItsEndForgetsWhatWaits) {
    addDaemon();
    {
        DesktopNotificationCenter center(loop_, bus_, Surroundings::desktop);
        center.post("lost", "");
    }

    ASSERT_TRUE(runUntilConnected());
    ASSERT_TRUE(runUntilHeardBy(service_->peer()));
    EXPECT_THAT(summaries(), IsEmpty());
}

namespace {

class NotificationPortalTest : public BusTest {
protected:
    [[nodiscard]] bool runUntilShown(std::size_t count) {
        return runUntil([this, count] { return portal_.shown().size() == count; });
    }

    FakeNotificationPortal& portal() { return portal_; }

    void SetUp() override {}

private:
    [[nodiscard]] BusPeer& startWithPeer() {
        EXPECT_TRUE(daemon_.start());
        return addPeer();
    }

    FakeNotificationPortal portal_{startWithPeer()};

protected:
    DesktopNotificationCenter center_{loop_, bus_, Surroundings::sandbox};
};

} // namespace

TEST_F(NotificationPortalTest, InsideASandboxThePortalIsGivenTheTexts) {
    center_.post("Connection down", "1 < 2 & 3");

    ASSERT_TRUE(runUntilShown(1));
    const Hints& content = portal().shown().front().content;
    ASSERT_THAT(names(content), UnorderedElementsAre("title", "body", "priority"));
    EXPECT_EQ(content.at("title").get<std::string>(), "Connection down");
    EXPECT_EQ(content.at("body").get<std::string>(), "1 < 2 & 3");
    EXPECT_EQ(content.at("priority").get<std::string>(), "normal");
}

TEST_F(NotificationPortalTest, EachNotificationHasANameOfItsOwn) {
    center_.post("down", "");
    center_.post("down", "");

    ASSERT_TRUE(runUntilShown(2));
    EXPECT_NE(portal().shown().front().id, portal().shown().back().id);
}

TEST_F(NotificationPortalTest, TheNextRunReplacesNoneOfThisOne) {
    center_.post("down", "");
    ASSERT_TRUE(runUntilShown(1));
    DesktopNotificationCenter next(loop_, bus_, Surroundings::sandbox);

    next.post("down", "");

    ASSERT_TRUE(runUntilShown(2));
    EXPECT_NE(portal().shown().front().id, portal().shown().back().id);
}

TEST_F(NotificationPortalTest, TheDaemonIsLeftAlone) {
    const FakeNotificationDaemon service(addPeer());

    center_.post("down", "");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(service.questions(), 0);
    EXPECT_THAT(service.shown(), IsEmpty());
}

TEST_F(NotificationPortalTest, AuthorizationIsThePortalsPresence) {
    center_.requestAuthorization();

    EXPECT_TRUE(runUntil([this] { return center_.canNotify() == Ability::yes; }));
}

} // namespace tarnwick
