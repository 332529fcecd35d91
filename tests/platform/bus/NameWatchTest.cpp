// Following the owner of a name.
#include "platform/bus/NameWatch.h"

#include "tests/platform/bus/BusTest.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* name = "test.Service";
constexpr double retryDelay = 0.2;

class NameWatchTest : public BusTest {
protected:
    void watch(const std::string& watched = name) {
        watch_ = watchName(
            bus_, watched,
            [this](const std::string& owner, NameNews news) {
                told_.emplace_back(owner, news);
                if (endsWhenTold_) {
                    watch_.reset();
                }
            },
            retryDelay);
    }

    [[nodiscard]] bool runUntilTold(std::size_t count) {
        return runUntil([this, count] { return told_.size() == count; });
    }

    std::vector<std::pair<std::string, NameNews>> told_;
    bool endsWhenTold_ = false;
    Subscription watch_;
};

} // namespace

TEST_F(NameWatchTest, AConnectionFindsTheOwner) {
    BusPeer& peer = addPeer();
    peer.requestName(name);

    watch();

    ASSERT_TRUE(runUntilTold(1));
    EXPECT_THAT(told_, ElementsAre(Pair(peer.uniqueName(), NameNews::first)));
}

TEST_F(NameWatchTest, AConnectionFindsThatThereIsNoOwner) {
    watch();

    ASSERT_TRUE(runUntilTold(1));
    EXPECT_THAT(told_, ElementsAre(Pair("", NameNews::first)));
}

TEST_F(NameWatchTest, AWatchThatBeginsLaterFindsTheOwnerToo) {
    BusPeer& peer = addPeer();
    peer.requestName(name);
    ASSERT_TRUE(runUntilConnected());

    watch();

    ASSERT_TRUE(runUntilTold(1));
    EXPECT_THAT(told_, ElementsAre(Pair(peer.uniqueName(), NameNews::first)));
}

TEST_F(NameWatchTest, EachChangeIsToldOnceInItsOrder) {
    BusPeer& first = addPeer();
    BusPeer& second = addPeer();
    watch();
    ASSERT_TRUE(runUntilTold(1));

    first.requestName(name);
    first.releaseName(name);
    second.requestName(name);
    first.requestName("test.Other");

    ASSERT_TRUE(runUntilHeardBy(first));
    EXPECT_THAT(
        told_, ElementsAre(
                   Pair("", NameNews::first), Pair(first.uniqueName(), NameNews::changed),
                   Pair("", NameNews::changed), Pair(second.uniqueName(), NameNews::changed)));
}

TEST_F(NameWatchTest, WithoutTheBusThereIsNoOwnerUntilItComesBack) {
    addPeer().requestName(name);
    watch();
    ASSERT_TRUE(runUntilTold(1));
    told_.clear();

    stopBus();
    ASSERT_TRUE(runUntilUnavailable());
    EXPECT_THAT(told_, ElementsAre(Pair("", NameNews::changed)));
    told_.clear();
    ASSERT_TRUE(daemon_.start());
    BusPeer& peer = addPeer();
    peer.requestName(name);

    ASSERT_TRUE(runUntilTold(1));
    EXPECT_THAT(told_, ElementsAre(Pair(peer.uniqueName(), NameNews::first)));
}

TEST_F(NameWatchTest, TheEndOfAConnectionIsTheEndOfItsUniqueName) {
    BusPeer& peer = addPeer();
    watch(peer.uniqueName());
    ASSERT_TRUE(runUntilTold(1));

    peers_.clear();

    ASSERT_TRUE(runUntilTold(2));
    EXPECT_THAT(told_.back(), Pair("", NameNews::changed));
}

TEST_F(NameWatchTest, AFailedQuestionIsRepeatedAndDoesNotMeanThatThereIsNoOwner) {
    stopBus();
    daemon_.refuseCall("GetNameOwner");
    ASSERT_TRUE(daemon_.start());
    BusPeer& peer = addPeer();
    peer.requestName(name);
    watch();
    ASSERT_TRUE(runUntilConnected());
    runFor(retryDelay * 2);
    EXPECT_THAT(told_, IsEmpty());

    daemon_.refuseCall("");
    daemon_.reload();

    ASSERT_TRUE(runUntilTold(1));
    EXPECT_THAT(told_, ElementsAre(Pair(peer.uniqueName(), NameNews::first)));
}

TEST_F(NameWatchTest, AConnectionLostDuringTheQuestionTellsNothing) {
    ASSERT_TRUE(runUntilConnected());
    daemon_.hang();
    watch();

    stopBus();

    ASSERT_TRUE(runUntilUnavailable());
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(NameWatchTest, OnlyTheBusDaemonIsBelieved) {
    BusPeer& peer = addPeer();
    watch();
    ASSERT_TRUE(runUntilTold(1));

    peer.emitTo(
        bus_.uniqueName(), {"/org/freedesktop/DBus", "org.freedesktop.DBus"}, "NameOwnerChanged",
        std::string(name), std::string(), peer.uniqueName());

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_THAT(told_, ElementsAre(Pair("", NameNews::first)));
}

TEST_F(NameWatchTest, ItMayEndWhenItIsTold) {
    endsWhenTold_ = true;
    watch();
    ASSERT_TRUE(runUntilTold(1));
    BusPeer& peer = addPeer();

    peer.requestName(name);

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_EQ(told_.size(), 1U);
}

TEST_F(NameWatchTest, AnEndedWatchIsNotToldTheAnswer) {
    ASSERT_TRUE(runUntilConnected());
    watch();

    watch_.reset();

    ASSERT_TRUE(runUntilHeardBy(addPeer()));
    EXPECT_THAT(told_, IsEmpty());
}

} // namespace tarnwick
