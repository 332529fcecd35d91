// The login item of a sandbox, with a portal that agrees, refuses or is missing.
#include "platform/bus/BackgroundPortal.h"

#include "platform/bus/BusObject.h"
#include "tests/platform/bus/BusTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

using Status = LoginItem::Status;
using Value = std::variant<std::monostate, bool, std::string, std::vector<std::string>>;
using Options = std::map<std::string, Value>;
using testing::ElementsAre;
using testing::IsEmpty;

class FakePortal {
public:
    explicit FakePortal(BusPeer& peer)
        : peer_(peer),
          object_(peer.link(), "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Background") {
        object_.method("RequestBackground", {}, {}, [this](const std::string&, const Options& asked) {
            requests.push_back(asked);
            return BusPath{path()};
        });
        EXPECT_TRUE(object_.publish());
        peer.requestName("org.freedesktop.portal.Desktop");
    }

    /// To the latest request.
    void answer(std::uint32_t response, bool autostart) {
        const std::map<std::string, std::variant<bool>> results{
            {"background", true}, {"autostart", autostart}};
        peer_.emit({path(), "org.freedesktop.portal.Request"}, "Response", response, results);
    }

    std::vector<Options> requests;
    std::string client; ///< its unique name, as it stands in paths

private:
    [[nodiscard]] std::string path() const {
        return "/org/freedesktop/portal/desktop/request/" + client + "/"
               + std::get<std::string>(requests.back().at("handle_token"));
    }

    BusPeer& peer_;
    BusObject object_;
};

class BackgroundPortalTest : public BusTest {
protected:
    void SetUp() override {
        BusTest::SetUp();
        ASSERT_TRUE(runUntilConnected());
        item_.onAnswer = [this](const std::string& failure) { answers_.push_back(failure); };
    }

    /// Asked to start it, the portal has taken the request and has not decided yet.
    [[nodiscard]] bool enrollWithoutAnAnswer() {
        addPortal();
        return !item_.enroll() && runUntilAsked(1) && runUntilHeardBy(*peers_.back());
    }

    void addPortal() {
        portal_ = std::make_unique<FakePortal>(addPeer());
        portal_->client = bus_.uniqueName().substr(1);
        std::ranges::replace(portal_->client, '.', '_');
    }

    [[nodiscard]] bool runUntilAsked(std::size_t times) {
        return runUntil([this, times] { return portal_->requests.size() == times; });
    }

    [[nodiscard]] bool runUntilToldOf(std::size_t answers) {
        return runUntil([this, answers] { return answers_.size() == answers; });
    }

    std::unique_ptr<FakePortal> portal_;
    bool granted_ = false;
    std::vector<std::string> answers_;
    BackgroundPortal item_{
        {.bus = bus_,
         .command = {"tarnwick", "--from-session"},
         .isGranted = [this] { return granted_; },
         .remember = [this](bool granted) { granted_ = granted; }}};
};

} // namespace

TEST_F(BackgroundPortalTest, ThePortalIsAskedToStartItWithTheSession) {
    addPortal();

    EXPECT_EQ(item_.enroll(), std::nullopt);

    ASSERT_TRUE(runUntilAsked(1));
    const Options& asked = portal_->requests.front();
    EXPECT_EQ(asked.at("autostart"), Value(true));
    EXPECT_EQ(asked.at("commandline"), Value(std::vector<std::string>{"tarnwick", "--from-session"}));
    EXPECT_EQ(item_.status(), Status::enabled);
    EXPECT_FALSE(granted_);
}

TEST_F(BackgroundPortalTest, WhatThePortalGrantsIsRemembered) {
    addPortal();
    (void)item_.enroll();
    ASSERT_TRUE(runUntilAsked(1));

    portal_->answer(0, true);

    ASSERT_TRUE(runUntilToldOf(1));
    EXPECT_THAT(answers_, ElementsAre(""));
    EXPECT_TRUE(granted_);
    EXPECT_EQ(item_.status(), Status::enabled);
}

TEST_F(BackgroundPortalTest, ARefusalIsTold) {
    addPortal();
    (void)item_.enroll();
    ASSERT_TRUE(runUntilAsked(1));

    portal_->answer(1, false);

    ASSERT_TRUE(runUntilToldOf(1));
    EXPECT_THAT(answers_, ElementsAre(BackgroundPortal::refused));
    EXPECT_EQ(item_.status(), Status::notRegistered);
}

TEST_F(BackgroundPortalTest, ItIsWithdrawnThroughThePortalToo) {
    addPortal();
    granted_ = true;

    EXPECT_EQ(item_.withdraw(), std::nullopt);
    ASSERT_TRUE(runUntilAsked(1));
    EXPECT_EQ(portal_->requests.front().at("autostart"), Value(false));
    portal_->answer(0, false);

    ASSERT_TRUE(runUntilToldOf(1));
    EXPECT_FALSE(granted_);
    EXPECT_EQ(item_.status(), Status::notRegistered);
}

TEST_F(BackgroundPortalTest, WithdrawingWhatWasNotGrantedAsksNothing) {
    EXPECT_EQ(item_.withdraw(), std::nullopt);
    EXPECT_EQ(item_.status(), Status::notRegistered);
}

TEST_F(BackgroundPortalTest, WithoutAPortalItCanNotBeSet) {
    EXPECT_EQ(item_.enroll(), std::nullopt);

    ASSERT_TRUE(runUntilToldOf(1));
    EXPECT_THAT(answers_, ElementsAre(BackgroundPortal::noPortal));
    EXPECT_EQ(item_.status(), Status::notRegistered);
}

TEST_F(BackgroundPortalTest, ALateFailureLeavesTheNextRequestAlone) {
    BusPeer& peer = addPeer();
    std::vector<BusMessage> calls;
    const Subscription taken = peer.takeCalls(
        "/org/freedesktop/portal/desktop", [&calls](const BusMessage& call) { calls.push_back(call); });
    peer.requestName("org.freedesktop.portal.Desktop");
    (void)item_.enroll();
    (void)item_.enroll();
    ASSERT_TRUE(runUntil([&calls] { return calls.size() == 2; }));

    ASSERT_TRUE(calls.front().reply({.name = BusError::failed, .text = ""}).send());
    ASSERT_TRUE(runUntilHeardBy(peer));

    EXPECT_THAT(answers_, IsEmpty());
    EXPECT_EQ(item_.status(), Status::enabled);
}

TEST_F(BackgroundPortalTest, TheLossOfTheBusEndsTheRequest) {
    ASSERT_TRUE(enrollWithoutAnAnswer());

    portal_.reset();
    stopBus();

    ASSERT_TRUE(runUntilToldOf(1));
    EXPECT_THAT(answers_, ElementsAre(BackgroundPortal::noPortal));
    EXPECT_EQ(item_.status(), Status::notRegistered);
}

TEST_F(BackgroundPortalTest, TheEndOfThePortalEndsTheRequest) {
    ASSERT_TRUE(enrollWithoutAnAnswer());

    portal_.reset();
    peers_.clear();

    ASSERT_TRUE(runUntilToldOf(1));
    EXPECT_THAT(answers_, ElementsAre(BackgroundPortal::noPortal));
    EXPECT_EQ(item_.status(), Status::notRegistered);
}

TEST_F(BackgroundPortalTest, WithoutABusItCanNotBeSet) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());

    EXPECT_EQ(item_.enroll(), BackgroundPortal::noPortal);
    EXPECT_EQ(item_.status(), Status::notRegistered);
}

} // namespace tarnwick
