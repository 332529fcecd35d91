// How the desktop program is wired in a bundle: its trial, its updater, and what becomes of a version that is
// ready.
#include "app/App/AppDelegate.h"

#include "app/StatusMenuView/MenuRow.h"
#include "core/Update/UtcTime.h"
#include "platform/linux/SystemName.h"
#include "tests/platform/bundle/MadeBundle.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/MinisignKey.h"
#include "tests/support/Variable.h"

#include <nlohmann/json.hpp>

#include <QApplication>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using Phase = UpdateRecord::Phase;

constexpr auto today = "2026-11-23T04:00:00Z";

class BundledAppTest : public testing::Test {
protected:
    BundledAppTest() {
        makeBundle(bundle, "1.0");
        loop.setWallClock(parseUtcTime(today).value());
    }

    /// The bundle gets a source of updates.
    void addSource() const {
        const nlohmann::json information{
            {"version", "1.0"},
            {"feedAddress", "https://updates.example/feed.json"},
            {"publicKeys", {MinisignKey(1).publicLine()}}};
        writeFile(bundle / "Information.json", information.dump());
    }

    void makeReady() const {
        makeBundle(update.other(), "1.1");
        ASSERT_TRUE(update.write(
            {.phase = Phase::prepared,
             .from = ReleaseVersion::parse("1.0").value(),
             .to = ReleaseVersion::parse("1.1").value()}));
    }

    /// The bundle's process for updates: it finds 1.1, and makes it ready.
    void playUpdate() const {
        const fs::path made = folder.path() / "made";
        makeReady();
        fs::rename(update.path(), made);
        const nlohmann::json archive{
            {"address", "https://updates.example/T.tar.zst"},
            {"machine", systemName().machine},
            {"size", 1},
            {"sha256", std::string(64, '0')}};
        const nlohmann::json release{
            {"version", "1.1"},
            {"channel", "stable"},
            {"minimumSystem", "1.0"},
            {"notes", ""},
            {"archives", nlohmann::json::array({archive})}};
        const nlohmann::json feed{{"signedAt", today}, {"releases", nlohmann::json::array({release})}};
        writeFile(folder.path() / "found", nlohmann::json{{"feed", feed.dump()}}.dump() + "\n");
        const fs::path program = bundle / "bin" / "tarnwick-update";
        writeFile(
            program, "#!/bin/sh\ncd '" + folder.path().string()
                         + "'\n[ \"$1\" = check ] && exec cat found\nmv made '" + update.path().string()
                         + "'\necho '{\"complete\":true}'\necho '{\"ended\":null}'\n");
        fs::permissions(program, fs::perms::owner_all);
    }

    void start(const UserDefaults::Table& settings = {}) {
        run.emplace(bundle, std::vector<std::string>());
        auto all = settings;
        all.emplace("Hostname", std::string("127.0.0.1"));
        delegate.emplace(
            loop, bus,
            AppDelegate::Setup{.settings = all, .version = "1", .iconFolder = "", .bundle = &*run});
        QApplication::processEvents();
    }

    /// The first of this kind that is shown.
    template<class Widget, class Condition>
    static Widget* find(Condition condition) {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            for (QWidget* const child : window->findChildren<QWidget*>()) {
                auto* const widget = dynamic_cast<Widget*>(child);
                if (widget != nullptr && widget->isVisible() && condition(*widget)) {
                    return widget;
                }
            }
        }
        return nullptr;
    }

    static bool isShown(const QString& text) {
        return find<QWidget>([&](const QWidget& widget) { return widget.accessibleName().contains(text); })
               != nullptr;
    }

    [[nodiscard]] bool canCheckForUpdates() {
        delegate->openDropDown("");
        QApplication::processEvents();
        const auto* const row = find<MenuRow>(
            [](const MenuRow& each) { return each.item().id == MenuItem::Id::checkForUpdates; });
        EXPECT_NE(row, nullptr);
        return row != nullptr && row->isEnabled();
    }

    [[nodiscard]] bool hasUpdateSettings() {
        delegate->openSettings("");
        loop.runPending();
        QApplication::processEvents();
        EXPECT_TRUE(std::ranges::any_of(QApplication::topLevelWidgets(), [](const QWidget* window) {
            return window->isVisible() && window->windowTitle() == "Tarnwick Settings";
        }));
        return isShown("Check for Updates Automatically");
    }

    [[nodiscard]] std::string inPlace() const { return versionOf(bundle).value_or(ReleaseVersion()).text(); }

    TemporaryFolder folder;
    std::string noBus = "unix:path=" + (folder.path() / "bus").string();
    Variable config{"XDG_CONFIG_HOME", folder.path().c_str()};
    Variable data{"XDG_DATA_HOME", folder.path().c_str()};
    Variable state{"XDG_STATE_HOME", folder.path().c_str()};
    Variable systemConfig{"XDG_CONFIG_DIRS", (folder.path() / "none").c_str()};
    Variable systemBus{"DBUS_SYSTEM_BUS_ADDRESS", noBus.c_str()};
    fs::path bundle = folder.path() / "Tarnwick.app";
    UpdateFolder update{bundle};
    simulation::VirtualRunLoop loop;
    BusConnection bus{loop, noBus};
    std::optional<BundleRun> run;
    std::optional<AppDelegate> delegate;
};

TEST_F(BundledAppTest, TheVersionBeforeIsRemovedOnceTheNewOneHasRunForAMinute) {
    makeReady();
    ASSERT_EQ(PreparedUpdate(update).exchange(), std::nullopt);
    start();

    loop.advance(BundleTrial::length - 1);
    EXPECT_TRUE(fs::exists(update.other()));
    EXPECT_TRUE(run->trial().isOn());

    loop.advance(1);
    EXPECT_FALSE(fs::exists(update.path()));
    EXPECT_FALSE(run->trial().isOn());
}

TEST_F(BundledAppTest, ASourceOfUpdatesMakesTheUpdater) {
    addSource();
    start();

    EXPECT_TRUE(canCheckForUpdates());
    EXPECT_TRUE(hasUpdateSettings());
}

TEST_F(BundledAppTest, WithoutASourceThereAreNoSettingsForUpdatesAndNoneCanBeLookedFor) {
    start();

    EXPECT_FALSE(canCheckForUpdates());
    EXPECT_FALSE(hasUpdateSettings());
}

TEST_F(BundledAppTest, ABundleThatCanNotBeReadHasNoUpdaterAndSaysSo) {
    writeFile(bundle / "Information.json", "{");
    testing::internal::CaptureStderr();

    start();

    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("tarnwick: Information.json: "));
    EXPECT_FALSE(canCheckForUpdates());
    EXPECT_FALSE(hasUpdateSettings());
}

TEST_F(BundledAppTest, AnUpdateThatIsInstalledWithoutAskingIsToldOfByANoticeAndTakesItsPlaceAtTheEnd) {
    addSource();
    playUpdate();
    start({{"InstallUpdates", true}});
    loop.advance(600); // past the first check's time

    ASSERT_TRUE(QTest::qWaitFor(
        [this] {
            loop.runPending();
            return run->update().isHeld();
        },
        30'000));

    loop.runPending();
    delegate->openDropDown("");
    QApplication::processEvents();
    EXPECT_TRUE(isShown("Restart to use the new version."));
    EXPECT_FALSE(isShown("is ready")) << "nobody has asked for a window";
    delegate.reset();
    EXPECT_EQ(inPlace(), "1.0");
    run->end();
    EXPECT_EQ(inPlace(), "1.1");
}

} // namespace
} // namespace tarnwick::test
