// Whether desktop and panel are dark, as the services that know it tell.
#include "platform/bus/ColorScheme.h"

#include "tests/platform/bus/BusTest.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

namespace tarnwick {

namespace {

/// Plays the services.
class ColorSchemeTest : public BusTest {
protected:
    static constexpr const char* portalInterface = "org.freedesktop.portal.Settings";
    static constexpr const char* panelInterface = "org.xfce.Xfconf";

    void addPortal(std::uint32_t preference) {
        BusPeer& peer = addPeer();
        preference_ = preference;
        portal_ = sdbus::createObject(peer.connection(), "/org/freedesktop/portal/desktop");
        portal_->registerMethod("Read")
            .onInterface(portalInterface)
            .implementedAs([this](const std::string& group, const std::string& key) {
                if (group != "org.freedesktop.appearance" || key != "color-scheme") {
                    throw sdbus::Error("org.freedesktop.portal.Error.NotFound");
                }
                return sdbus::Variant(sdbus::Variant(preference_));
            });
        portal_->registerSignal("SettingChanged")
            .onInterface(portalInterface)
            .withParameters<std::string, std::string, sdbus::Variant>();
        portal_->finishRegistration();
        peer.connection().requestName("org.freedesktop.portal.Desktop");
    }

    void emitPreference(const std::string& key, const sdbus::Variant& value) {
        portal_->emitSignal("SettingChanged")
            .onInterface(portalInterface)
            .withArguments(std::string("org.freedesktop.appearance"), key, value);
    }

    BusPeer& addPanelSettings(bool isDark) {
        BusPeer& peer = addPeer();
        settings_ = sdbus::createObject(peer.connection(), "/org/xfce/Xfconf");
        settings_->registerMethod("GetProperty")
            .onInterface(panelInterface)
            .implementedAs([this, isDark](const std::string& channel, const std::string& property) {
                ++panelReads_;
                if (channel != "xfce4-panel" || property != "/panels/dark-mode") {
                    throw sdbus::Error("org.xfce.Xfconf.Error.PropertyNotFound");
                }
                return sdbus::Variant(isDark);
            });
        settings_->registerSignal("PropertyChanged")
            .onInterface(panelInterface)
            .withParameters<std::string, std::string, sdbus::Variant>();
        settings_->registerSignal("PropertyRemoved")
            .onInterface(panelInterface)
            .withParameters<std::string, std::string>();
        settings_->finishRegistration();
        peer.connection().requestName("org.xfce.Xfconf");
        return peer;
    }

    void emitPanelSetting(const sdbus::Variant& value) {
        settings_->emitSignal("PropertyChanged")
            .onInterface(panelInterface)
            .withArguments(std::string("xfce4-panel"), std::string("/panels/dark-mode"), value);
    }

    [[nodiscard]] bool runUntilDesktopIs(std::optional<bool> isDark) {
        return runUntil([this, isDark] { return colors_.desktopIsDark() == isDark; });
    }

    [[nodiscard]] bool runUntilPanelIs(std::optional<bool> isDark) {
        return runUntil([this, isDark] { return colors_.panelIsDark() == isDark; });
    }

    std::unique_ptr<sdbus::IObject> portal_;
    std::unique_ptr<sdbus::IObject> settings_;
    std::uint32_t preference_ = 0;
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

    emitPreference("color-scheme", sdbus::Variant(std::uint32_t{2}));

    ASSERT_TRUE(runUntilDesktopIs(false));
    EXPECT_EQ(changes, 1);
}

TEST_F(ColorSchemeTest, NoPreferenceIsUnknown) {
    addPortal(2);
    ASSERT_TRUE(runUntilDesktopIs(false));

    emitPreference("color-scheme", sdbus::Variant(std::uint32_t{0}));

    EXPECT_TRUE(runUntilDesktopIs(std::nullopt));
}

TEST_F(ColorSchemeTest, APreferenceThatIsNoneIsUnknown) {
    addPortal(2);
    ASSERT_TRUE(runUntilDesktopIs(false));

    emitPreference("color-scheme", sdbus::Variant(std::string("dark")));

    EXPECT_TRUE(runUntilDesktopIs(std::nullopt));
}

TEST_F(ColorSchemeTest, OtherSettingsOfTheDesktopDoNotCount) {
    addPortal(1);
    ASSERT_TRUE(runUntilDesktopIs(true));

    emitPreference("contrast", sdbus::Variant(std::uint32_t{2}));

    ASSERT_TRUE(runUntilHeardBy(*peers_.front()));
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

    emitPanelSetting(sdbus::Variant(false));

    EXPECT_TRUE(runUntilPanelIs(false));
}

TEST_F(ColorSchemeTest, ARemovedPanelSettingIsUnknown) {
    addPanelSettings(true);
    colors_.setFollowsPanel(true);
    ASSERT_TRUE(runUntilPanelIs(true));

    settings_->emitSignal("PropertyRemoved")
        .onInterface(panelInterface)
        .withArguments(std::string("xfce4-panel"), std::string("/panels/dark-mode"));

    EXPECT_TRUE(runUntilPanelIs(std::nullopt));
}

TEST_F(ColorSchemeTest, AChangeOfThePanelsSettingIsIgnoredUnlessThePanelIsFollowed) {
    BusPeer& peer = addPanelSettings(true);
    ASSERT_TRUE(runUntilConnected());

    emitPanelSetting(sdbus::Variant(false));

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_EQ(colors_.panelIsDark(), std::nullopt);
}

} // namespace tarnwick
