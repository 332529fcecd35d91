// How the desktop program is wired: what its parts ask of the system reaches the system.
#include "app/App/AppDelegate.h"

#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Variable.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QPushButton>
#include <QSessionManager>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using test::Variable;

/// Notes the steps of the launch by what each asks of the loop.
class LaunchLoop final : public RunLoop {
public:
    std::vector<std::string> steps;
    simulation::VirtualRunLoop inner;

    [[nodiscard]] double now() const override { return inner.now(); }

    [[nodiscard]] WallTime wallNow() const override { return inner.wallNow(); }

    void post(Task task) override { inner.post(std::move(task)); }

    [[nodiscard]] Handle after(double delay, Task task) override {
        if (delay == PanelStatusItem::patience) {
            note("the status item looks for a panel");
        }
        return inner.after(delay, std::move(task));
    }

    [[nodiscard]] Handle every(double firstFire, double interval, Task task) override {
        return inner.every(firstFire, interval, std::move(task));
    }

    [[nodiscard]] Handle everyRoughly(
        double firstFire, double interval, double tolerance, Task task) override {
        note("the monitor begins to tick");
        return inner.everyRoughly(firstFire, interval, tolerance, std::move(task));
    }

    [[nodiscard]] Handle watchReadable(int descriptor, Task task) override {
        return inner.watchReadable(descriptor, std::move(task));
    }

    [[nodiscard]] Handle watchWritable(int descriptor, Task task) override {
        return inner.watchWritable(descriptor, std::move(task));
    }

    [[nodiscard]] bool detach(std::function<Task()> work) override { return inner.detach(std::move(work)); }

private:
    /// A step that asks twice is noted once.
    void note(const std::string& step) {
        if (steps.empty() || steps.back() != step) {
            steps.push_back(step);
        }
    }
};

/// On a desktop that has switched the program's login item off. It has no message bus.
class AppDelegateTest : public testing::Test {
protected:
    /// `token` is that of a person's start.
    explicit AppDelegateTest(std::optional<std::string> token = std::nullopt) : token_(std::move(token)) {
        const fs::path program = fs::read_symlink("/proc/self/exe");
        test::writeFile(
            folder_.path() / "autostart/org.tarnwick.tarnwick.desktop",
            "[Desktop Entry]\nType=Application\nName=Tarnwick\nX-GNOME-Autostart-enabled=false\nExec="
                + program.string() + "\n");
    }

    /// Clicks a button in any window.
    static void click(const QString& title) {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            for (auto* const button : window->findChildren<QPushButton*>()) {
                if (button->isVisible() && button->text().remove('&') == title) {
                    button->click();
                    return;
                }
            }
        }
        ADD_FAILURE() << "no button " << title.toStdString();
    }

    void showSettings() {
        delegate_->openDropDown("");
        QApplication::processEvents();
        click("Settings…");
        loop_.inner.runPending();
        QApplication::processEvents();
    }

    /// As the session manager announces it.
    static void endSession() {
        auto* const manager = qGuiApp->findChild<QSessionManager*>();
        ASSERT_NE(manager, nullptr);
        Q_EMIT qGuiApp->commitDataRequest(*manager);
    }

    [[nodiscard]] static QWidget* dropDown() {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->windowTitle() == "Tarnwick") {
                return window;
            }
        }
        return nullptr;
    }

    /// No panel comes.
    void waitForPanel() {
        loop_.inner.advance(PanelStatusItem::patience + PanelStatusItem::lookInterval);
        QApplication::processEvents();
    }

    std::optional<std::string> token_;
    test::TemporaryFolder folder_;
    std::string noBus_ = "unix:path=" + (folder_.path() / "bus").string();
    Variable config_{"XDG_CONFIG_HOME", folder_.path().c_str()};
    Variable data_{"XDG_DATA_HOME", folder_.path().c_str()};
    Variable state_{"XDG_STATE_HOME", folder_.path().c_str()};
    Variable systemConfig_{"XDG_CONFIG_DIRS", (folder_.path() / "none").c_str()};
    Variable desktop_{"XDG_CURRENT_DESKTOP", "XFCE"};
    Variable path_{"PATH", (folder_.path().string() + ":/bin").c_str()};
    Variable systemBus_{"DBUS_SYSTEM_BUS_ADDRESS", noBus_.c_str()};
    LaunchLoop loop_;
    BusConnection bus_{loop_, noBus_};
    AppDelegate::Setup setup_{
        .settings = {{"Hostname", std::string("127.0.0.1")}},
        .version = "1",
        .iconFolder = "",
        .tokenWithoutPanel = token_};
    std::optional<AppDelegate> delegate_{std::in_place, loop_, bus_, setup_};
};

class StartedByAPerson : public AppDelegateTest {
protected:
    StartedByAPerson() : AppDelegateTest("") {}
};

bool tellsOf(QWidget& window, const std::string& text) {
    const auto widgets = window.findChildren<QWidget*>();
    return std::ranges::any_of(widgets, [&](const QWidget* widget) {
        return widget->accessibleName().contains(QString::fromStdString(text));
    });
}

} // namespace

TEST_F(AppDelegateTest, TheItemComesBeforeTheMonitor) {
    EXPECT_EQ(
        loop_.steps,
        (std::vector<std::string>{"the status item looks for a panel", "the monitor begins to tick"}));
}

TEST_F(AppDelegateTest, TheEndOfTheSessionStoresTheStatistics) {
    const fs::path statistics = folder_.path() / "Tarnwick/stats.json";
    ASSERT_FALSE(fs::exists(statistics));

    endSession();

    EXPECT_TRUE(fs::exists(statistics));
}

TEST_F(AppDelegateTest, StatisticsThatAreNotStoredAtTheEndAreToldOnStandardError) {
    fs::create_directories(folder_.path() / "Tarnwick/stats.json.new");

    testing::internal::CaptureStderr();
    delegate_.reset();

    EXPECT_THAT(
        testing::internal::GetCapturedStderr(),
        testing::HasSubstr("tarnwick: the statistics could not be stored: Is a directory\n"));
}

TEST_F(AppDelegateTest, AMistakeInTheSettingsIsToldOnStandardErrorAndInTheDropDown) {
    delegate_.reset();
    const fs::path settings = folder_.path() / "Tarnwick/settings.json";
    test::writeFile(settings, "{\"a\u009Bb\": 1}");

    testing::internal::CaptureStderr();
    delegate_.emplace(loop_, bus_, setup_);
    EXPECT_THAT(
        testing::internal::GetCapturedStderr(),
        testing::HasSubstr("tarnwick: " + settings.string() + ", line 1: there is no setting \"a?b\"\n"));

    delegate_->openDropDown("");
    QApplication::processEvents();
    ASSERT_NE(dropDown(), nullptr);
    EXPECT_TRUE(tellsOf(*dropDown(), "line 1: there is no setting"));
}

TEST_F(AppDelegateTest, TheEndOfTheSessionStoresChangedSettingsAtOnce) {
    showSettings();
    click("Restore Default Settings");
    const fs::path settings = folder_.path() / "Tarnwick/settings.json";
    ASSERT_FALSE(fs::exists(settings));

    endSession();

    EXPECT_TRUE(fs::exists(settings));
}

TEST_F(StartedByAPerson, WithoutAPanelTheDropDownOpensOnceAndSaysSo) {
    QApplication::processEvents();
    EXPECT_EQ(dropDown(), nullptr);

    waitForPanel();

    QWidget* const window = dropDown();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(tellsOf(*window, "No panel here"));
    window->close();
    waitForPanel();
    EXPECT_EQ(dropDown(), nullptr);
}

TEST_F(AppDelegateTest, AStartWithTheSessionOpensNothingWithoutAPanel) {
    waitForPanel();
    EXPECT_EQ(dropDown(), nullptr);

    delegate_->openDropDown("");
    QApplication::processEvents();
    ASSERT_NE(dropDown(), nullptr);
    EXPECT_TRUE(tellsOf(*dropDown(), "No panel here"));
}

TEST_F(AppDelegateTest, TheSettingsWindowLeadsToTheDesktopsStartupSettings) {
    const fs::path started = folder_.path() / "started";
    const fs::path program = folder_.path() / "xfce4-session-settings";
    test::writeFile(program, "#!/bin/sh\n: > '" + started.string() + "'\n");
    fs::permissions(program, fs::perms::owner_all);

    showSettings();
    click("Startup Settings…");

    const QDeadlineTimer patience(20'000);
    while (!fs::exists(started) && !patience.hasExpired()) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 100);
    }
    EXPECT_TRUE(fs::exists(started));
}

} // namespace tarnwick
