// Notifications on the desktop's bus, which shows them or is not there to do so.
#include "platform/bus/DesktopNotificationCenter.h"

#include "tests/platform/bus/BusTest.h"
#include "tests/platform/bus/FakeNotificationServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
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
/// Whoever waits for somebody else takes longer.
constexpr double atOnce = 1;

class DesktopNotificationCenterTest : public BusTest {
protected:
    explicit DesktopNotificationCenterTest(double patience = longPatience)
        : center_(loop_, bus_, Surroundings::desktop, icons_.path(), patience) {}

    void addDaemon(std::vector<std::string> capabilities = {"body"}) {
        service_.emplace(addPeer(), std::move(capabilities));
    }

    /// It ends.
    void removeDaemon() {
        service_.reset();
        peers_.clear();
    }

    /// It has the name, but reads nothing until it wakes up.
    void addHangingDaemon() {
        hanging_ = std::make_unique<BusPeer>(daemon_.address());
        service_.emplace(*hanging_);
    }

    void hangDaemon() {
        hanging_ = std::move(peers_.back());
        peers_.pop_back();
    }

    void wakeUpDaemon() { peers_.push_back(std::move(hanging_)); }

    void removeHangingDaemon() {
        service_.reset();
        hanging_.reset();
    }

    static void addIcon(const std::filesystem::path& iconFolder) {
        const std::filesystem::path folder = iconFolder / "hicolor/scalable/apps";
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "tarnwick.svg") << "<svg/>";
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

    std::unique_ptr<BusPeer> hanging_;
    std::optional<FakeNotificationDaemon> service_;
    test::TemporaryFolder icons_;
    DesktopNotificationCenter center_;
};

class ImpatientNotificationCenterTest : public DesktopNotificationCenterTest {
protected:
    ImpatientNotificationCenterTest() : DesktopNotificationCenterTest(shortPatience) {}
};

/// Patient enough for a service to come, and for a test to see the end of it.
class WaitingNotificationTest : public DesktopNotificationCenterTest {
protected:
    WaitingNotificationTest() : DesktopNotificationCenterTest(patience) {}

    /// Nobody's turn comes meanwhile, not even the center's.
    void beBusyUntil(double time) const {
        while (loop_.now() < time) {
        }
    }

    static constexpr double patience = 2;
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

TEST_F(DesktopNotificationCenterTest, TheProgramsOwnIconGoesAsAFile) {
    addIcon(icons_.path());
    addDaemon();
    ASSERT_TRUE(runUntilConnected());

    center_.post("title", "");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(
        service_->shown().front().icon,
        "file://" + (icons_.path() / "hicolor/scalable/apps/tarnwick.svg").string());
}

TEST_F(DesktopNotificationCenterTest, AnIconInAFolderOfAnyNameIsGivenAsAUri) {
    const std::filesystem::path folder = icons_.path() / "50% \xc3\xa9 #?";
    addIcon(folder);
    addDaemon();
    DesktopNotificationCenter center(loop_, bus_, Surroundings::desktop, folder);

    center.post("title", "");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(
        service_->shown().front().icon,
        "file://" + icons_.path().string() + "/50%25%20%C3%A9%20%23%3F/hicolor/scalable/apps/tarnwick.svg");
}

TEST_F(DesktopNotificationCenterTest, AnIconThatHasGoneIsLeftToTheTheme) {
    addIcon(icons_.path());
    addDaemon();
    ASSERT_TRUE(runUntilConnected());
    std::filesystem::remove_all(icons_.path() / "hicolor");

    center_.post("title", "");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(service_->shown().front().icon, "tarnwick");
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
    DesktopNotificationCenter center(loop_, unopened, Surroundings::desktop);
    ASSERT_TRUE(runUntilConnected());
    runFor(0.1);
    ASSERT_EQ(unopened.state(), BusConnection::State::connecting);

    center.post("Title", "Body");

    EXPECT_TRUE(runUntilShown(1));
}

TEST_F(ImpatientNotificationCenterTest, WithoutABusWhatIsPostedIsDropped) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());

    center_.post("lost", "");
    runFor(2 * shortPatience);

    ASSERT_TRUE(daemon_.start());
    addDaemon();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(runUntilHeardBy(service_->peer()));
    EXPECT_THAT(summaries(), IsEmpty());
}

TEST_F(ImpatientNotificationCenterTest, WithoutADaemonWhatIsPostedIsDropped) {
    ASSERT_TRUE(runUntilConnected());
    center_.post("lost", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));
    runFor(2 * shortPatience);

    addDaemon();

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(runUntilHeardBy(service_->peer()));
    EXPECT_THAT(summaries(), IsEmpty());
}

TEST_F(DesktopNotificationCenterTest, ADaemonThatComesLateShowsWhatIsPostedFromThenOn) {
    ASSERT_TRUE(runUntilConnected());
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));
    addDaemon();

    center_.post("shown", "");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(summaries(), ElementsAre("shown"));
}

TEST_F(DesktopNotificationCenterTest, ADaemonThatComesBackInTimeShowsWhatWaits) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    removeDaemon();
    ASSERT_TRUE(runUntilAbilityIs(Ability::unknown));
    center_.post("down", "");
    center_.post("up", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));

    addDaemon();

    ASSERT_TRUE(runUntilShown(2));
    EXPECT_THAT(summaries(), ElementsAre("down", "up"));
}

TEST_F(DesktopNotificationCenterTest, ABusThatComesBackInTimeBringsWhatWaits) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());
    center_.post("down", "");
    ASSERT_EQ(center_.canNotify(), Ability::no);

    ASSERT_TRUE(daemon_.start());
    addDaemon();

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(summaries(), ElementsAre("down"));
}

TEST_F(WaitingNotificationTest, AQuestionThatIsNotAnsweredTakesNoLaterPostAlong) {
    addHangingDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.requestAuthorization();
    runFor(0.75 * patience);
    center_.post("down", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));

    removeHangingDaemon();
    addDaemon();

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(summaries(), ElementsAre("down"));
}

TEST_F(WaitingNotificationTest, ADaemonThatWasSilentBeforeAPostIsAskedAgainForIt) {
    addHangingDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.requestAuthorization();
    runFor(0.75 * patience);
    center_.post("down", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));

    wakeUpDaemon();

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(summaries(), ElementsAre("down"));
}

TEST_F(WaitingNotificationTest, AnAnswerThatIsReadTooLateShowsNothing) {
    ASSERT_TRUE(runUntilConnected());
    const double posted = loop_.now();
    center_.post("stale", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));
    runFor(0.5 * patience);
    addDaemon();
    ASSERT_TRUE(runUntil([this] { return service_->questions() == 1; }));
    ASSERT_LT(loop_.now(), posted + patience);

    beBusyUntil(posted + 1.1 * patience);

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(runUntilHeardBy(service_->peer()));
    EXPECT_THAT(summaries(), IsEmpty());
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
    EXPECT_LT(loop_.now() - start, atOnce);
}

TEST_F(DesktopNotificationCenterTest, ADaemonThatHangsLaterOnHoldsNothingUp) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    hangDaemon();
    const double start = loop_.now();

    center_.post("down", "");
    center_.post("up", "");

    bool isRunning = false;
    const auto timer = loop_.after(0, [&isRunning] { isRunning = true; });
    EXPECT_TRUE(runUntil([&isRunning] { return isRunning; }));
    EXPECT_LT(loop_.now() - start, atOnce);
    EXPECT_THAT(summaries(), IsEmpty());
}

TEST_F(ImpatientNotificationCenterTest, WhatADaemonHasNotTakenInTimeIsDropped) {
    addHangingDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.post("stale", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));

    removeHangingDaemon();
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
    hangDaemon();
    center_.post("down", "");
    center_.post("up", "");
    runFor(0.5);

    wakeUpDaemon();

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

    EXPECT_TRUE(runUntilAbilityIs(Ability::yes));
}

TEST_F(DesktopNotificationCenterTest, AuthorizationMayBeRequestedBeforeTheBusIsThere) {
    addDaemon();

    center_.requestAuthorization();

    EXPECT_TRUE(runUntilAbilityIs(Ability::yes));
}

TEST_F(DesktopNotificationCenterTest, WithoutADaemonThereIsNoAuthorization) {
    ASSERT_TRUE(runUntilConnected());

    center_.requestAuthorization();

    EXPECT_TRUE(runUntilAbilityIs(Ability::no));
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
}

TEST_F(DesktopNotificationCenterTest, ADaemonThatHasEndedMayBeStartedAgainByTheNextNotification) {
    addDaemon();
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));

    removeDaemon();

    EXPECT_TRUE(runUntilAbilityIs(Ability::unknown));
}

TEST_F(DesktopNotificationCenterTest, ARefusedNotificationChangesNothing) {
    addDaemon();
    ASSERT_TRUE(runUntilConnected());
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    service_->refusals().refuseFromNowOn();

    center_.post("refused", "");
    ASSERT_TRUE(runUntil([this] { return service_->refusals().count() == 1; }));
    ASSERT_TRUE(runUntilHeardBy(service_->peer()));

    EXPECT_EQ(center_.canNotify(), Ability::yes);
    service_->refusals().accept();
    center_.post("shown", "");
    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(summaries(), ElementsAre("shown"));
}

TEST_F(DesktopNotificationCenterTest, EachNotificationIsTriedThoughTheOneBeforeWasRefused) {
    addDaemon();
    service_->refusals().refuseFromNowOn();
    ASSERT_TRUE(runUntilConnected());

    center_.post("down", "");
    center_.post("up", "");

    EXPECT_TRUE(runUntil([this] { return service_->refusals().count() == 2; }));
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
    explicit NotificationPortalTest(double patience = longPatience)
        : center_(loop_, bus_, Surroundings::sandbox, {}, patience) {}

    void addPortal(std::uint32_t version = 2) { portal_.emplace(addPeer(), version); }

    void removePortal() {
        portal_.reset();
        peers_.clear();
    }

    /// It has the name, but reads nothing.
    void addHangingPortal() {
        hanging_ = std::make_unique<BusPeer>(daemon_.address());
        hanging_->connection().requestName(FakeNotificationPortal::name);
    }

    [[nodiscard]] bool runUntilAbilityIs(Ability ability) {
        return runUntil([this, ability] { return center_.canNotify() == ability; });
    }

    [[nodiscard]] bool runUntilShown(std::size_t count) {
        return runUntil([this, count] { return portal_->shown().size() == count; });
    }

    [[nodiscard]] std::vector<std::string> titles() const {
        std::vector<std::string> found;
        for (const auto& notification : portal_->shown()) {
            found.push_back(notification.content.at("title").get<std::string>());
        }
        return found;
    }

    std::unique_ptr<BusPeer> hanging_;
    std::optional<FakeNotificationPortal> portal_;
    DesktopNotificationCenter center_;
};

class ImpatientNotificationPortalTest : public NotificationPortalTest {
protected:
    ImpatientNotificationPortalTest() : NotificationPortalTest(shortPatience) {}
};

} // namespace

TEST_F(NotificationPortalTest, InsideASandboxThePortalIsGivenTheTextsAndTheUsualSound) {
    addPortal();

    center_.post("Connection down", "1 < 2 & 3");

    ASSERT_TRUE(runUntilShown(1));
    const Hints& content = portal_->shown().front().content;
    ASSERT_THAT(names(content), UnorderedElementsAre("title", "body", "priority", "sound"));
    EXPECT_EQ(content.at("title").get<std::string>(), "Connection down");
    EXPECT_EQ(content.at("body").get<std::string>(), "1 < 2 & 3");
    EXPECT_EQ(content.at("priority").get<std::string>(), "normal");
    EXPECT_EQ(content.at("sound").get<std::string>(), "default");
}

TEST_F(NotificationPortalTest, APortalOfTheFirstVersionKnowsNoSound) {
    addPortal(1);

    center_.post("title", "body");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(names(portal_->shown().front().content), UnorderedElementsAre("title", "body", "priority"));
}

TEST_F(NotificationPortalTest, APortalThatComesBackIsAskedForItsVersionAnew) {
    addPortal(1);
    center_.post("first", "");
    ASSERT_TRUE(runUntilShown(1));
    removePortal();
    ASSERT_TRUE(runUntilAbilityIs(Ability::unknown));

    addPortal(2);

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    center_.post("second", "");
    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(titles(), ElementsAre("second"));
    EXPECT_EQ(portal_->shown().front().content.count("sound"), 1U);
}

TEST_F(NotificationPortalTest, APortalThatComesBackInTimeShowsWhatWaits) {
    addPortal();
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    removePortal();
    ASSERT_TRUE(runUntilAbilityIs(Ability::unknown));
    center_.post("down", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));

    addPortal();

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(titles(), ElementsAre("down"));
}

TEST_F(NotificationPortalTest, WithoutAPortalThereIsNoAuthorization) {
    center_.requestAuthorization();

    EXPECT_TRUE(runUntilAbilityIs(Ability::no));
}

TEST_F(ImpatientNotificationPortalTest, WithoutAPortalWhatIsPostedIsDropped) {
    center_.post("lost", "");
    ASSERT_TRUE(runUntilAbilityIs(Ability::no));
    runFor(2 * shortPatience);

    addPortal();

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(runUntilHeardBy(portal_->peer()));
    EXPECT_THAT(titles(), IsEmpty());
}

TEST_F(NotificationPortalTest, APortalThatHangsHoldsNothingUp) {
    addHangingPortal();
    ASSERT_TRUE(runUntilConnected());
    const double start = loop_.now();

    center_.post("down", "");

    bool isRunning = false;
    const auto timer = loop_.after(0, [&isRunning] { isRunning = true; });
    EXPECT_TRUE(runUntil([&isRunning] { return isRunning; }));
    EXPECT_LT(loop_.now() - start, atOnce);
}

TEST_F(ImpatientNotificationPortalTest, APortalThatDoesNotAnswerInTimeIsNoneAtPresent) {
    addHangingPortal();

    center_.requestAuthorization();

    EXPECT_TRUE(runUntilAbilityIs(Ability::no));
}

TEST_F(NotificationPortalTest, ARefusedNotificationChangesNothing) {
    addPortal();
    center_.requestAuthorization();
    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    portal_->refusals().refuseFromNowOn();

    center_.post("refused", "");
    ASSERT_TRUE(runUntil([this] { return portal_->refusals().count() == 1; }));
    ASSERT_TRUE(runUntilHeardBy(portal_->peer()));

    EXPECT_EQ(center_.canNotify(), Ability::yes);
    portal_->refusals().accept();
    center_.post("shown", "");
    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(titles(), ElementsAre("shown"));
}

TEST_F(NotificationPortalTest, EachNotificationHasANameOfItsOwn) {
    addPortal();

    center_.post("down", "");
    center_.post("down", "");

    ASSERT_TRUE(runUntilShown(2));
    EXPECT_NE(portal_->shown().front().id, portal_->shown().back().id);
}

TEST_F(NotificationPortalTest, TheNextRunReplacesNoneOfThisOne) {
    addPortal();
    center_.post("down", "");
    ASSERT_TRUE(runUntilShown(1));
    DesktopNotificationCenter next(loop_, bus_, Surroundings::sandbox);

    next.post("down", "");

    ASSERT_TRUE(runUntilShown(2));
    EXPECT_NE(portal_->shown().front().id, portal_->shown().back().id);
}

TEST_F(NotificationPortalTest, TheDaemonIsLeftAlone) {
    addPortal();
    const FakeNotificationDaemon service(addPeer());

    center_.post("down", "");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(service.questions(), 0);
    EXPECT_THAT(service.shown(), IsEmpty());
}

TEST_F(NotificationPortalTest, AuthorizationIsThePortalsPresence) {
    addPortal();

    center_.requestAuthorization();

    EXPECT_TRUE(runUntilAbilityIs(Ability::yes));
}

} // namespace tarnwick
