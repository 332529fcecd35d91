// When the connection is down or up, when the pinger is restarted, and what is announced.
#include "core/ConnectionWatchdog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace tarnwick {
namespace {

using Action = ConnectionWatchdog::Action;
using Config = ConnectionWatchdog::Config;
using Status = ConnectionWatchdog::Status;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto restartPinger = Action::restartPinger;
constexpr auto startTimedOut = Action::startTimedOut;
constexpr auto announceDown = Action::announceDown;
constexpr auto announceUp = Action::announceUp;

/// Time-out 4 s, interval 1 s: replyTimeout 8, maxSilence 20, grace 10, restarts 2 to 15 s apart.
const Config defaults = Config::original(4, 1);

/// Nothing has happened since it was made at second 0.
ConnectionWatchdog untouched(const Config& config = defaults) {
    return {config, 0};
}

/// The first restart was asked for at second 0 and is not settled.
ConnectionWatchdog resolving(const Config& config = defaults) {
    ConnectionWatchdog watchdog(config, 0);
    EXPECT_THAT(watchdog.reset(0, 0, true), ElementsAre(restartPinger));
    return watchdog;
}

/// Pinging since second 0, without any reply.
ConnectionWatchdog pinging(const Config& config = defaults) {
    ConnectionWatchdog watchdog = resolving(config);
    watchdog.pingingStarted(0);
    return watchdog;
}

/// Pinging since second 0, the only reply came at second 1; alerts are on.
ConnectionWatchdog confirmed(const Config& config = defaults) {
    ConnectionWatchdog watchdog = pinging(config);
    watchdog.setAlertsEnabled(true);
    EXPECT_THAT(watchdog.replyReceived(1), IsEmpty());
    return watchdog;
}

/// As `confirmed`, and silent since: down at second 10, announced, and restarted there.
ConnectionWatchdog announcedDown(const Config& config = defaults) {
    ConnectionWatchdog watchdog = confirmed(config);
    EXPECT_THAT(watchdog.tick(10), ElementsAre(announceDown, restartPinger));
    watchdog.pingingStarted(10);
    return watchdog;
}

/// The seconds, up to `end`, at which ticks every quarter of a second ask for a restart, each settled at
/// once.
std::vector<double> restartsUntil(double end, ConnectionWatchdog& watchdog, double begin) {
    std::vector<double> times;
    for (double now = begin; now <= end; now += 0.25) {
        for (const Action action : watchdog.tick(now)) {
            if (action == restartPinger) {
                times.push_back(now);
                watchdog.pingingStarted(now);
            }
        }
    }
    return times;
}

struct Settings {
    double timeout;
    double interval;
    Config expected;
};

class WatchdogConfig : public testing::TestWithParam<Settings> {};

INSTANTIATE_TEST_SUITE_P(
    FromSettings, WatchdogConfig,
    testing::Values(
        Settings{4, 1, {8, 20, 10, 2, 2, 15, 10}}, Settings{2.5, 10, {42.5, 54.5, 10, 2, 2, 15, 10}},
        Settings{4, 15, {64, 76, 10, 2, 2, 15, 10}}, Settings{4, 20, {64, 76, 10, 2, 2, 20, 10}},
        Settings{4, 30, {64, 76, 10, 2, 2, 30, 10}}, Settings{4, 40, {84, 96, 10, 2, 2, 40, 10}},
        Settings{4, 60, {124, 136, 10, 2, 2, 60, 10}}));

TEST_P(WatchdogConfig, HasItsLimits) {
    EXPECT_EQ(Config::original(GetParam().timeout, GetParam().interval), GetParam().expected);
}

// The beginning of an episode.

TEST(Watchdog, BeginsStartingWithNothingDue) {
    ConnectionWatchdog watchdog = untouched();
    EXPECT_EQ(watchdog.status(), Status::starting);
    EXPECT_FALSE(watchdog.isResolving());
    EXPECT_THAT(watchdog.tick(19), IsEmpty());
}

TEST(Watchdog, RestartsThePingerAtOnceAfterAResetWithoutDelay) {
    ConnectionWatchdog watchdog = untouched();
    EXPECT_THAT(watchdog.reset(5, 0, true), ElementsAre(restartPinger));
    EXPECT_TRUE(watchdog.isResolving());
}

TEST(Watchdog, RestartsThePingerExactlyTheDelayAfterAReset) {
    ConnectionWatchdog watchdog = untouched();
    EXPECT_THAT(watchdog.reset(5, 2, true), IsEmpty());
    EXPECT_THAT(watchdog.tick(6.9), IsEmpty());
    EXPECT_THAT(watchdog.tick(7), ElementsAre(restartPinger));
}

TEST(Watchdog, AsksForNoSecondRestartWhileTheFirstIsResolving) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.tick(9.9), IsEmpty());
    EXPECT_TRUE(watchdog.isResolving());
}

TEST(Watchdog, IsNoLongerResolvingOncePingingHasStarted) {
    ConnectionWatchdog watchdog = resolving();
    watchdog.pingingStarted(3);
    EXPECT_FALSE(watchdog.isResolving());
    EXPECT_EQ(watchdog.status(), Status::starting);
}

TEST(Watchdog, IsNoLongerResolvingOnceTheStartHasFailed) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.startFailed(3), IsEmpty());
    EXPECT_FALSE(watchdog.isResolving());
}

class ResetFrom : public testing::TestWithParam<Status> {
protected:
    [[nodiscard]] static ConnectionWatchdog watchdogThatIs(Status status) {
        switch (status) {
        case Status::starting:
            return pinging();
        case Status::up:
            return confirmed();
        case Status::down:
            break;
        }
        return announcedDown();
    }
};

std::string nameOf(const testing::TestParamInfo<Status>& tested) {
    constexpr std::array names{"Starting", "Up", "Down"};
    return names.at(static_cast<std::size_t>(tested.param));
}

INSTANTIATE_TEST_SUITE_P(
    Watchdog, ResetFrom, testing::Values(Status::starting, Status::up, Status::down), nameOf);

TEST_P(ResetFrom, BeginsAnEpisodeThatIsStarting) {
    ConnectionWatchdog watchdog = watchdogThatIs(GetParam());
    ASSERT_EQ(watchdog.status(), GetParam());

    EXPECT_THAT(watchdog.reset(12, 0, false), ElementsAre(restartPinger));
    EXPECT_EQ(watchdog.status(), Status::starting);
}

TEST_P(ResetFrom, CountsTheSilenceFromItself) {
    ConnectionWatchdog watchdog = watchdogThatIs(GetParam());
    static_cast<void>(watchdog.reset(12, 100, false));
    EXPECT_THAT(watchdog.tick(32), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::starting);
    static_cast<void>(watchdog.tick(32.01));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, MayRestartRightAfterAResetHoweverRecentTheLastRestart) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.reset(0.5, 0, false), ElementsAre(restartPinger));
}

TEST(Watchdog, GivesAResetItsOwnGrace) {
    ConnectionWatchdog watchdog = confirmed();
    static_cast<void>(watchdog.reset(100, 0, false));
    static_cast<void>(watchdog.startFailed(109.9));
    EXPECT_EQ(watchdog.status(), Status::starting);
}

// Going down by silence.

TEST(Watchdog, GoesDownOnlyAfterMoreThanTheReplyTimeoutOfSilentPinging) {
    ConnectionWatchdog watchdog = pinging();
    EXPECT_THAT(watchdog.tick(8.0), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::starting);
    static_cast<void>(watchdog.tick(8.01));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, CountsTheReplyTimeoutFromTheStartOfPinging) {
    ConnectionWatchdog watchdog = resolving();
    watchdog.pingingStarted(5);
    EXPECT_THAT(watchdog.tick(13), IsEmpty());
    static_cast<void>(watchdog.tick(13.01));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, CountsTheReplyTimeoutFromTheFirstStartOfTheEpisode) {
    ConnectionWatchdog watchdog = pinging();
    EXPECT_THAT(watchdog.networkChanged(4), ElementsAre(restartPinger));
    watchdog.pingingStarted(5);
    static_cast<void>(watchdog.tick(8.01));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, CountsTheReplyTimeoutFromTheLastReply) {
    ConnectionWatchdog watchdog = pinging();
    static_cast<void>(watchdog.replyReceived(6));
    EXPECT_THAT(watchdog.tick(14), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::up);
    static_cast<void>(watchdog.tick(14.01));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, GoesDownWithoutPingingOnlyAfterTheLongestSilence) {
    ConnectionWatchdog watchdog = untouched();
    EXPECT_THAT(watchdog.tick(8.01), IsEmpty());
    EXPECT_THAT(watchdog.tick(20.0), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::starting);
    static_cast<void>(watchdog.tick(20.01));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, DoesNotTakeAReplyOfAnEarlierEpisodeForSilenceInThisOne) {
    ConnectionWatchdog watchdog = confirmed();
    static_cast<void>(watchdog.reset(1000, 0, false));
    watchdog.pingingStarted(1001);
    EXPECT_THAT(watchdog.tick(1009), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::starting);
}

TEST(Watchdog, StaysStartingUntilThereIsAReply) {
    ConnectionWatchdog watchdog = pinging();
    EXPECT_THAT(watchdog.tick(7), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::starting);
    static_cast<void>(watchdog.replyReceived(7.5));
    EXPECT_EQ(watchdog.status(), Status::up);
}

TEST(Watchdog, TakesNewLimitsAtTheNextTick) {
    ConnectionWatchdog watchdog = pinging();
    watchdog.setConfig(Config::original(4, 30));
    EXPECT_THAT(watchdog.tick(60), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::starting);
}

// Failed and stalled starts.

TEST(Watchdog, RetriesAStartThatFailedWithinTheGrace) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.startFailed(3), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::starting);
    EXPECT_THAT(watchdog.tick(4.9), IsEmpty());
    EXPECT_THAT(watchdog.tick(5), ElementsAre(restartPinger));
}

TEST(Watchdog, GoesDownWhenAStartFailsAfterTheGrace) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.startFailed(11), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, GoesDownWhenAStartFailsExactlyAtTheEndOfTheGrace) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.startFailed(10), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, AnnouncesAKnownHostThatGoesDownByAFailedStart) {
    ConnectionWatchdog watchdog = confirmed();
    static_cast<void>(watchdog.networkChanged(3));
    static_cast<void>(watchdog.replyReceived(12));
    EXPECT_THAT(watchdog.startFailed(13.5), ElementsAre(announceDown));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, StaysUpWhenAStartFailsWithinTheGraceOfANetworkChange) {
    ConnectionWatchdog watchdog = pinging();
    static_cast<void>(watchdog.replyReceived(40));
    EXPECT_THAT(watchdog.networkChanged(41), ElementsAre(restartPinger));
    EXPECT_THAT(watchdog.startFailed(42), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::up);
    EXPECT_THAT(watchdog.tick(44), ElementsAre(restartPinger));
}

TEST(Watchdog, SaysNothingWhenAStartFailsWhileDown) {
    ConnectionWatchdog watchdog = announcedDown();
    EXPECT_THAT(watchdog.startFailed(11), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, DoesNotUseTheGraceForRetriesWhileDown) {
    ConnectionWatchdog watchdog = announcedDown();
    EXPECT_THAT(watchdog.networkChanged(13), ElementsAre(restartPinger));
    EXPECT_THAT(watchdog.startFailed(13.5), IsEmpty());
    EXPECT_THAT(watchdog.tick(15.5), IsEmpty());
}

TEST(Watchdog, LetsARetryComeNoLaterThanARestartThatIsDueAnyway) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.networkChanged(2.5), IsEmpty()); // due at once, but still resolving
    static_cast<void>(watchdog.startFailed(3));
    EXPECT_THAT(watchdog.tick(3.5), IsEmpty()); // too soon after the failed start
    EXPECT_THAT(watchdog.tick(5), ElementsAre(restartPinger));
}

TEST(Watchdog, GivesUpAStalledStartExactlyAtTheLimit) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.tick(9.99), IsEmpty());
    EXPECT_THAT(watchdog.tick(10), ElementsAre(startTimedOut));
    EXPECT_FALSE(watchdog.isResolving());
}

TEST(Watchdog, GoesDownWhenAStalledStartIsGivenUpAfterTheGrace) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.tick(10), ElementsAre(startTimedOut));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, RetriesWhenAStalledStartIsGivenUpWithinTheGrace) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.networkChanged(5), IsEmpty());
    EXPECT_THAT(watchdog.tick(10), ElementsAre(startTimedOut));
    EXPECT_EQ(watchdog.status(), Status::starting);
    EXPECT_THAT(watchdog.tick(12), ElementsAre(restartPinger));
}

TEST(Watchdog, AnnouncesDownAfterGivingUpAStalledStart) {
    ConnectionWatchdog watchdog = confirmed();
    static_cast<void>(watchdog.reset(100, 0, false));
    EXPECT_THAT(watchdog.tick(110), ElementsAre(startTimedOut, announceDown));
}

TEST(Watchdog, GivesUpARecoveryRestartThatStalls) {
    ConnectionWatchdog watchdog = confirmed();
    EXPECT_THAT(watchdog.tick(10), ElementsAre(announceDown, restartPinger));
    EXPECT_THAT(watchdog.tick(19.9), IsEmpty());
    EXPECT_THAT(watchdog.tick(20), ElementsAre(startTimedOut));
    EXPECT_THAT(watchdog.tick(34.9), IsEmpty());
    EXPECT_THAT(watchdog.tick(35), ElementsAre(restartPinger));
}

// Announcements.

TEST(Watchdog, ADownIsAnnouncedOnce) {
    ConnectionWatchdog watchdog = confirmed();
    EXPECT_THAT(watchdog.tick(9), IsEmpty());
    EXPECT_THAT(watchdog.tick(9.01), ElementsAre(announceDown, restartPinger));
    watchdog.pingingStarted(9.01);
    for (const double now : {10.0, 12.0, 20.0}) {
        EXPECT_THAT(watchdog.tick(now), IsEmpty()) << now;
    }
}

TEST(Watchdog, ADownIsAnnouncedOnlyAfterAFirstReply) {
    ConnectionWatchdog watchdog = pinging();
    watchdog.setAlertsEnabled(true);
    EXPECT_THAT(watchdog.tick(9), ElementsAre(restartPinger));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, AHostThatWentDownUnannouncedComesUpUnannounced) {
    ConnectionWatchdog watchdog = pinging();
    watchdog.setAlertsEnabled(true);
    static_cast<void>(watchdog.tick(9));
    EXPECT_THAT(watchdog.replyReceived(10), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::up);
}

TEST(Watchdog, ARecoveryIsAnnouncedAtTheFirstReplyOnly) {
    ConnectionWatchdog watchdog = announcedDown();
    EXPECT_THAT(watchdog.replyReceived(12), ElementsAre(announceUp));
    EXPECT_EQ(watchdog.status(), Status::up);
    EXPECT_THAT(watchdog.replyReceived(13), IsEmpty());
}

TEST(Watchdog, EveryOutageIsAnnouncedAnew) {
    ConnectionWatchdog watchdog = announcedDown();
    EXPECT_THAT(watchdog.replyReceived(12), ElementsAre(announceUp));
    EXPECT_THAT(watchdog.tick(20.5), ElementsAre(announceDown, restartPinger));
    EXPECT_THAT(watchdog.replyReceived(21), ElementsAre(announceUp));
}

TEST(Watchdog, ADownIsNotAnnouncedWithAlertsOff) {
    ConnectionWatchdog watchdog = confirmed();
    watchdog.setAlertsEnabled(false);
    EXPECT_THAT(watchdog.tick(10), ElementsAre(restartPinger));
}

TEST(Watchdog, ADownFromBeforeAlertsWereSwitchedOnIsNotAnnounced) {
    ConnectionWatchdog watchdog = confirmed();
    watchdog.setAlertsEnabled(false);
    static_cast<void>(watchdog.tick(10));
    watchdog.pingingStarted(10);
    watchdog.setAlertsEnabled(true);
    EXPECT_THAT(watchdog.tick(11), IsEmpty());
    EXPECT_THAT(watchdog.replyReceived(12), IsEmpty());
}

TEST(Watchdog, ARecoveryWithAlertsOffIsNeverAnnouncedLater) {
    ConnectionWatchdog watchdog = announcedDown();
    watchdog.setAlertsEnabled(false);
    EXPECT_THAT(watchdog.replyReceived(12), IsEmpty());
    watchdog.setAlertsEnabled(true);
    EXPECT_THAT(watchdog.replyReceived(13), IsEmpty());
}

TEST(Watchdog, ARecoveryIsStillAnnouncedAfterAResetOfTheSameHost) {
    ConnectionWatchdog watchdog = announcedDown();
    static_cast<void>(watchdog.reset(12, 0, false));
    EXPECT_THAT(watchdog.replyReceived(13), ElementsAre(announceUp));
}

TEST(Watchdog, ASecondDownAfterAResetIsNotAnnouncedBeforeARecovery) {
    ConnectionWatchdog watchdog = announcedDown();
    static_cast<void>(watchdog.reset(12, 0, false));
    watchdog.pingingStarted(12);
    EXPECT_THAT(watchdog.tick(21), ElementsAre(restartPinger));
    EXPECT_EQ(watchdog.status(), Status::down);
}

TEST(Watchdog, AKnownHostStaysKnownAfterAResetOfTheSameHost) {
    ConnectionWatchdog watchdog = confirmed();
    static_cast<void>(watchdog.reset(2, 0, false));
    watchdog.pingingStarted(2);
    EXPECT_THAT(watchdog.tick(11), ElementsAre(announceDown, restartPinger));
}

TEST(Watchdog, ANewHostOwesNoRecovery) {
    ConnectionWatchdog watchdog = announcedDown();
    static_cast<void>(watchdog.reset(12, 0, true));
    EXPECT_THAT(watchdog.replyReceived(13), IsEmpty());
}

TEST(Watchdog, ANewHostGoesDownUnannouncedUntilItHasReplied) {
    ConnectionWatchdog watchdog = confirmed();
    static_cast<void>(watchdog.reset(2, 0, true));
    watchdog.pingingStarted(2);
    EXPECT_THAT(watchdog.tick(11), ElementsAre(restartPinger));
    EXPECT_EQ(watchdog.status(), Status::down);
}

// Recovery restarts and their back-off.

TEST(Watchdog, RestartsAtEightThenEveryFifteenSecondsWithTheDefaults) {
    ConnectionWatchdog watchdog = pinging();
    EXPECT_THAT(restartsUntil(70, watchdog, 0), ElementsAre(8.25, 23.25, 38.25, 53.25, 68.25));
}

TEST(Watchdog, RestartsAReplyTimeoutAfterTheLastRestart) {
    ConnectionWatchdog watchdog = confirmed();
    static_cast<void>(watchdog.networkChanged(4));
    watchdog.pingingStarted(4);
    EXPECT_THAT(watchdog.tick(9.25), ElementsAre(announceDown));
    EXPECT_THAT(restartsUntil(30, watchdog, 9.5), ElementsAre(12, 27));
}

TEST(Watchdog, RestartsEveryThirtySecondsAtAnIntervalOfThirty) {
    ConnectionWatchdog watchdog = pinging(Config::original(4, 30));
    EXPECT_THAT(restartsUntil(160, watchdog, 0), ElementsAre(64.25, 94.25, 124.25, 154.25));
}

TEST(Watchdog, DoublesTheBackOffUpToItsCeiling) {
    Config config = defaults;
    config.replyTimeout = 4;
    config.maxRestartInterval = 20;
    ConnectionWatchdog watchdog = pinging(config);
    EXPECT_THAT(restartsUntil(80, watchdog, 0), ElementsAre(4.25, 12.25, 28.25, 48.25, 68.25));
}

TEST(Watchdog, CountsTheBackOffFromTheTimeThatARestartedPingerStarts) {
    ConnectionWatchdog watchdog = confirmed();
    static_cast<void>(watchdog.tick(10));
    watchdog.pingingStarted(13);
    EXPECT_THAT(watchdog.tick(27.9), IsEmpty());
    EXPECT_THAT(watchdog.tick(28), ElementsAre(restartPinger));
}

TEST(Watchdog, CountsTheBackOffFromTheTimeThatARestartFails) {
    ConnectionWatchdog watchdog = confirmed();
    static_cast<void>(watchdog.tick(10));
    static_cast<void>(watchdog.startFailed(14));
    EXPECT_THAT(watchdog.tick(28.9), IsEmpty());
    EXPECT_THAT(watchdog.tick(29), ElementsAre(restartPinger));
}

TEST(Watchdog, CountsTheBackOffFromGoingDownWhenThePingerWasNeverStarted) {
    ConnectionWatchdog watchdog = untouched();
    EXPECT_THAT(watchdog.tick(21), IsEmpty());
    EXPECT_THAT(watchdog.tick(28.9), IsEmpty());
    EXPECT_THAT(watchdog.tick(29), ElementsAre(restartPinger));
}

TEST(Watchdog, BeginsTheBackOffAnewAfterAReply) {
    ConnectionWatchdog watchdog = pinging();
    static_cast<void>(restartsUntil(40, watchdog, 0));
    static_cast<void>(watchdog.replyReceived(40));
    EXPECT_THAT(restartsUntil(70, watchdog, 40), ElementsAre(48.25, 63.25));
}

TEST(Watchdog, BeginsTheBackOffAnewAfterAReset) {
    ConnectionWatchdog watchdog = pinging();
    static_cast<void>(restartsUntil(40, watchdog, 0));
    EXPECT_THAT(watchdog.reset(40, 0, false), ElementsAre(restartPinger));
    watchdog.pingingStarted(40);
    EXPECT_THAT(restartsUntil(70, watchdog, 40), ElementsAre(48.25, 63.25));
}

TEST(Watchdog, CancelsTheRecoveryRestartWhenAReplyComes) {
    ConnectionWatchdog watchdog = announcedDown();
    EXPECT_THAT(watchdog.tick(20), IsEmpty()); // the next restart is due at 25
    static_cast<void>(watchdog.replyReceived(24));
    EXPECT_THAT(watchdog.tick(25), IsEmpty());
    EXPECT_THAT(watchdog.tick(31), IsEmpty());
}

TEST(Watchdog, KeepsARestartThatIsDueWhenAReplyComesWhileUp) {
    ConnectionWatchdog watchdog = confirmed();
    EXPECT_THAT(watchdog.networkChanged(1.5), IsEmpty()); // due at 2
    static_cast<void>(watchdog.replyReceived(1.8));
    EXPECT_THAT(watchdog.tick(2), ElementsAre(restartPinger));
}

TEST(Watchdog, DoesNotLengthenTheBackOffByScheduledRestarts) {
    ConnectionWatchdog watchdog = confirmed();
    EXPECT_THAT(watchdog.networkChanged(4), ElementsAre(restartPinger));
    watchdog.pingingStarted(4);
    EXPECT_THAT(restartsUntil(30, watchdog, 4.25), ElementsAre(12, 27));
}

// Network changes and the rate limit.

TEST(Watchdog, RestartsAtOnceAfterANetworkChange) {
    ConnectionWatchdog watchdog = confirmed();
    EXPECT_THAT(watchdog.networkChanged(5), ElementsAre(restartPinger));
}

TEST(Watchdog, RestartsAtOnceAfterANetworkChangeBeforeAnyRestart) {
    ConnectionWatchdog watchdog = untouched();
    EXPECT_THAT(watchdog.networkChanged(0.5), ElementsAre(restartPinger));
}

TEST(Watchdog, DefersARestartForANetworkChangeToTheRateLimit) {
    ConnectionWatchdog watchdog = confirmed();
    EXPECT_THAT(watchdog.networkChanged(5), ElementsAre(restartPinger));
    watchdog.pingingStarted(5.2);
    EXPECT_THAT(watchdog.networkChanged(5.5), IsEmpty());
    EXPECT_THAT(watchdog.tick(7.1), IsEmpty());
    EXPECT_THAT(watchdog.tick(7.2), ElementsAre(restartPinger));
}

TEST(Watchdog, RestartsOnceForABurstOfNetworkChanges) {
    ConnectionWatchdog watchdog = confirmed();
    EXPECT_THAT(watchdog.networkChanged(5), ElementsAre(restartPinger));
    watchdog.pingingStarted(5);
    for (const double now : {5.1, 5.5, 6.0, 6.9}) {
        EXPECT_THAT(watchdog.networkChanged(now), IsEmpty()) << now;
    }
    EXPECT_THAT(watchdog.tick(7), ElementsAre(restartPinger));
    watchdog.pingingStarted(7);
    EXPECT_THAT(watchdog.tick(9), IsEmpty());
}

TEST(Watchdog, DefersARestartThatIsDueTooSoonAfterThePingerStarted) {
    ConnectionWatchdog watchdog = resolving();
    EXPECT_THAT(watchdog.networkChanged(1), IsEmpty()); // due at 2
    watchdog.pingingStarted(1.5);
    EXPECT_THAT(watchdog.tick(2), IsEmpty());
    EXPECT_THAT(watchdog.tick(3.4), IsEmpty());
    EXPECT_THAT(watchdog.tick(3.5), ElementsAre(restartPinger));
}

TEST(Watchdog, DoesNotPutOffARestartThatIsDueForANetworkChange) {
    ConnectionWatchdog watchdog = confirmed();
    EXPECT_THAT(watchdog.networkChanged(1.5), IsEmpty()); // due at 2
    watchdog.pingingStarted(1.9);
    EXPECT_THAT(watchdog.networkChanged(1.95), IsEmpty()); // would be due at 3.9
    EXPECT_THAT(watchdog.tick(3.9), ElementsAre(restartPinger));
    watchdog.pingingStarted(3.9);
    EXPECT_THAT(watchdog.tick(6), IsEmpty());
}

TEST(Watchdog, BringsARecoveryRestartForwardForANetworkChange) {
    ConnectionWatchdog watchdog = announcedDown();
    EXPECT_THAT(watchdog.tick(11), IsEmpty()); // due at 25
    EXPECT_THAT(watchdog.networkChanged(14), ElementsAre(restartPinger));
}

TEST(Watchdog, KeepsALongerGraceWhenTheNetworkChanges) {
    Config patient = defaults;
    patient.grace = 60;
    ConnectionWatchdog watchdog(patient, 0);
    static_cast<void>(watchdog.reset(0, 0, true));
    patient.grace = 10;
    watchdog.setConfig(patient);
    static_cast<void>(watchdog.networkChanged(3));
    EXPECT_THAT(watchdog.startFailed(15), IsEmpty());
    EXPECT_EQ(watchdog.status(), Status::starting);
}

TEST(Watchdog, JudgesTheSilenceWhenTheNetworkChanges) {
    ConnectionWatchdog watchdog = confirmed();
    EXPECT_THAT(watchdog.networkChanged(30), ElementsAre(announceDown, restartPinger));
    EXPECT_EQ(watchdog.status(), Status::down);
}

} // namespace
} // namespace tarnwick
