// What the desktop's notification center promises with either service: when one is absent, refuses, ends or
// comes back.
#include "tests/platform/bus/NotificationServiceContract.h"

#include <gmock/gmock.h>

#include <vector>

namespace tarnwick {

namespace {

using Ability = NotificationCenter::Ability;
using State = BusConnection::State;
using testing::ElementsAre;
using testing::IsEmpty;

} // namespace

TYPED_TEST_SUITE(NotificationServiceContract, NotificationServices);

TYPED_TEST(NotificationServiceContract, TheServiceIsAskedOnceForAllNotifications) {
    ASSERT_TRUE(this->connectWithService());
    this->center().post("down", "");
    this->center().post("up", "");
    ASSERT_TRUE(this->runUntilShown(2));

    this->center().post("down", "");

    ASSERT_TRUE(this->runUntilShown(3));
    EXPECT_EQ(this->service().questions(), 1);
}

TYPED_TEST(NotificationServiceContract, NoServiceIsAskedBeforeThereIsAReason) {
    ASSERT_TRUE(this->connectWithService());

    ASSERT_TRUE(this->runUntilServiceHasHeard());
    EXPECT_EQ(this->service().questions(), 0);
    EXPECT_EQ(this->center().canNotify(), Ability::unknown);
}

TYPED_TEST(NotificationServiceContract, TextThatIsNotUtf8DoesNotCostTheConnection) {
    ASSERT_TRUE(this->connectWithService());

    this->center().post("caf\xe9", "\xff");

    ASSERT_TRUE(this->runUntilShown(1));
    EXPECT_EQ(this->shown().front().title, "caf\uFFFD");
    EXPECT_EQ(this->shown().front().body, "\uFFFD");
}

TYPED_TEST(NotificationServiceContract, WhatIsPostedWhileTheBusIsConnectingIsShown) {
    this->addService();
    ASSERT_EQ(this->bus_.state(), State::connecting);

    this->center().post("early", "");

    ASSERT_TRUE(this->runUntilShown(1));
    EXPECT_THAT(this->titles(), ElementsAre("early"));
}

TYPED_TEST(NotificationServiceContract, AuthorizationMayBeRequestedBeforeTheBusIsThere) {
    this->addService();
    ASSERT_EQ(this->bus_.state(), State::connecting);

    this->center().requestAuthorization();

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::yes));
}

TYPED_TEST(NotificationServiceContract, TheFirstNotificationOpensABusThatIsOpenedWhenNeeded) {
    this->addService();
    BusConnection unopened(this->loop_, this->daemon_.address(), BusConnection::Opening::whenNeeded);
    DesktopNotificationCenter center(this->loop_, unopened, this->surroundings);
    ASSERT_TRUE(this->runUntilConnected());
    this->runFor(0.1);
    ASSERT_EQ(unopened.state(), State::connecting);

    center.post("Title", "Body");

    EXPECT_TRUE(this->runUntilShown(1));
}

// Absence.

TYPED_TEST(NotificationServiceContract, WithoutABusThereIsNoAuthorization) {
    this->stopBus();
    ASSERT_TRUE(this->runUntilUnavailable());

    this->center().requestAuthorization();

    EXPECT_EQ(this->center().canNotify(), Ability::no);
}

TYPED_TEST(NotificationServiceContract, AChangedAbilityIsToldOnce) {
    std::vector<Ability> told;
    this->center().onAbilityChange = [&] { told.push_back(this->center().canNotify()); };
    this->stopBus();
    ASSERT_TRUE(this->runUntilUnavailable());

    this->center().requestAuthorization();
    this->center().requestAuthorization();

    EXPECT_EQ(told, std::vector{Ability::no});
}

TYPED_TEST(NotificationServiceContract, WithoutABusWhatIsPostedIsDropped) {
    this->stopBus();
    ASSERT_TRUE(this->runUntilUnavailable());

    this->center().post("lost", "");
    this->outlastPatience();

    ASSERT_TRUE(this->daemon_.start());
    this->addService();
    ASSERT_TRUE(this->runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(this->runUntilServiceHasHeard());
    EXPECT_THAT(this->titles(), IsEmpty());
}

TYPED_TEST(NotificationServiceContract, WithoutAServiceWhatIsPostedIsDropped) {
    ASSERT_TRUE(this->runUntilConnected());
    this->center().post("lost", "");
    ASSERT_TRUE(this->runUntilAbilityIs(Ability::no));
    this->outlastPatience();

    this->addService();

    ASSERT_TRUE(this->runUntilAbilityIs(Ability::yes));
    ASSERT_TRUE(this->runUntilServiceHasHeard());
    EXPECT_THAT(this->titles(), IsEmpty());
}

TYPED_TEST(NotificationServiceContract, AServiceThatComesLateAuthorizes) {
    ASSERT_TRUE(this->runUntilConnected());
    this->center().requestAuthorization();
    ASSERT_TRUE(this->runUntilAbilityIs(Ability::no));

    this->addService();

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::yes));
}

// Going and coming back.

TYPED_TEST(NotificationServiceContract, AServiceThatHasEndedMayBeStartedAgainByTheNextNotification) {
    ASSERT_TRUE(this->findService());

    this->removeService();

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::unknown));
}

TYPED_TEST(NotificationServiceContract, AServiceThatComesBackInTimeShowsWhatWaits) {
    ASSERT_TRUE(this->findService());
    this->removeService();
    ASSERT_TRUE(this->runUntilAbilityIs(Ability::unknown));
    this->center().post("down", "");
    this->center().post("up", "");
    ASSERT_TRUE(this->runUntilAbilityIs(Ability::no));

    this->addService();

    ASSERT_TRUE(this->runUntilShown(2));
    EXPECT_THAT(this->titles(), ElementsAre("down", "up"));
}

TYPED_TEST(NotificationServiceContract, ABusThatComesBackInTimeBringsWhatWaits) {
    this->stopBus();
    ASSERT_TRUE(this->runUntilUnavailable());
    this->center().post("down", "");
    ASSERT_EQ(this->center().canNotify(), Ability::no);

    ASSERT_TRUE(this->daemon_.start());
    this->addService();

    ASSERT_TRUE(this->runUntilShown(1));
    EXPECT_THAT(this->titles(), ElementsAre("down"));
}

TYPED_TEST(NotificationServiceContract, AfterARestartOfTheBusItGoesOn) {
    this->addService();
    this->center().post("first", "");
    ASSERT_TRUE(this->runUntilShown(1));
    this->removeService();
    this->stopBus();
    ASSERT_TRUE(this->runUntilAbilityIs(Ability::no));

    ASSERT_TRUE(this->daemon_.start());
    this->addService();

    ASSERT_TRUE(this->runUntilAbilityIs(Ability::yes));
    this->center().post("second", "");
    EXPECT_TRUE(this->runUntilShown(1));
}

// Refusing.

TYPED_TEST(NotificationServiceContract, ARefusedNotificationChangesNothing) {
    ASSERT_TRUE(this->findService());
    this->service().refuses = true;

    this->center().post("refused", "");
    ASSERT_TRUE(this->runUntil([this] { return this->service().refusals() == 1; }));
    ASSERT_TRUE(this->runUntilServiceHasHeard());

    EXPECT_EQ(this->center().canNotify(), Ability::yes);
    this->service().refuses = false;
    this->center().post("shown", "");
    ASSERT_TRUE(this->runUntilShown(1));
    EXPECT_THAT(this->titles(), ElementsAre("shown"));
}

TYPED_TEST(NotificationServiceContract, EachNotificationIsTriedThoughTheOneBeforeWasRefused) {
    ASSERT_TRUE(this->connectWithService());
    this->service().refuses = true;

    this->center().post("down", "");
    this->center().post("up", "");

    EXPECT_TRUE(this->runUntil([this] { return this->service().refusals() == 2; }));
}

// Waiting.

TYPED_TEST(NotificationServiceContract, OfManyThatWaitTheLatestAreKept) {
    for (std::size_t i = 0; i < DesktopNotificationCenter::mostWaiting + 2; ++i) {
        this->center().post(std::to_string(i), "");
    }

    this->addService();

    ASSERT_TRUE(this->runUntilShown(DesktopNotificationCenter::mostWaiting));
    EXPECT_EQ(this->titles().front(), "2");
}

TYPED_TEST(NotificationServiceContract, ItsEndForgetsWhatWaits) {
    this->addService();
    {
        DesktopNotificationCenter center(this->loop_, this->bus_, this->surroundings);
        center.post("lost", "");
    }

    ASSERT_TRUE(this->runUntilConnected());
    ASSERT_TRUE(this->runUntilServiceHasHeard());
    EXPECT_THAT(this->titles(), IsEmpty());
}

} // namespace tarnwick
