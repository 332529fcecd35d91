// Several programs that notify about the same: one of them shows it.
#include "tests/platform/bus/NotificationServiceContract.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using Rank = NameClaim::Rank;
using testing::Contains;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr auto host = "one.example";

} // namespace

template<class Driver>
class SharedSubjectTest : public NotificationServiceContract<Driver> {
protected:
    /// This program has a service to show its notifications; another one runs beside it.
    [[nodiscard]] bool start(Rank rank, Rank othersRank) {
        if (!this->connectWithService()) {
            return false;
        }
        this->becomeOf(rank);
        other_ = this->otherProgram(othersRank);
        return true;
    }

    [[nodiscard]] bool take(const std::string& subject) {
        return this->runUntilItHasSubject(this->center(), this->bus_, subject);
    }

    [[nodiscard]] bool otherTakes(const std::string& subject) {
        return this->runUntilItHasSubject(other_->center, other_->bus, subject);
    }

    /// Posts in both programs and waits until the service has heard of all of it.
    [[nodiscard]] bool postInBoth() {
        // What one has claimed or given up may be news that is still under way to the other.
        if (!this->runUntilAnsweredOn(other_->bus) || !this->runUntilAnsweredOn(this->bus_)) {
            return false;
        }
        this->center().post("here", "");
        other_->center.post("other", "");
        return this->runUntil([this] {
            return this->center().canNotify() == NotificationCenter::Ability::yes
                   && other_->center.canNotify() == NotificationCenter::Ability::yes;
        }) && this->runUntilServiceHasHeard()
               && this->runUntilAnsweredOn(other_->bus);
    }

    std::unique_ptr<typename Driver::OtherProgram> other_;
};

TYPED_TEST_SUITE(SharedSubjectTest, NotificationServices);

TYPED_TEST(SharedSubjectTest, OfTwoTheOneThatHadTheSubjectFirstShowsIt) {
    ASSERT_TRUE(this->start(Rank::ordinary, Rank::ordinary));
    ASSERT_TRUE(this->otherTakes(host));
    ASSERT_TRUE(this->take(host));

    ASSERT_TRUE(this->postInBoth());

    EXPECT_THAT(this->titles(), ElementsAre("other"));
}

TYPED_TEST(SharedSubjectTest, AfterTheEndOfTheFirstTheNextShowsIt) {
    ASSERT_TRUE(this->start(Rank::ordinary, Rank::ordinary));
    ASSERT_TRUE(this->otherTakes(host));
    ASSERT_TRUE(this->take(host));

    this->other_.reset();
    ASSERT_TRUE(this->runUntil([this] {
        // Repeated, since the bus tells of an end whenever it has seen it.
        this->center().post("after its end", "");
        return !this->titles().empty();
    }));

    EXPECT_THAT(this->titles(), Contains("after its end"));
}

TYPED_TEST(SharedSubjectTest, TheFirstRankShowsItAlthoughAnotherHadTheSubjectFirst) {
    ASSERT_TRUE(this->start(Rank::first, Rank::ordinary));
    ASSERT_TRUE(this->otherTakes(host));
    ASSERT_TRUE(this->take(host));

    ASSERT_TRUE(this->postInBoth());

    EXPECT_THAT(this->titles(), ElementsAre("here"));
}

TYPED_TEST(SharedSubjectTest, TheFirstRankKeepsIt) {
    ASSERT_TRUE(this->start(Rank::first, Rank::ordinary));
    ASSERT_TRUE(this->take(host));
    ASSERT_TRUE(this->otherTakes(host));

    ASSERT_TRUE(this->postInBoth());

    EXPECT_THAT(this->titles(), ElementsAre("here"));
}

TYPED_TEST(SharedSubjectTest, AHostInCapitalsIsTheSameSubject) {
    ASSERT_TRUE(this->start(Rank::ordinary, Rank::ordinary));
    ASSERT_TRUE(this->otherTakes("ONE.Example"));
    ASSERT_TRUE(this->take(host));

    ASSERT_TRUE(this->postInBoth());

    EXPECT_THAT(this->titles(), ElementsAre("other"));
}

TYPED_TEST(SharedSubjectTest, DifferentSubjectsAreShownByTheirPrograms) {
    ASSERT_TRUE(this->start(Rank::ordinary, Rank::first));
    ASSERT_TRUE(this->otherTakes(host));
    ASSERT_TRUE(this->take("two.example"));

    ASSERT_TRUE(this->postInBoth());

    EXPECT_THAT(this->titles(), UnorderedElementsAre("here", "other"));
}

TYPED_TEST(SharedSubjectTest, OneWithoutASubjectLeavesItToTheOther) {
    ASSERT_TRUE(this->start(Rank::ordinary, Rank::first));
    ASSERT_TRUE(this->otherTakes(host));
    ASSERT_TRUE(this->take(host));

    ASSERT_TRUE(this->otherTakes(""));
    ASSERT_TRUE(this->postInBoth());

    // What it posts without a subject, such as a test of the notifications, is its own.
    EXPECT_THAT(this->titles(), UnorderedElementsAre("here", "other"));
}

TYPED_TEST(SharedSubjectTest, ASubjectHoldsOnTheNextConnection) {
    ASSERT_TRUE(this->start(Rank::ordinary, Rank::ordinary));
    ASSERT_TRUE(this->take(host));
    this->removeService();
    this->stopBus();
    ASSERT_TRUE(this->runUntil([this] {
        return this->bus_.state() == BusConnection::State::unavailable
               && this->other_->bus.state() == BusConnection::State::unavailable;
    }));
    this->other_->center.setSubject(host);

    ASSERT_TRUE(this->daemon_.start());
    this->addService();
    ASSERT_TRUE(this->runUntil([this] {
        return this->bus_.state() == BusConnection::State::connected
               && this->other_->bus.state() == BusConnection::State::connected;
    }));
    ASSERT_TRUE(this->postInBoth());

    EXPECT_EQ(this->titles().size(), 1U);
}

} // namespace tarnwick
