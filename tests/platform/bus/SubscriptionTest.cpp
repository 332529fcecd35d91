// Telling several listeners.
#include "platform/bus/Subscription.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tarnwick {

TEST(SubscriptionTest, AllListenersAreToldInTheOrderOfTheirComing) {
    Subscribers subscribers;
    std::vector<int> told;
    const Subscription first = subscribers.add([&told] { told.push_back(1); });
    const Subscription second = subscribers.add([&told] { told.push_back(2); });

    subscribers.tell();

    EXPECT_THAT(told, testing::ElementsAre(1, 2));
}

TEST(SubscriptionTest, AnEndedListenerIsNotTold) {
    Subscribers subscribers;
    int calls = 0;
    Subscription subscription = subscribers.add([&calls] { ++calls; });

    subscription.reset();
    subscribers.tell();

    EXPECT_EQ(calls, 0);
}

TEST(SubscriptionTest, AListenerMayEndAnotherThatIsStillToBeTold) {
    Subscribers subscribers;
    int calls = 0;
    Subscription second;
    const Subscription first = subscribers.add([&second] { second.reset(); });
    second = subscribers.add([&calls] { ++calls; });

    subscribers.tell();

    EXPECT_EQ(calls, 0);
}

TEST(SubscriptionTest, AListenerMayEndItself) {
    Subscribers subscribers;
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
