// What the desktop's notification center promises when its service hangs.
#include "tests/platform/bus/NotificationServiceContract.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using Ability = NotificationCenter::Ability;
using testing::ElementsAre;
using testing::IsEmpty;

template<class Driver>
class HangingNotificationService : public NotificationServiceContract<Driver> {
protected:
    /// Seconds, for what a test waits to see given up.
    static constexpr double shortPatience = 0.5;
    /// Seconds that leave time for a service to come, and for a test to see the end.
    static constexpr double somePatience = 2;

    /// Posts "down" shortly before the center gives the service up.
    [[nodiscard]] bool postWhileAQuestionIsUnanswered() {
        this->becomeImpatient(this->somePatience);
        this->addHangingService();
        if (!this->runUntilConnected()) {
            return false;
        }
        this->center().requestAuthorization();
        this->runFor(0.75 * this->somePatience);
        this->center().post("down", "");
        return this->runUntilAbilityIs(Ability::no);
    }
};

TYPED_TEST_SUITE(HangingNotificationService, NotificationServices);

} // namespace

TYPED_TEST(HangingNotificationService, AServiceThatHangsHoldsNothingUp) {
    this->addHangingService();
    ASSERT_TRUE(this->runUntilConnected());
    const double start = this->loop_.now();

    this->center().post("down", "");

    this->expectNothingWaited(start);
}

TYPED_TEST(HangingNotificationService, AServiceThatHangsLaterOnHoldsNothingUp) {
    ASSERT_TRUE(this->findService());
    this->hangService();
    const double start = this->loop_.now();

    this->center().post("down", "");
    this->center().post("up", "");

    this->expectNothingWaited(start);
    EXPECT_THAT(this->titles(), IsEmpty());
}

TYPED_TEST(HangingNotificationService, AServiceThatHangsLaterOnGetsWhatItMayStillShow) {
    ASSERT_TRUE(this->findService());
    this->hangService();
    this->center().post("down", "");
    this->center().post("up", "");
    this->runFor(0.5);

    this->wakeUpService();

    ASSERT_TRUE(this->runUntilShown(2));
    EXPECT_THAT(this->titles(), ElementsAre("down", "up"));
}

TYPED_TEST(HangingNotificationService, AServiceThatDoesNotAnswerInTimeIsNoneAtPresent) {
    this->becomeImpatient(this->shortPatience);
    this->addHangingService();

    this->center().requestAuthorization();

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::no));
}

TYPED_TEST(HangingNotificationService, WhatAServiceHasNotTakenInTimeIsDropped) {
    this->addHangingService();
    ASSERT_TRUE(this->runUntilConnected());
    this->center().post("stale", "");

    this->outlastPatience();
    this->removeService();
    this->addService();

    ASSERT_TRUE(this->runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(this->runUntilServiceHasHeard());
    EXPECT_THAT(this->titles(), IsEmpty());
}

TYPED_TEST(HangingNotificationService, AnUnansweredQuestionDropsNoLaterPost) {
    ASSERT_TRUE(this->postWhileAQuestionIsUnanswered());

    this->removeService();
    this->addService();

    ASSERT_TRUE(this->runUntilShown(1));
    EXPECT_THAT(this->titles(), ElementsAre("down"));
}

TYPED_TEST(HangingNotificationService, AServiceThatWasSilentBeforeAPostIsAskedAgainForIt) {
    ASSERT_TRUE(this->postWhileAQuestionIsUnanswered());

    this->wakeUpService();

    ASSERT_TRUE(this->runUntilShown(1));
    EXPECT_THAT(this->titles(), ElementsAre("down"));
}

TYPED_TEST(HangingNotificationService, AServiceThatIsReplacedWhileItIsAskedLeavesTheAnswerToTheNext) {
    this->addHangingService();
    ASSERT_TRUE(this->runUntilConnected());
    this->center().requestAuthorization();
    ASSERT_TRUE(this->runUntilHeardBy(this->addPeer()));

    this->hanging_->releaseName(std::decay_t<decltype(this->service())>::name);
    this->addService();

    ASSERT_TRUE(this->runUntilAbilityIs(Ability::yes));
    // At last the first one answers too, with an error.
    this->wakeUpService();
    ASSERT_TRUE(this->runUntilHeardBy(*this->peers_.back()));
    EXPECT_EQ(this->center().canNotify(), Ability::yes);
}

TYPED_TEST(HangingNotificationService, AnAnswerThatIsReadTooLateShowsNothing) {
    ASSERT_TRUE(this->runUntilConnected());
    this->center().post("stale", "");
    ASSERT_TRUE(this->runUntilAbilityIs(Ability::no));
    this->addService();
    ASSERT_TRUE(this->runUntil([this] { return this->service().questions() == 1; }));
    ASSERT_NE(this->center().canNotify(), Ability::yes);

    this->outlastPatience();

    ASSERT_TRUE(this->runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(this->runUntilServiceHasHeard());
    EXPECT_THAT(this->titles(), IsEmpty());
}

TYPED_TEST(HangingNotificationService, ABusThatDoesNotAnswerInTimeLetsThePostGo) {
    this->addService();
    this->center().post("stale", "");

    // As if the bus were slow to connect.
    this->outlastPatience();

    ASSERT_TRUE(this->runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(this->runUntilServiceHasHeard());
    EXPECT_THAT(this->titles(), IsEmpty());
}

} // namespace tarnwick
