// Telling several listeners.
#include "platform/bus/Subscription.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tarnwick {

TEST(SubscriptionTest, AllListenersAreToldInTheOrderOfTheirComing) {
    Subscribers<int> subscribers;
    std::vector<int> told;
    const Subscription first = subscribers.add([&told](int value) { told.push_back(value); });
    const Subscription second = subscribers.add([&told](int value) { told.push_back(value * 10); });

    subscribers.tell(4);

    EXPECT_THAT(told, testing::ElementsAre(4, 40));
}

TEST(SubscriptionTest, AnEndedListenerIsNotTold) {
    Subscribers<> subscribers;
    int calls = 0;
    Subscription subscription = subscribers.add([&calls] { ++calls; });

    subscription.reset();
    subscribers.tell();

    EXPECT_EQ(calls, 0);
}

TEST(SubscriptionTest, AListenerMayEndAnotherThatIsStillToBeTold) {
    Subscribers<> subscribers;
    int calls = 0;
    Subscription second;
    const Subscription first = subscribers.add([&second] { second.reset(); });
    second = subscribers.add([&calls] { ++calls; });

    subscribers.tell();

    EXPECT_EQ(calls, 0);
}

TEST(SubscriptionTest, AListenerMayEndItself) {
    Subscribers<> subscribers;
    int calls = 0;
    Subscription subscription;
    subscription = subscribers.add([&subscription, &calls] {
        subscription.reset();
        ++calls;
    });

    subscribers.tell();
    subscribers.tell();

    EXPECT_EQ(calls, 1);
}

} // namespace tarnwick
