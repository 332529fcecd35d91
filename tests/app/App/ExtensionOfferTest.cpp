// The offer of our extension of GNOME Shell: once, to whom it can help.
#include "app/App/ExtensionOffer.h"

#include "tests/app/WatchedMonitor.h"
#include "tests/platform/bus/BusTest.h"

#include "platform/bus/BusObject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

namespace {

class ExtensionOfferTest : public BusTest {
protected:
    static constexpr double inactive = 2;
    static constexpr double active = 1;

    /// Plays the shell, which knows the extension in this state.
    void addShell(double state) {
        BusPeer& peer = addPeer();
        shell_.emplace(peer.link(), "/org/gnome/Shell", "org.gnome.Shell.Extensions");
        shell_->property("ShellVersion", [] { return std::string("48.7"); });
        shell_->method("GetExtensionInfo", {"uuid"}, {"info"}, [this, state](const std::string&) {
            ++questions_;
            return std::map<std::string, std::variant<double>>{{"state", state}};
        });
        shell_->method("EnableExtension", {"uuid"}, {"success"}, [this](const std::string& uuid) {
            switchedOn_.push_back(uuid);
            return canSwitchOn_;
        });
        EXPECT_TRUE(shell_->publish());
        peer.requestName("org.gnome.Shell");
        EXPECT_TRUE(runUntilConnected());
    }

    /// As a start of the program does.
    void start() { offer_.emplace(bus_, watched_.monitor, answered_).start(); }

    /// The answer to a question may be on its way to the program for a moment.
    void runUntilAsked() {
        ASSERT_TRUE(runUntil([this] { return questions_ > 0; }));
        ASSERT_TRUE(runUntilHeardBy(*peers_.front()));
    }

    [[nodiscard]] bool isOffered() const {
        const Notices& notices = watched_.monitor.reading().notices;
        return std::ranges::find(notices, Notice::Kind::offersExtension, &Notice::kind) != notices.end();
    }

    [[nodiscard]] bool isRemembered() const { return std::filesystem::exists(answered_); }

    WatchedMonitor watched_;
    std::filesystem::path answered_ = watched_.folder.path() / "extension-answered";
    std::optional<BusObject> shell_;
    std::vector<std::string> switchedOn_;
    int questions_ = 0;
    bool canSwitchOn_ = true;
    std::optional<ExtensionOffer> offer_;
};

} // namespace

TEST_F(ExtensionOfferTest, AnExtensionThatIsOffIsOffered) {
    addShell(inactive);

    start();

    EXPECT_TRUE(runUntil([this] { return isOffered(); }));
    EXPECT_FALSE(isRemembered());
}

TEST_F(ExtensionOfferTest, AnExtensionThatIsOnIsNotOffered) {
    addShell(active);

    start();

    runUntilAsked();
    EXPECT_FALSE(isOffered());
}

TEST_F(ExtensionOfferTest, NoThanksEndsItForGood) {
    addShell(inactive);
    start();
    ASSERT_TRUE(runUntil([this] { return isOffered(); }));

    offer_->answer(false);

    EXPECT_FALSE(isOffered());
    EXPECT_TRUE(isRemembered());
    EXPECT_TRUE(switchedOn_.empty());
}

TEST_F(ExtensionOfferTest, ItIsNotOfferedAtTheStartAfterAnAnswer) {
    addShell(inactive);
    start();
    ASSERT_TRUE(runUntil([this] { return isOffered(); }));
    offer_->answer(false);
    offer_.reset();
    questions_ = 0;

    start();

    runFor(0.2);
    EXPECT_EQ(questions_, 0);
    EXPECT_FALSE(isOffered());
}

TEST_F(ExtensionOfferTest, WithoutAnAnswerTheNextStartOffersAgain) {
    addShell(inactive);
    start();
    ASSERT_TRUE(runUntil([this] { return isOffered(); }));
    offer_.reset();
    watched_.monitor.clearNotice(Notice::Kind::offersExtension);

    start();

    EXPECT_TRUE(runUntil([this] { return isOffered(); }));
}

TEST_F(ExtensionOfferTest, SwitchedOnItIsRemembered) {
    addShell(inactive);
    start();
    ASSERT_TRUE(runUntil([this] { return isOffered(); }));

    offer_->answer(true);

    EXPECT_FALSE(isOffered());
    EXPECT_TRUE(runUntil([this] { return isRemembered(); }));
    EXPECT_EQ(switchedOn_, std::vector<std::string>{"item-place@tarnwick.org"});
}

TEST_F(ExtensionOfferTest, AnAnswerWithoutEffectIsNotRemembered) {
    addShell(inactive);
    canSwitchOn_ = false;
    start();
    ASSERT_TRUE(runUntil([this] { return isOffered(); }));

    offer_->answer(true);

    ASSERT_TRUE(runUntil([this] { return !switchedOn_.empty(); }));
    ASSERT_TRUE(runUntilHeardBy(*peers_.front()));
    EXPECT_FALSE(isRemembered());
}

} // namespace tarnwick
