// Whether desktop and panel are dark, as the services that know it tell.
#include "platform/bus/ColorScheme.h"

#include "tests/platform/bus/BusTest.h"

#include "platform/bus/BusObject.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace tarnwick {

namespace {

/// Plays the services.
class ColorSchemeTest : public BusTest {
protected:
    using Value = std::variant<bool, std::uint32_t, std::string>;
    /// Reading a setting wraps its value once more than telling of its change does.
    using Wrapped = std::variant<Value>;

    static constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
    static constexpr const char* panelPath = "/org/xfce/Xfconf";
    static constexpr const char* portalInterface = "org.freedesktop.portal.Settings";
    static constexpr const char* panelInterface = "org.xfce.Xfconf";

    void addPortal(std::uint32_t preference) {
        portalPeer_ = &addPeer();
        preference_ = preference;
        portal_.emplace(portalPeer_->link(), portalPath, portalInterface);
        portal_->method(
            "Read", {}, {}, [this](const std::string& group, const std::string& key) -> BusOutcome<Wrapped> {
                ++portalReads_;
                if (failure_) {
                    return BusError{.name = *failure_, .text = "not today"};
                }
                if (group == "org.freedesktop.appearance" && key == "contrast" && contrast_) {
                    return Wrapped(Value(*contrast_));
                }
                if (group != "org.freedesktop.appearance" || key != "color-scheme") {
                    return BusError{.name = "org.freedesktop.portal.Error.NotFound", .text = key};
                }
                return Wrapped(Value(preference_));
            });
        EXPECT_TRUE(portal_->publish());
        portalPeer_->requestName("org.freedesktop.portal.Desktop");
    }

    void emitPreference(const std::string& key, const Value& value) {
        portalPeer_->emit(
            {portalPath, portalInterface}, "SettingChanged", std::string("org.freedesktop.appearance"), key,
            value);
    }

    BusPeer& addPanelSettings(bool isDark) {
        panelPeer_ = &addPeer();
        settings_.emplace(panelPeer_->link(), panelPath, panelInterface);
        settings_->method(
            "GetProperty", {}, {},
            [this, isDark](const std::string& channel, const std::string& property) -> BusOutcome<Value> {
                ++panelReads_;
                if (failure_) {
                    return BusError{.name = *failure_, .text = "not today"};
                }
                if (channel != "xfce4-panel" || property != "/panels/dark-mode") {
                    return BusError{.name = "org.xfce.Xfconf.Error.PropertyNotFound", .text = property};
                }
                return Value(isDark);
            });
        EXPECT_TRUE(settings_->publish());
        panelPeer_->requestName("org.xfce.Xfconf");
        return *panelPeer_;
    }

    /// "PropertyChanged" with a value, "PropertyRemoved" without one.
    template<typename... Values>
    void emitPanelSetting(const std::string& signal, const Values&... value) {
        panelPeer_->emit(
            {panelPath, panelInterface}, signal, std::string("xfce4-panel"), std::string("/panels/dark-mode"),
            value...);
    }

    /// It is asked again then.
    [[nodiscard]] bool runUntilPortalHasRestarted() {
        const int before = portalReads_;
        portalPeer_->releaseName("org.freedesktop.portal.Desktop");
        portalPeer_->requestName("org.freedesktop.portal.Desktop");
        return runUntil([this, before] { return portalReads_ > before; }) && runUntilHeardBy(*portalPeer_);
    }

    [[nodiscard]] bool runUntilPanelIsAskedAgain() {
        const int before = panelReads_;
        panelPeer_->releaseName("org.xfce.Xfconf");
        panelPeer_->requestName("org.xfce.Xfconf");
        return runUntil([this, before] { return panelReads_ > before; }) && runUntilHeardBy(*panelPeer_);
    }

    [[nodiscard]] bool runUntilDesktopIs(std::optional<bool> isDark) {
        return runUntil([this, isDark] { return colors_.desktopIsDark() == isDark; });
    }

    [[nodiscard]] bool runUntilPanelIs(std::optional<bool> isDark) {
        return runUntil([this, isDark] { return colors_.panelIsDark() == isDark; });
    }

    BusPeer* portalPeer_ = nullptr;
    BusPeer* panelPeer_ = nullptr;
    std::optional<BusObject> portal_;
    std::optional<BusObject> settings_;
    std::uint32_t preference_ = 0;
    std::optional<std::uint32_t> contrast_;
    std::optional<std::string> failure_; ///< the error that the services answer with
    int portalReads_ = 0;
    int panelReads_ = 0;
    ColorScheme colors_{bus_};
};

} // namespace

TEST_F(ColorSchemeTest, TheDesktopsPreferenceIsRead) {
    addPortal(1);

    EXPECT_TRUE(runUntilDesktopIs(true));
}

TEST_F(ColorSchemeTest, AChangeOfThePreferenceIsTold) {
    addPortal(1);
    ASSERT_TRUE(runUntilDesktopIs(true));
    int changes = 0;
    const Subscription subscription = colors_.onChange([&changes] { ++changes; });

    emitPreference("color-scheme", std::uint32_t{2});

    ASSERT_TRUE(runUntilDesktopIs(false));
    EXPECT_EQ(changes, 1);
}

TEST_F(ColorSchemeTest, TheWishForMoreContrastIsReadAndFollowed) {
    contrast_ = 1;
    addPortal(1);
    const auto runUntilContrastIs = [this](bool wanted) {
        return runUntil([this, wanted] { return colors_.desktopWantsContrast() == wanted; });
    };
    ASSERT_TRUE(runUntilContrastIs(true));
    int changes = 0;
    const Subscription subscription = colors_.onChange([&changes] { ++changes; });

    emitPreference("contrast", std::uint32_t{0});
    ASSERT_TRUE(runUntilContrastIs(false));
    emitPreference("contrast", std::uint32_t{1});
    ASSERT_TRUE(runUntilContrastIs(true));
    EXPECT_EQ(changes, 2);
}

TEST_F(ColorSchemeTest, NoPreferenceIsUnknown) {
    addPortal(2);
    ASSERT_TRUE(runUntilDesktopIs(false));

    emitPreference("color-scheme", std::uint32_t{0});

    EXPECT_TRUE(runUntilDesktopIs(std::nullopt));
}

TEST_F(ColorSchemeTest, APreferenceThatIsNoneIsUnknown) {
    addPortal(2);
    ASSERT_TRUE(runUntilDesktopIs(false));

    emitPreference("color-scheme", std::string("dark"));

    EXPECT_TRUE(runUntilDesktopIs(std::nullopt));
}

TEST_F(ColorSchemeTest, APreferenceThatThePortalDoesNotHaveIsUnknown) {
    addPortal(1);
    ASSERT_TRUE(runUntilDesktopIs(true));
    failure_ = "org.freedesktop.portal.Error.NotFound";

    ASSERT_TRUE(runUntilPortalHasRestarted());

    EXPECT_EQ(colors_.desktopIsDark(), std::nullopt);
}

TEST_F(ColorSchemeTest, AFailureOfThePortalKeepsThePreferenceUntilItAnswers) {
    addPortal(1);
    ASSERT_TRUE(runUntilDesktopIs(true));
    failure_ = BusError::failed;
    ASSERT_TRUE(runUntilPortalHasRestarted());
    EXPECT_EQ(colors_.desktopIsDark(), true);

    failure_.reset();
    preference_ = 2;
    ASSERT_TRUE(runUntilPortalHasRestarted());

    EXPECT_EQ(colors_.desktopIsDark(), false);
}

TEST_F(ColorSchemeTest, OtherSettingsOfTheDesktopDoNotCount) {
    addPortal(1);
    ASSERT_TRUE(runUntilDesktopIs(true));

    emitPreference("contrast", std::uint32_t{2});

    ASSERT_TRUE(runUntilHeardBy(*peers_.front()));
    EXPECT_EQ(colors_.desktopIsDark(), true);
}

TEST_F(ColorSchemeTest, OnlyThePortalIsBelieved) {
    addPortal(1);
    ASSERT_TRUE(runUntilDesktopIs(true));
    BusPeer& other = addPeer();

    other.emitTo(
        bus_.uniqueName(), {portalPath, portalInterface}, "SettingChanged",
        std::string("org.freedesktop.appearance"), std::string("color-scheme"), Value(std::uint32_t{2}));

    ASSERT_TRUE(runUntilHeardBy(other));
    EXPECT_EQ(colors_.desktopIsDark(), true);
}

TEST_F(ColorSchemeTest, APortalThatComesLateIsAsked) {
    ASSERT_TRUE(runUntilConnected());

    addPortal(1);

    EXPECT_TRUE(runUntilDesktopIs(true));
}

TEST_F(ColorSchemeTest, WithoutAPortalThePreferenceIsUnknown) {
    ASSERT_TRUE(runUntilConnected());
    ASSERT_TRUE(runUntilHeardBy(addPeer()));

    EXPECT_EQ(colors_.desktopIsDark(), std::nullopt);
}

TEST_F(ColorSchemeTest, ThePanelsSettingIsReadOnlyWhileThePanelIsFollowed) {
    BusPeer& peer = addPanelSettings(true);
    ASSERT_TRUE(runUntilConnected());
    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_EQ(panelReads_, 0);

    colors_.setFollowsPanel(true);

    ASSERT_TRUE(runUntilPanelIs(true));
    colors_.setFollowsPanel(false);
    EXPECT_EQ(colors_.panelIsDark(), std::nullopt);
}

TEST_F(ColorSchemeTest, AChangeOfThePanelsSettingIsFollowed) {
    addPanelSettings(true);
    colors_.setFollowsPanel(true);
    ASSERT_TRUE(runUntilPanelIs(true));

    emitPanelSetting("PropertyChanged", Value(false));

    EXPECT_TRUE(runUntilPanelIs(false));
}

TEST_F(ColorSchemeTest, ARemovedPanelSettingIsUnknown) {
    addPanelSettings(true);
    colors_.setFollowsPanel(true);
    ASSERT_TRUE(runUntilPanelIs(true));

    emitPanelSetting("PropertyRemoved");

    EXPECT_TRUE(runUntilPanelIs(std::nullopt));
}

TEST_F(ColorSchemeTest, OnlyThePanelsServiceIsBelieved) {
    addPanelSettings(true);
    colors_.setFollowsPanel(true);
    ASSERT_TRUE(runUntilPanelIs(true));
    BusPeer& other = addPeer();
    const BusPeer::Source source{panelPath, panelInterface};
    const std::string channel = "xfce4-panel";
    const std::string property = "/panels/dark-mode";

    other.emitTo(bus_.uniqueName(), source, "PropertyChanged", channel, property, Value(false));
    ASSERT_TRUE(runUntilHeardBy(other));
    EXPECT_EQ(colors_.panelIsDark(), true);
    other.emitTo(bus_.uniqueName(), source, "PropertyRemoved", channel, property);

    ASSERT_TRUE(runUntilHeardBy(other));
    EXPECT_EQ(colors_.panelIsDark(), true);
}

TEST_F(ColorSchemeTest, AChangeOfThePanelsSettingWithoutAValueDoesNotCount) {
    BusPeer& peer = addPanelSettings(true);
    colors_.setFollowsPanel(true);
    ASSERT_TRUE(runUntilPanelIs(true));

    emitPanelSetting("PropertyChanged");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_EQ(colors_.panelIsDark(), true);
}

TEST_F(ColorSchemeTest, AFailureOfThePanelsServiceKeepsItsSetting) {
    addPanelSettings(true);
    colors_.setFollowsPanel(true);
    ASSERT_TRUE(runUntilPanelIs(true));
    failure_ = BusError::failed;

    ASSERT_TRUE(runUntilPanelIsAskedAgain());

    EXPECT_EQ(colors_.panelIsDark(), true);
}

TEST_F(ColorSchemeTest, APanelWithoutTheSettingIsUnknown) {
    addPanelSettings(true);
    colors_.setFollowsPanel(true);
    ASSERT_TRUE(runUntilPanelIs(true));
    failure_ = "org.xfce.Xfconf.Error.PropertyNotFound";

    ASSERT_TRUE(runUntilPanelIsAskedAgain());

    EXPECT_EQ(colors_.panelIsDark(), std::nullopt);
}

TEST_F(ColorSchemeTest, AChangeOfThePanelsSettingIsIgnoredUnlessThePanelIsFollowed) {
    BusPeer& peer = addPanelSettings(true);
    ASSERT_TRUE(runUntilConnected());

    emitPanelSetting("PropertyChanged", Value(false));

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_EQ(colors_.panelIsDark(), std::nullopt);
}

} // namespace tarnwick
