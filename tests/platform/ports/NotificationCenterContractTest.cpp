// What every notification center promises: the recorder that the model's tests use, and the real one with a
// notification daemon and with the portal.
#include "tests/platform/bus/NotificationDrivers.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Ability = NotificationCenter::Ability;

template<class Driver>
class NotificationCenterContract : public Driver {
protected:
    void SetUp() override {
        Driver::SetUp();
        this->addService();
    }

    [[nodiscard]] bool runUntilShown(std::size_t count) {
        return this->runUntil([this, count] { return this->shown().size() == count; });
    }

    [[nodiscard]] bool runUntilAbilityIs(Ability ability) {
        return this->runUntil([this, ability] { return this->center().canNotify() == ability; });
    }
};

using Drivers = testing::Types<RecordingDriver, DaemonDriver, PortalDriver>;
TYPED_TEST_SUITE(NotificationCenterContract, Drivers);

} // namespace

TYPED_TEST(NotificationCenterContract, WhatIsPostedIsShown) {
    this->center().post("Tarnwick — Connection down", "Your internet connection seems to be down.");

    ASSERT_TRUE(this->runUntilShown(1));
    EXPECT_EQ(this->shown().front().title, "Tarnwick — Connection down");
    EXPECT_EQ(this->shown().front().body, "Your internet connection seems to be down.");
}

TYPED_TEST(NotificationCenterContract, EqualPostsAreNotificationsOfTheirOwn) {
    this->center().post("title", "body");
    this->center().post("title", "body");

    EXPECT_TRUE(this->runUntilShown(2));
}

TYPED_TEST(NotificationCenterContract, TheOrderIsThatOfThePosts) {
    this->center().post("first", "");
    this->center().post("second", "");
    this->center().post("third", "");

    ASSERT_TRUE(this->runUntilShown(3));
    EXPECT_EQ(this->shown()[0].title, "first");
    EXPECT_EQ(this->shown()[1].title, "second");
    EXPECT_EQ(this->shown()[2].title, "third");
}

TYPED_TEST(NotificationCenterContract, TheAbilityIsUnknownBeforeARequest) {
    EXPECT_EQ(this->center().canNotify(), Ability::unknown);
}

TYPED_TEST(NotificationCenterContract, ARequestFindsTheService) {
    this->center().requestAuthorization();

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::yes));
}

TYPED_TEST(NotificationCenterContract, ABarePostFindsTheAbilityOut) {
    this->center().post("title", "body");

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::yes));
}

TYPED_TEST(NotificationCenterContract, ARequestFindsThatThereIsNoService) {
    this->removeService();
    this->center().requestAuthorization();

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::no));
}

TYPED_TEST(NotificationCenterContract, ABarePostFindsThatThereIsNoService) {
    this->removeService();
    this->center().post("title", "body");

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::no));
}

TYPED_TEST(NotificationCenterContract, AnAbilityThatIsKnownStays) {
    this->center().post("first", "");
    ASSERT_TRUE(this->runUntilShown(1));

    this->center().requestAuthorization();
    this->center().post("second", "");

    ASSERT_TRUE(this->runUntilShown(2));
    EXPECT_EQ(this->center().canNotify(), Ability::yes);
}

TYPED_TEST(NotificationCenterContract, WhatIsPostedAfterANoIsShownByAServiceThatHasCome) {
    this->removeService();
    this->center().requestAuthorization();
    ASSERT_TRUE(this->runUntilAbilityIs(Ability::no));
    this->addService();

    this->center().post("title", "body");

    ASSERT_TRUE(this->runUntilShown(1));
    EXPECT_EQ(this->center().canNotify(), Ability::yes);
}

TYPED_TEST(NotificationCenterContract, WhatIsPostedAfterARequestIsShown) {
    this->center().requestAuthorization();
    ASSERT_TRUE(this->runUntilAbilityIs(Ability::yes));

    this->center().post("title", "body");

    EXPECT_TRUE(this->runUntilShown(1));
}

} // namespace tarnwick
