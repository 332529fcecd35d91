// What every notification center promises: the recorder that the model's tests use, and the real one with a
// notification daemon and with the portal.
#include "platform/bus/DesktopNotificationCenter.h"

#include "tests/platform/bus/BusTest.h"
#include "tests/platform/bus/FakeNotificationServices.h"
#include "tests/simulation/RecordingNotificationCenter.h"

#include <gmock/gmock.h>

#include <optional>
#include <vector>

namespace tarnwick {

namespace {

using Ability = NotificationCenter::Ability;
using simulation::RecordingNotificationCenter;
using Shown = std::vector<RecordingNotificationCenter::Notification>;

class RecordingDriver : public testing::Test {
protected:
    RecordingNotificationCenter& center() { return center_; }

    Shown shown() { return center_.shown(); }

    void removeService() { center_.answer = Ability::no; }

    void addService() { center_.answer = Ability::yes; }

    [[nodiscard]] static bool runUntil(const std::function<bool()>& condition) { return condition(); }

private:
    RecordingNotificationCenter center_;
};

class DaemonDriver : public BusTest {
protected:
    void SetUp() override {
        BusTest::SetUp();
        addService();
    }

    void addService() { daemonService_.emplace(addPeer()); }

    void removeService() {
        daemonService_.reset();
        peers_.clear();
    }

    NotificationCenter& center() { return center_; }

    Shown shown() {
        Shown result;
        for (const auto& notification : daemonService_->shown()) {
            result.push_back({notification.summary, notification.body});
        }
        return result;
    }

private:
    std::optional<FakeNotificationDaemon> daemonService_;
    DesktopNotificationCenter center_{loop_, bus_, DesktopNotificationCenter::Surroundings::desktop};
};

class PortalDriver : public BusTest {
protected:
    void SetUp() override {
        BusTest::SetUp();
        addService();
    }

    void addService() { portal_.emplace(addPeer()); }

    void removeService() {
        portal_.reset();
        peers_.clear();
    }

    NotificationCenter& center() { return center_; }

    Shown shown() {
        Shown result;
        for (const auto& notification : portal_->shown()) {
            result.push_back(
                {notification.content.at("title").get<std::string>(),
                 notification.content.at("body").get<std::string>()});
        }
        return result;
    }

private:
    std::optional<FakeNotificationPortal> portal_;
    DesktopNotificationCenter center_{loop_, bus_, DesktopNotificationCenter::Surroundings::sandbox};
};

template<class Driver>
class NotificationCenterContract : public Driver {
protected:
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

TYPED_TEST(NotificationCenterContract, TheAbilityIsUnknownUntilSomebodyAsks) {
    EXPECT_EQ(this->center().canNotify(), Ability::unknown);
}

TYPED_TEST(NotificationCenterContract, ARequestFindsOutThatSomebodyShows) {
    this->center().requestAuthorization();

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::yes));
}

TYPED_TEST(NotificationCenterContract, ABarePostFindsTheAbilityOut) {
    this->center().post("title", "body");

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::yes));
}

TYPED_TEST(NotificationCenterContract, ARequestFindsOutThatNobodyShows) {
    this->removeService();
    this->center().requestAuthorization();

    EXPECT_TRUE(this->runUntilAbilityIs(Ability::no));
}

TYPED_TEST(NotificationCenterContract, ABarePostFindsOutThatNobodyShows) {
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
